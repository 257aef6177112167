#include "app/screenshot.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QPixmap>
#include <QPushButton>
#include <QTimer>

#include "app/main_window.h"
#include <algorithm>
#include <cstdlib>
#include <vector>

#include "detection/editing.h"
#include "recording/scripted_dialogs.h"
#include "group_analysis/ui/group_commands.h"
#include "group_analysis/ui/group_window.h"

namespace vess {
namespace {
// Time the event loop gets to let the file lists read their folders, and
// then to lay out and redraw the analysed screens; how often a running fit
// is looked at.
constexpr int kSettleMs = 200;
constexpr int kRedrawMs = 50;
constexpr int kFitPollMs = 50;

void SaveAndExit(QWidget& shown, const QString& pngPath) {
    QTimer::singleShot(kRedrawMs, &shown, [&shown, pngPath] {
        QCoreApplication::exit(shown.grab().save(pngPath, "PNG") ? 0 : 1);
    });
}

// Once the fit has ended, the picture of the group window.
void SaveWhenFitted(group::GroupAnalysisWindow* group, const QString& pngPath) {
    if (group->Fitting()) {
        QTimer::singleShot(kFitPollMs, group, [group, pngPath] { SaveWhenFitted(group, pngPath); });
        return;
    }
    SaveAndExit(*group, pngPath);
}

// Group 1 as a user would make it for a picture of typical events: every
// event up to four times the median amplitude, leaving out the stimulus
// artefacts (test pulses) that recordings of spontaneous events hold.
void GroupTypicalEvents(Workspace& ws) {
    std::vector<int32_t> amplitudes;
    for (const EventRecord& e : ws.events.Records()) amplitudes.push_back(std::abs(e.amplitude));
    std::nth_element(amplitudes.begin(), amplitudes.begin() + std::ptrdiff_t(amplitudes.size() / 2), amplitudes.end());
    const int64_t limit = 4 * int64_t(amplitudes[amplitudes.size() / 2]);
    std::vector<int32_t> rows;
    for (int32_t k = 1; k <= ws.events.Count(); ++k)
        if (std::abs(ws.events[k].amplitude) <= limit) rows.push_back(k);
    ScriptedDialogs groupOne;
    groupOne.AnswerInput("1");
    GroupSelectedEvents(ws, groupOne, rows);
}

void ShowGroupFit(MainWindow& window, const QString& pngPath) {
    GroupTypicalEvents(window.Ws());
    group::GroupAnalysisWindow* group = group::OpenGroupAnalysis(window);
    group->resize(1100, 760);
    // The stretches set on a zero baseline, so that the decay is fitted
    // towards it.
    group->findChild<QCheckBox*>("ckBaseline")->setChecked(true);
    group->GroupBox()->setCurrentText("1");
    group->AnalysisTypeBox()->setCurrentText("Average");
    group->StartButton()->click();
    group->ExponentialsBox()->setCurrentText("1");
    group->FitButton()->click();
    SaveWhenFitted(group, pngPath);
}

}  // namespace

void ScheduleScreenshot(MainWindow& window, const QString& pngPath, int screens, ScreenshotWindow which) {
    QTimer::singleShot(kSettleMs, &window, [&window, pngPath, screens, which] {
        if (window.Ws().recording) {
            // The group's picture leaves out the first screen, where
            // recordings of spontaneous events hold their test pulse.
            if (which == ScreenshotWindow::Group) window.Action("menu_NextScreen")->trigger();
            window.Action("menu_Analyze")->trigger();
            for (int i = 1; i < screens; ++i) window.Action("menu_AnalyzeNext")->trigger();
            // Back to the first screen, with its first event selected.
            window.Action("menu_FirstEvent")->trigger();
            window.Action("menu_NextEvent")->trigger();
        }
        if (which == ScreenshotWindow::Group && !window.Ws().events.Empty())
            ShowGroupFit(window, pngPath);
        else
            SaveAndExit(window, pngPath);
    });
}

}  // namespace vess
