// The work-array, histogram and statistics menus of the main window. Each
// entry runs a core command of the statistics subsystem; plots go to the
// graph frame, results to the statistics windows. Entries of a control
// array are named after it with the item index ("menu_FreqHisto_14"). Every
// entry waits while a job runs.
#include <QApplication>
#include <QClipboard>

#include <cmath>
#include <memory>
#include <optional>
#include <string>

#include "app/job_runner.h"
#include "detection/ui/trace_view.h"
#include "graphs/ui/graph_frame.h"
#include "recording/job.h"
#include "recording/command_result.h"
#include "recording/ui/command_registry.h"
#include "recording/ui/tool_windows.h"
#include "recording/workspace.h"
#include "statistics/array_fill.h"
#include "statistics/array_text.h"
#include "statistics/correlogram.h"
#include "statistics/data_analysis.h"
#include "statistics/histogram.h"
#include "statistics/texts.h"
#include "statistics/ui/column_statistics_window.h"
#include "statistics/ui/data_analysis_window.h"
#include "statistics/ui/math_operation_window.h"
#include "statistics/ui/texts.h"

namespace vess {
namespace {

using stats_ui_texts::Q;

std::string Name(const std::string& base, int item) { return base + "_" + std::to_string(item); }

void Show(CommandHost& host, const Outcome<PlotData>& plot) {
    if (ShowFailure(host.Asker(), plot.status())) ShowPlot(host.Tools(), plot.value());
}

bool WhenNoJob(const CommandState& s) { return !s.jobRunning; }

// The open data analysis window shows the arrays as they are now.
void ArraysChanged(CommandHost& host) {
    if (auto* w = host.Tools().Find<DataAnalysisWindow>()) w->ReloadArrays();
}

DataAnalysisWindow* OpenDataAnalysis(CommandHost& host) {
    return host.Tools().Show<DataAnalysisWindow>(
        [&host](QWidget* owner) { return new DataAnalysisWindow(host.Ws(), host.Asker(), owner); });
}

void OpenMathOperation(CommandHost& host) {
    host.Tools().Show<MathOperationWindow>([&host](QWidget* owner) {
        auto* w = new MathOperationWindow(host.Ws(), host.Asker(), owner);
        QObject::connect(w, &MathOperationWindow::ArraysChanged, owner, [&host] { ArraysChanged(host); });
        return w;
    });
}

// Reads an array text file as a job; the arrays are replaced when it ends.
void StartArraysImport(CommandHost& host) {
    if (host.Jobs().Running()) return;
    const auto path = ChooseArraysImport(host.Asker());
    if (!path) return;
    host.Jobs().Start(MakeJob(std::string(stats_texts::kImportAsciiMenu),
                              [path = *path](const JobProgress& progress) {
                                  auto arrays = ReadArraysAtf(path, nullptr, progress);
                                  // Stopped by the user: nothing is placed and nothing said.
                                  const bool stopped = !progress(1, {});
                                  return std::make_pair(std::move(arrays), stopped);
                              },
                              [&host](std::pair<std::optional<ImportedArrays>, bool> read) {
                                  if (read.second) return;
                                  ShowFailure(host.Asker(), PlaceImportedArrays(host.Ws(), std::move(read.first)));
                                  ArraysChanged(host);
                              }),
                      host.Tools().Owner());
}

// Counts a correlogram as a job; its normalise question and plot follow.
void StartCorrelogram(CommandHost& host, Outcome<CorrelogramRequest> request) {
    if (!ShowFailure(host.Asker(), request.status()) || host.Jobs().Running()) return;
    // Shared by the work and the questions after it: the arrays are not copied again.
    auto r = std::make_shared<const CorrelogramRequest>(std::move(request.value()));
    host.Jobs().Start(MakeJob(r->cross ? std::string(stats_ui_texts::kCrossCorrelogramMenu)
                                       : std::string(stats_ui_texts::kAutoCorrelogramMenu),
                              [r](const JobProgress&) { return CountCorrelogram(*r); },
                              [&host, r](Correlogram c) { Show(host, FinishCorrelogram(host.Asker(), std::move(c), *r)); }),
                      host.Tools().Owner());
}

void NoiseHistogram(CommandHost& host) {
    Workspace& ws = host.Ws();
    const auto c = host.Trace()->Cursors();
    if (!ws.recording) return;
    if (!c) {
        host.Asker().Message(std::string(stats_ui_texts::kNoiseCursorsCaption),
                             std::string(stats_ui_texts::kNoiseCursorsText));
        return;
    }
    const Recording& rec = *ws.recording;
    const NoiseCursors cursors{c->index1, c->index2, rec.Bit2pA(int32_t(std::lround(c->counts1))),
                               rec.Bit2pA(int32_t(std::lround(c->counts2)))};
    Show(host, NoiseHistogramCommand(ws, host.Asker(), cursors));
}

// Adds the entries of one menu and its sub-menus in the order they are
// added (one count for them all, so that a sub-menu is made before its
// entries).
class MenuAdder {
public:
    MenuAdder(CommandRegistry& r, QString path, double& order) : r_(r), path_(std::move(path)), order_(order) {}

