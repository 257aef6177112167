// The group window's analyses of superimposed traces run as jobs, and its
// picture drawn and exported as a plot with axes and scale bars.
#include <QComboBox>
#include <QImage>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>

#include "app/gui_fixture.h"
#include "app/job_runner.h"
#include "graphs/ui/plot_widget.h"
#include "group_analysis/result_row.h"
#include "group_analysis/ui/group_assign_dialog.h"
#include "group_analysis/ui/group_commands.h"
#include "group_analysis/ui/group_window.h"
#include "group_analysis/ui/trace_picture.h"

namespace vess::test {
namespace {

using group::GroupAnalysisWindow;

class GroupJobsTest : public GuiTest {
protected:
    GroupAnalysisWindow* Display(const QString& type) {
        OpenSample();
        AnalyseUntilEvents(6);
        group::GroupAssignDialog d(ws, group::GroupAssignMode::Random);
        d.RandomGroups()->setValue(1);
        d.Apply();
        GroupAnalysisWindow* w = group::OpenGroupAnalysis(*window);
        w->findChild<QRadioButton*>("Option2_1")->setChecked(true);
        w->GroupBox()->setCurrentText("1");
        w->AnalysisTypeBox()->setCurrentText(type);
        w->BlocksBox()->setCurrentText("2");
        QTest::mouseClick(w->StartButton(), Qt::LeftButton);
        w->resize(1100, 800);
        return w;
    }
    void Shot(QWidget* widget, const QString& name) {
        const QString folder = QString(VESS_BINARY_DIR) + "/app_screens";
        QDir().mkpath(folder);
        widget->grab().save(folder + "/" + name + ".png");
    }
};

TEST_F(GroupJobsTest, SuperimposedAmperometryIsAJobWithOneRowPerEvent) {
    GroupAnalysisWindow* w = Display("Superimpose");
    const int32_t n = w->Traces().count;
    ASSERT_GE(n, 6);
    w->Action("menu_Ampero")->trigger();
    JobRunner& jobs = window->Jobs();
    ASSERT_TRUE(jobs.Running());
    // What would change the set or the results under the job waits for it.
    for (const char* name : {"menu_DisplayTrace", "menu_trace_remove", "menu_StartFitting", "menu_Ampero",
                             "menu_RandomWalk", "menu_NonStationary"})
        EXPECT_FALSE(w->Action(name)->isEnabled()) << name;
    EXPECT_FALSE(w->StartButton()->isEnabled());
    ASSERT_TRUE(WaitFor([&] { return !jobs.Running(); }, 60000));
    ASSERT_EQ(ws.results.Count(), n);
    for (int32_t r = 1; r <= n; ++r) {
        const auto row = group::ReadResultRow(ws.results[r]);
        EXPECT_EQ(row.kind, group::ResultKind::Amperometric);
        EXPECT_EQ(row.trace, r);
        EXPECT_EQ(row.eventIndex, w->Traces().eventIndex[std::size_t(r)]);
    }
    EXPECT_TRUE(w->Action("menu_Ampero")->isEnabled());
    // Every trace's peak is marked.
    ASSERT_FALSE(w->Picture()->Marks().empty());
    EXPECT_EQ(w->Picture()->Marks()[0].x.size(), std::size_t(n));
    Shot(w, "group_ampero_superimposed");

    // Stop ends a diffusion fit of every trace early, keeping the rows made.
    w->Action("menu_RandomWalk")->trigger();
    ASSERT_TRUE(jobs.Running());
    jobs.Stop();
    ASSERT_TRUE(WaitFor([&] { return !jobs.Running(); }, 60000));
    EXPECT_LT(ws.results.Count(), 2 * n);
}

TEST_F(GroupJobsTest, ThePictureIsAPlotAndItsPngHasAxesAndScaleBars) {
    GroupAnalysisWindow* w = Display("Average");
    const PlotData& shown = w->Picture()->Description();
    EXPECT_EQ(shown.title, "Group # 1    Type: Average");
    EXPECT_EQ(shown.xAxis, "Time (ms)");
    ASSERT_FALSE(shown.series.empty());
    EXPECT_EQ(shown.series[0].x.size(), std::size_t(w->Traces().length));
    Shot(w->Picture(), "group_picture");

    const std::filesystem::path png = dir / "picture.png";
    dialogs.AnswerSaveFile(png.string()).AnswerYesNo(true);
    w->Action("menu_saveBMP")->trigger();
    EXPECT_EQ(dialogs.Transcript().back().caption, "Scale Bars");
    QImage image(QString::fromStdString(png.string()));
    ASSERT_FALSE(image.isNull());
    image.save(QString(VESS_BINARY_DIR) + "/app_screens/group_picture_export.png");
    EXPECT_EQ(image.size(), w->Picture()->size());
    // A white page with dark axes, trace and bars: mostly light, some dark.
    int light = 0, dark = 0;
    for (int y = 0; y < image.height(); y += 2)
        for (int x = 0; x < image.width(); x += 2) {
            const int v = qGray(image.pixel(x, y));
            light += v > 200;
            dark += v < 80;
        }
    const int total = (image.height() / 2) * (image.width() / 2);
    EXPECT_GT(light, total * 3 / 4);
    EXPECT_GT(dark, 200);
    // The scale bars are gone from the window again.
    for (const auto& s : w->Picture()->Description().series) EXPECT_EQ(s.legend.find(" ms"), std::string::npos);
}

}  // namespace
}  // namespace vess::test
