// vess array SOURCE: the values a fill would put into a work array.
// vess stats TEST A [B]: descriptive statistics and the two-sample tests,
// as the data analysis window's grid shows them or as one JSON object.
#include <iostream>
#include <map>
#include <memory>

#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/series_source.h"
#include "cli/stderr_dialogs.h"
#include "recording/event_record.h"
#include "statistics/array_text.h"
#include "statistics/data_analysis.h"
#include "statistics/texts.h"

namespace vess::cli {

namespace {

namespace st = stats_texts;

// Loads a series or ends the command with its error.
std::vector<double> LoadOrFail(const std::string& command, const std::string& source) {
    const LoadedSeries s = LoadSeries(source);
    if (!s.Ok()) {
        std::cerr << "vess " << command << ": " << s.error << "\n";
        throw CLI::RuntimeError(1);
    }
    return s.AsDouble();
}

void PrintTable(const ResultTable& t) {
    std::cout << t.title << "\n";
    for (const std::string& c : t.columns) std::cout << "\t" << c;
    if (!t.columns.empty()) std::cout << "\n";
    for (const ResultRow& r : t.rows) {
        std::cout << r.label;
        for (const std::string& cell : r.cells) std::cout << "\t" << cell;
        std::cout << "\n";
    }
    if (!t.note.empty()) std::cout << t.note << "\n";
}

// Keys are the grid's labels; a row of one value is a number, of several an
// array. Numbers at full precision; NaN and infinities become null.
nlohmann::json TableJson(const ResultTable& t) {
    nlohmann::json j = nlohmann::json::object();
    const auto number = [](double v) { return std::isfinite(v) ? nlohmann::json(v) : nlohmann::json(); };
    for (const ResultRow& r : t.rows) {
        if (r.values.size() == 1) {
            j[r.label] = number(r.values[0]);
            continue;
        }
        nlohmann::json a = nlohmann::json::array();
        for (double v : r.values) a.push_back(number(v));
        j[r.label] = a;
    }
    if (!t.note.empty()) j["note"] = t.note;
    return j;
}

const std::map<std::string, StatTest>& TestNames() {
    static const std::map<std::string, StatTest> names = {
        {"ttest-paired", StatTest::TTestPaired}, {"ttest-equal", StatTest::TTestEqualVar},
        {"ttest-unequal", StatTest::TTestUnequalVar}, {"ftest", StatTest::FTest},
        {"ks", StatTest::KsTest}, {"regression", StatTest::LinearRegression}};
    return names;
}

struct StatsOptions {
    std::string test;
    std::string a;
    std::string b;
    double alpha = 0.05;
    bool json = false;
};

ResultTable Describe(const StatsOptions& o, StderrDialogs& dialogs) {
    std::vector<std::vector<double>> data{LoadOrFail("stats", o.a)};
    if (!o.b.empty()) data.push_back(LoadOrFail("stats", o.b));
    for (std::size_t i = 0; i < data.size(); ++i)
        if (data[i].size() < 2) {
            dialogs.Message(st::EmptyOneArrayCaption(int(i) + 1), st::EmptyOneArrayText(int(i) + 1));
            throw CLI::RuntimeError(1);
        }
    std::vector<std::span<const double>> series(data.begin(), data.end());
    std::vector<std::string> titles;
    for (std::size_t i = 0; i < data.size(); ++i) titles.push_back(st::ArrayName(int(i) + 1));
    return DescriptiveTable(series, titles);
}

void RunStats(const StatsOptions& o) {
    StderrDialogs dialogs;
    ResultTable table;
    std::optional<TestOutcome> outcome;
    if (o.test == "describe") {
        table = Describe(o, dialogs);
    } else {
        if (o.b.empty()) {
            std::cerr << "vess stats: " << o.test << " needs two series\n";
            throw CLI::RuntimeError(1);
        }
        auto run = RunTest(TestNames().at(o.test), LoadOrFail("stats", o.a), LoadOrFail("stats", o.b), o.alpha);
        // The refusal as the windows word it, "caption: text" on stderr.
        if (!ShowFailure(dialogs, run.status())) throw CLI::RuntimeError(1);
        outcome = std::move(*run);
        table = outcome->table;
    }
    if (o.json) {
        nlohmann::json j = TableJson(table);
        if (outcome) {
            j["alpha"] = outcome->alpha;
            j["significant"] = outcome->Significant();
        }
        std::cout << j.dump(2) << "\n";
        return;
    }
    PrintTable(table);
    if (outcome)
        std::cout << "Significant (two-tailed p < " << outcome->alpha << "): " << (outcome->Significant() ? "yes" : "no")
                  << "\n";
}

}  // namespace

void AddArrayCommand(CLI::App& app) {
    struct Options {
        std::string source;
        int group = 0;
        bool intervals = false;
    };
    auto opts = std::make_shared<Options>();
    auto* cmd = app.add_subcommand("array", "Print the values a fill would put into a work array");
    cmd->add_option("source", opts->source,
                    "numbers file, FILE.txt:1|2 (array text file) or FILE.EVT:FIELD "
                    "(amplitude, time, rise10-90, interevent ...)")
        ->required();
    cmd->add_option("--group", opts->group, "events of this group only (0: all)")->check(CLI::Range(0, kLastGroup));
    cmd->add_flag("--intervals", opts->intervals, "differences of the sorted values (inter-event intervals)");
    cmd->callback([opts] {
        const LoadedSeries s = LoadSeries(opts->source, opts->group, opts->intervals);
        if (!s.Ok()) {
            std::cerr << "vess array: " << s.error << "\n";
            throw CLI::RuntimeError(1);
        }
        for (float v : s.values) std::cout << FormatArrayValue(v) << "\n";
    });
}

void AddStatsCommand(CLI::App& app) {
    auto opts = std::make_shared<StatsOptions>();
    auto* cmd = app.add_subcommand("stats", "Descriptive statistics and two-sample tests of series");
    std::vector<std::string> tests{"describe"};
    for (const auto& [name, test] : TestNames()) tests.push_back(name);
    cmd->add_option("test", opts->test, "describe, ttest-paired, ttest-equal, ttest-unequal, ftest, ks, regression")
        ->required()
        ->check(CLI::IsMember(tests));
    cmd->add_option("a", opts->a, "first series (as for vess array)")->required();
    cmd->add_option("b", opts->b, "second series");
    cmd->add_option("--alpha", opts->alpha, "significance level")->check(CLI::Range(0.0, 1.0));
    cmd->add_flag("--json", opts->json, "one JSON object keyed by the grid's labels");
    cmd->callback([opts] { RunStats(*opts); });
}

}  // namespace vess::cli