    // A sub-menu; its entries go through the adder returned.
    MenuAdder Sub(const std::string& name, std::string_view caption, bool separatorBefore = false) {
        r_.Add({.objectName = QString::fromStdString(name),
                .menuPath = path_,
                .caption = Q(caption),
                .order = order_++,
                .separatorBefore = separatorBefore,
                .subMenu = true});
        return MenuAdder(r_, path_ + "/" + Q(caption), order_);
    }
    // An entry that runs run and then shows the arrays as they are.
    void Add(const std::string& name, std::string_view caption, std::function<void(CommandHost&)> run,
             bool separatorBefore = false) {
        r_.Add({.objectName = QString::fromStdString(name),
                .menuPath = path_,
                .caption = Q(caption),
                .order = order_++,
                .separatorBefore = separatorBefore,
                .enabledWhen = WhenNoJob,
                .run =
                    [run = std::move(run)](CommandHost& host) {
                        run(host);
                        ArraysChanged(host);
                    }});
    }

private:
    CommandRegistry& r_;
    QString path_;
    double& order_;
};

void AddDataArrayCommands(CommandRegistry& r) {
    using namespace stats_texts;
    r.AddMenu({Q(stats_ui_texts::kDataArraysMenu), "menu_DataArrays", -40});
    double order = 0;
    MenuAdder m(r, Q(stats_ui_texts::kDataArraysMenu), order);
    for (int k = 1; k <= 2; ++k) {
        const std::string all = "menu_PutAllArray" + std::to_string(k);
        MenuAdder sub = m.Sub(all, PutEventDataMenu(k));
        for (int f = 0; f < kArrayFieldCount; ++f)
            sub.Add(Name(all, f), kFieldCaptions[f], [k, f](CommandHost& h) {
                ShowFailure(h.Asker(), PutEventDataCommand(h.Ws(), h.Asker(), k, ArrayField(f)));
            });
    }
    for (int k = 1; k <= 2; ++k) {
        const std::string hl = "menu_PutHLArray" + std::to_string(k);
        MenuAdder sub = m.Sub(hl, PutHighlightedMenu(k));
        for (int f = 0; f < kHighlightedFieldCount; ++f)
            sub.Add(Name(hl, f), kFieldCaptions[f], [k, f](CommandHost& h) {
                const std::vector<int32_t> rows = h.SelectedRows();
                ShowFailure(h.Asker(), PutHighlightedEventDataCommand(h.Ws(), h.Asker(), k, ArrayField(f), rows));
            });
    }
    MenuAdder intervals = m.Sub("menu_InterEvent", kInterEventMenu);
    for (int k = 1; k <= 2; ++k)
        intervals.Add("menu_InterEventArray" + std::to_string(k), PutIntoArrayMenu(k),
                      [k](CommandHost& h) { ShowFailure(h.Asker(), InterEventIntervalsCommand(h.Ws(), h.Asker(), k)); });
    for (int k = 1; k <= 2; ++k)
        m.Add("menu_ClearArray" + std::to_string(k), ClearArrayMenu(k),
              [k](CommandHost& h) { ClearArrayCommand(h.Ws(), k); }, k == 1);
    m.Add("menu_ManualDataEntry", kManualDataEntryMenu,
          [](CommandHost& h) { OpenDataAnalysis(h)->ShowArrays(true); }, true);
    m.Add("menu_math", kMathMenu, OpenMathOperation);
    m.Add("menu_ArrayCopy", kArrayCopyMenu, [](CommandHost& h) {
        QApplication::clipboard()->setText(QString::fromStdString(ArraysClipboardText(h.Ws().array1, h.Ws().array2)));
    }, true);
    for (int k = 1; k <= 2; ++k)
        m.Add(Name("menu_PasteArray", k - 1), PasteArrayMenu(k), [k](CommandHost& h) {
            ShowFailure(h.Asker(), PasteArrayCommand(h.Ws(), h.Asker(), k, QApplication::clipboard()->text().toStdString()));
        });
    m.Add("menu_ArrayAscii", kArrayAsciiMenu, [](CommandHost& h) { ShowFailure(h.Asker(), SaveArraysAsciiCommand(h.Ws(), h.Asker())); },
          true);
    m.Add("menu_importAscii", kImportAsciiMenu, StartArraysImport);
}

void AddHistogramCommands(CommandRegistry& r) {
    using namespace stats_ui_texts;
    r.AddMenu({Q(kHistogramsMenu), "menu_Histograms", -39});
    double order = 0;
    MenuAdder m(r, Q(kHistogramsMenu), order);
    // Histogram kinds: their menu, the code offset, the array items' captions.
    struct Kind {
        const char* name;
        std::string_view text;
        int offset;
        std::string (*arrayText)(int);
    };
    const Kind kinds[] = {{"menu_FreqHisto", kFreqHistoMenu, 0, FreqHistoArrayMenu},
                          {"menu_CumulHistoBin", kCumulBinMenu, 20, CumulBinArrayMenu},
                          {"menu_CumulHistoNoBin", kCumulNoBinMenu, 40, CumulNoBinArrayMenu},
                          {"menu_InverseCumul", kInverseMenu, 60, InverseArrayMenu}};
    for (const Kind& kind : kinds) {
        MenuAdder sub = m.Sub(kind.name, kind.text);
        for (int source = 1; source <= 15; ++source) {
            const int code = kind.offset + source;
            const std::string text = source >= 14 ? kind.arrayText(source - 13)
                                                  : std::string(stats_texts::kSourceNames[source]);
            sub.Add(Name(kind.name, code), text,
                    [code](CommandHost& h) { Show(h, HistogramCommand(h.Ws(), h.Asker(), code)); }, source == 14);
        }
    }
    m.Add("menu_RunningAverage", kRunningAverageMenu,
          [](CommandHost& h) { Show(h, RunningAverageCommand(h.Ws(), h.Asker())); }, true);
    MenuAdder autoMenu = m.Sub("menu_AutoCorrelogram", kAutoCorrelogramMenu);
    MenuAdder crossMenu = m.Sub("menu_CrossCorrelogram", kCrossCorrelogramMenu);
    for (int k = 1; k <= 2; ++k) {
        autoMenu.Add(Name("menu_AutoCorrelogram", k - 1), stats_texts::kCorrelogramMenuAuto[k - 1],
                     [k](CommandHost& h) { StartCorrelogram(h, PrepareAutoCorrelogram(h.Ws(), h.Asker(), k)); });
        crossMenu.Add(Name("menu_CrossCorrelogram", k - 1), stats_texts::kCorrelogramMenuCross[k - 1],
                      [k](CommandHost& h) { StartCorrelogram(h, PrepareCrossCorrelogram(h.Ws(), h.Asker(), k)); });
    }
    m.Add("menu_CoastlineM", kCoastlineMenu, [](CommandHost& h) { Show(h, CoastlineCommand(h.Ws(), h.Asker())); },
          true);
    m.Add("menu_NoiseHistogram", kNoiseHistogramMenu, NoiseHistogram);
}

void AddTestCommands(CommandRegistry& r) {
    r.AddMenu({Q(stats_ui_texts::kStatisticsMenu), "menu_Statistics", -38});
    double order = 0;
    MenuAdder m(r, Q(stats_ui_texts::kStatisticsMenu), order);
    MenuAdder tests = m.Sub("menu_StatDataAnalysis", stats_texts::kStatisticsMenu);
    const std::pair<const char*, StatTest> entries[] = {
        {"menu_ttest_paired", StatTest::TTestPaired},
        {"menu_ttest_UnequalVar", StatTest::TTestUnequalVar},
        {"menu_ttest_EqualVar", StatTest::TTestEqualVar},
        {"menu_Ftest", StatTest::FTest},
        {"menu_LinearRegression", StatTest::LinearRegression},
        {"menu_KStest", StatTest::KsTest}};
    for (const auto& [name, test] : entries)
        tests.Add(name, StatTestMenuCaption(test), [test](CommandHost& h) { OpenDataAnalysis(h)->SetTest(test); });
    m.Add("menu_ArrayStat", stats_texts::kColumnStatisticsMenu, [](CommandHost& h) {
        h.Tools().Show<ColumnStatisticsWindow>([&h](QWidget* owner) {
            auto* w = new ColumnStatisticsWindow(h.Ws(), owner);
            w->setAttribute(Qt::WA_DeleteOnClose);
            return w;
        });
    });
}

void AddStatisticsCommands(CommandRegistry& r) {
    AddDataArrayCommands(r);
    AddHistogramCommands(r);
    AddTestCommands(r);
}

const CommandRegistration registration{AddStatisticsCommands};

}  // namespace
}  // namespace vess
