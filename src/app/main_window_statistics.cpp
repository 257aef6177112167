// The work-array, histogram and statistics menus of the main window. Each
// entry runs a core command of the statistics subsystem; plots go to the
// graph frame, results to the statistics windows. Entries of a control
// array are named after it with the item index ("menu_FreqHisto_14").
#include <cmath>

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QMenuBar>

#include "app/job_runner.h"
#include "app/main_window.h"
#include "detection/ui/trace_view.h"
#include "graphs/ui/graph_frame.h"
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
std::string Name(const char* base, int item) { return std::string(base) + "_" + std::to_string(item); }

void Show(const std::optional<PlotData>& plot) {
    if (plot) ShowPlot(*plot);
}

}  // namespace

QMenu* MainWindow::AddStatisticsMenu(QMenu* parent, const char* name, std::string_view text) {
    QMenu* m = parent ? parent->addMenu(Q(text)) : menuBar()->addMenu(Q(text));
    m->setObjectName(name);
    m->menuAction()->setObjectName(name);
    actions_[name] = m->menuAction();
    return m;
}

QAction* MainWindow::AddStatisticsAction(QMenu* menu, const std::string& name, std::string_view text,
                                         std::function<void()> run) {
    QAction* a = AddAction(menu, name.c_str(), Q(text), {}, nullptr, nullptr);
    arrayActions_.push_back(a);
    connect(a, &QAction::triggered, this, [this, run = std::move(run)] {
        run();
        ArraysChanged();
    });
    return a;
}

void MainWindow::BuildStatisticsMenus() {
    SetGraphDialogs(&dialogs_);
    connect(this, &QObject::destroyed, [] { SetGraphDialogs(nullptr); });
    BuildDataArrayMenu();
    BuildHistogramMenu();
    BuildTestMenu();
}

void MainWindow::BuildDataArrayMenu() {
    using namespace stats_texts;
    QMenu* m = AddStatisticsMenu(nullptr, "menu_DataArrays", stats_ui_texts::kDataArraysMenu);
    for (int k = 1; k <= 2; ++k) {
        const std::string all = "menu_PutAllArray" + std::to_string(k);
        QMenu* sub = AddStatisticsMenu(m, all.c_str(), PutEventDataMenu(k));
        for (int f = 0; f < kArrayFieldCount; ++f)
            AddStatisticsAction(sub, Name(all.c_str(), f), kFieldCaptions[f], [this, k, f] {
                PutEventDataCommand(ws_, dialogs_, k, ArrayField(f));
            });
    }
    for (int k = 1; k <= 2; ++k) {
        const std::string hl = "menu_PutHLArray" + std::to_string(k);
        QMenu* sub = AddStatisticsMenu(m, hl.c_str(), PutHighlightedMenu(k));
        for (int f = 0; f < kHighlightedFieldCount; ++f)
            AddStatisticsAction(sub, Name(hl.c_str(), f), kFieldCaptions[f], [this, k, f] {
                const std::vector<int32_t> rows = SelectedRows();
                PutHighlightedEventDataCommand(ws_, dialogs_, k, ArrayField(f), rows);
            });
    }
    QMenu* intervals = AddStatisticsMenu(m, "menu_InterEvent", kInterEventMenu);
    for (int k = 1; k <= 2; ++k)
        AddStatisticsAction(intervals, "menu_InterEventArray" + std::to_string(k), PutIntoArrayMenu(k),
                            [this, k] { InterEventIntervalsCommand(ws_, dialogs_, k); });
    m->addSeparator();
    for (int k = 1; k <= 2; ++k)
        AddStatisticsAction(m, "menu_ClearArray" + std::to_string(k), ClearArrayMenu(k),
                            [this, k] { ClearArrayCommand(ws_, k); });
    m->addSeparator();
    AddStatisticsAction(m, "menu_ManualDataEntry", kManualDataEntryMenu,
                        [this] { OpenDataAnalysis()->ShowArrays(true); });
    AddStatisticsAction(m, "menu_math", kMathMenu, [this] { OpenMathOperation(); });
    m->addSeparator();
    AddStatisticsAction(m, "menu_ArrayCopy", kArrayCopyMenu, [this] {
        QApplication::clipboard()->setText(
            QString::fromStdString(ArraysClipboardText(ws_.array1, ws_.array2)));
    });
    for (int k = 1; k <= 2; ++k)
        AddStatisticsAction(m, Name("menu_PasteArray", k - 1), PasteArrayMenu(k), [this, k] {
            PasteArrayCommand(ws_, dialogs_, k, QApplication::clipboard()->text().toStdString());
        });
    m->addSeparator();
    AddStatisticsAction(m, "menu_ArrayAscii", kArrayAsciiMenu, [this] { ShowFailure(dialogs_, SaveArraysAsciiCommand(ws_, dialogs_)); });
    AddStatisticsAction(m, "menu_importAscii", kImportAsciiMenu,
                        [this] { StartArraysImport(); });
}

void MainWindow::StartArraysImport() {
    if (jobs_->Running()) return;
    const auto path = ChooseArraysImport(dialogs_);
    if (!path) return;
    jobs_->Start(MakeJob(std::string(stats_texts::kImportAsciiMenu),
                         [path = *path](const JobProgress& progress) {
                             auto arrays = ReadArraysAtf(path, nullptr, progress);
                             // Stopped by the user: nothing is placed and nothing said.
                             const bool stopped = !progress(1, {});
                             return std::make_pair(std::move(arrays), stopped);
                         },
                         [this](std::pair<std::optional<ImportedArrays>, bool> read) {
                             if (read.second) return;
                             ShowFailure(dialogs_, PlaceImportedArrays(ws_, std::move(read.first)));
                             ArraysChanged();
                         }),
                 this);
}

