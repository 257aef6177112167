// What the commands over one trace CSV share: the file and cursor options,
// reading the evenly sampled trace between the cursors, and printing rows
// under the window's headings (blank or null where not measured).
#pragma once

#include <array>
#include <cmath>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "group_analysis/trace_analysis.h"

namespace vess::cli {

struct Common {
    std::string file;
    double from = -INFINITY, to = INFINITY;
    bool json = false;
};

// The stretch between --from and --to; exits with a message when unreadable.
group::SampledTrace Load(const Common& o, const char* command);

// "Thr Time" -> "thr_time", "Decay%" -> "decay".
std::string Key(std::string_view title);

CLI::App* AddTraceCommand(CLI::App& app, const char* name, const char* about, Common& o);

template <std::size_t N>
void Print(const std::array<std::string_view, N>& titles, const std::vector<std::vector<double>>& rows,
           bool json, nlohmann::json extra = nlohmann::json::object()) {
    if (json) {
        nlohmann::json out = std::move(extra);
        out["rows"] = nlohmann::json::array();
        for (const auto& row : rows) {
            nlohmann::json r = nlohmann::json::object();
            for (std::size_t c = 0; c < N && c < row.size(); ++c)
                if (titles[c] != "-") r[Key(titles[c])] = std::isfinite(row[c]) ? nlohmann::json(row[c]) : nlohmann::json();
            out["rows"].push_back(r);
        }
        std::cout << out.dump(2) << "\n";
        return;
    }
    std::string line;
    for (std::string_view t : titles)
        if (t != "-") line += (line.empty() ? "" : "\t") + std::string(t);
    std::cout << line << "\n";
    for (const auto& row : rows) {
        line.clear();
        for (std::size_t c = 0; c < N && c < row.size(); ++c)
            if (titles[c] != "-")
                line += (c ? "\t" : "") + (std::isfinite(row[c]) ? fmt::format("{:.6g}", row[c]) : std::string());
        std::cout << line << "\n";
    }
}

}  // namespace vess::cli
