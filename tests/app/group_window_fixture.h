// The group analysis window over the main window's events, driven as the
// user drives it.
#pragma once

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>

#include "app/gui_fixture.h"
#include "group_analysis/ui/group_assign_dialog.h"
#include "group_analysis/ui/group_commands.h"
#include "group_analysis/ui/group_window.h"
#include "group_analysis/ui/trace_picture.h"

namespace vess::test {

class GroupWindowFixture : public GuiTest {
protected:
    // The sample's events (six at least), all into group 1 through the
    // assignment dialog (one random group), as one undoable step.
    void GroupSampleEvents() {
        OpenSample();
        AnalyseUntilEvents(6);
        group::GroupAssignDialog d(ws, group::GroupAssignMode::Random);
        d.RandomGroups()->setValue(1);
        EXPECT_NE(d.Preview()->text().toStdString().find("Group 1: "), std::string::npos);
        d.Apply();
        EXPECT_TRUE(ws.history.CanUndo());
    }
    // The window, opened once and made the active window as a click on it
    // makes it (keys and window shortcuts go to the active window; the
    // offscreen platform would leave the main window active).
    group::GroupAnalysisWindow* Window() {
        if (!w) {
            w = group::OpenGroupAnalysis(*window);
            w->activateWindow();
            EXPECT_TRUE(QTest::qWaitForWindowActive(w));
            QApplication::setActiveWindow(w);
            w->Picture()->setFocus();
        }
        return w;
    }
    // Start Display of group 1 as `type` over `blocks` blocks, of events or
    // of episodes.
    group::GroupAnalysisWindow* Display(const QString& type, const QString& blocks = "1", bool episodes = false) {
        Window();
        (episodes ? w->EpisodesOption() : w->ByGroupOption())->setChecked(true);
        w->GroupBox()->setCurrentText("1");
        w->AnalysisTypeBox()->setCurrentText(type);
        w->BlocksBox()->setCurrentText(blocks);
        QTest::mouseClick(w->StartButton(), Qt::LeftButton);
        return w;
    }

    // Start Fitting, waited for to its end.
    void Fit() {
        QTest::mouseClick(w->FitButton(), Qt::LeftButton);
        ASSERT_TRUE(WaitFor([&] { return !w->Fitting(); }, 60000));
    }

    group::GroupAnalysisWindow* w = nullptr;
};

}  // namespace vess::test