void MainWindow::BuildHistogramMenu() {
    using namespace stats_ui_texts;
    QMenu* m = AddStatisticsMenu(nullptr, "menu_Histograms", kHistogramsMenu);
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
        QMenu* sub = AddStatisticsMenu(m, kind.name, kind.text);
        for (int source = 1; source <= 15; ++source) {
            const int code = kind.offset + source;
            if (source == 14) sub->addSeparator();
            const std::string text = source >= 14 ? kind.arrayText(source - 13)
                                                  : std::string(stats_texts::kSourceNames[source]);
            AddStatisticsAction(sub, Name(kind.name, code), text,
                                [this, code] { Show(HistogramCommand(ws_, dialogs_, code)); });
        }
    }
    m->addSeparator();
    AddStatisticsAction(m, "menu_RunningAverage", kRunningAverageMenu,
                        [this] { Show(RunningAverageCommand(ws_, dialogs_)); });
    QMenu* autoMenu = AddStatisticsMenu(m, "menu_AutoCorrelogram", kAutoCorrelogramMenu);
    QMenu* crossMenu = AddStatisticsMenu(m, "menu_CrossCorrelogram", kCrossCorrelogramMenu);
    for (int k = 1; k <= 2; ++k) {
        AddStatisticsAction(autoMenu, Name("menu_AutoCorrelogram", k - 1),
                            stats_texts::kCorrelogramMenuAuto[k - 1],
                            [this, k] { StartCorrelogram(PrepareAutoCorrelogram(ws_, dialogs_, k)); });
        AddStatisticsAction(crossMenu, Name("menu_CrossCorrelogram", k - 1),
                            stats_texts::kCorrelogramMenuCross[k - 1],
                            [this, k] { StartCorrelogram(PrepareCrossCorrelogram(ws_, dialogs_, k)); });
    }
    m->addSeparator();
    AddStatisticsAction(m, "menu_CoastlineM", kCoastlineMenu,
                        [this] { Show(CoastlineCommand(ws_, dialogs_)); });
    AddStatisticsAction(m, "menu_NoiseHistogram", kNoiseHistogramMenu, [this] {
        const auto c = trace_->Cursors();
        if (!ws_.recording) return;
        if (!c) {
            dialogs_.Message(std::string(stats_ui_texts::kNoiseCursorsCaption),
                             std::string(stats_ui_texts::kNoiseCursorsText));
            return;
        }
        const Recording& rec = *ws_.recording;
        const NoiseCursors cursors{c->index1, c->index2, rec.Bit2pA(int32_t(std::lround(c->counts1))),
                                   rec.Bit2pA(int32_t(std::lround(c->counts2)))};
        Show(NoiseHistogramCommand(ws_, dialogs_, cursors));
    });
}

void MainWindow::StartCorrelogram(std::optional<CorrelogramRequest> request) {
    if (!request || jobs_->Running()) return;
    // Shared by the work and the questions after it: the arrays are not copied again.
    auto r = std::make_shared<const CorrelogramRequest>(std::move(*request));
    jobs_->Start(MakeJob(r->cross ? std::string(stats_ui_texts::kCrossCorrelogramMenu)
                                  : std::string(stats_ui_texts::kAutoCorrelogramMenu),
                         [r](const JobProgress&) { return CountCorrelogram(*r); },
                         [this, r](Correlogram c) { Show(FinishCorrelogram(dialogs_, std::move(c), *r)); }),
                 this);
}

void MainWindow::BuildTestMenu() {
    QMenu* m = AddStatisticsMenu(nullptr, "menu_Statistics", stats_ui_texts::kStatisticsMenu);
    QMenu* tests = AddStatisticsMenu(m, "menu_StatDataAnalysis", stats_texts::kStatisticsMenu);
    const std::pair<const char*, StatTest> entries[] = {
        {"menu_ttest_paired", StatTest::TTestPaired},
        {"menu_ttest_UnequalVar", StatTest::TTestUnequalVar},
        {"menu_ttest_EqualVar", StatTest::TTestEqualVar},
        {"menu_Ftest", StatTest::FTest},
        {"menu_LinearRegression", StatTest::LinearRegression},
        {"menu_KStest", StatTest::KsTest}};
    for (const auto& [name, test] : entries)
        AddStatisticsAction(tests, name, StatTestMenuCaption(test),
                            [this, test] { OpenDataAnalysis()->SetTest(test); });
    AddStatisticsAction(m, "menu_ArrayStat", stats_texts::kColumnStatisticsMenu, [this] {
        auto* w = new ColumnStatisticsWindow(ws_, this);
        w->setAttribute(Qt::WA_DeleteOnClose);
        w->show();
    });
}

DataAnalysisWindow* MainWindow::OpenDataAnalysis() {
    return tools_.Show<DataAnalysisWindow>(
        [this](QWidget* owner) { return new DataAnalysisWindow(ws_, dialogs_, owner); });
}

void MainWindow::OpenMathOperation() {
    tools_.Show<MathOperationWindow>([this](QWidget* owner) {
        auto* w = new MathOperationWindow(ws_, dialogs_, owner);
        connect(w, &MathOperationWindow::ArraysChanged, this, &MainWindow::ArraysChanged);
        return w;
    });
}

void MainWindow::ArraysChanged() {
    if (auto* w = tools_.Find<DataAnalysisWindow>()) w->ReloadArrays();
}

}  // namespace vess
