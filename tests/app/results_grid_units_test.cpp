// The group window's results grid heads its columns with their units, while
// the results saved as text keep the bare titles.
#include <QAbstractItemModel>
#include <QComboBox>
#include <QDir>
#include <QTableView>

#include "app/group_window_fixture.h"
#include "group_analysis/results_commands.h"
#include "recording/file_io.h"

namespace vess::test {
namespace {

QStringList Headings(QTableView* grid) {
    QStringList out;
    const QAbstractItemModel* m = grid->model();
    for (int c = 0; c < m->columnCount(); ++c) out << m->headerData(c, Qt::Horizontal).toString();
    return out;
}

class ResultsGridUnitsTest : public GroupWindowFixture {};

TEST_F(ResultsGridUnitsTest, FitRowIsHeadedInTheRecordingsUnitsAndSavedWithBareTitles) {
    GroupSampleEvents();  // the synthetic recording is in pA
    group::GroupAnalysisWindow* w = Display("Average");
    w->ExponentialsBox()->setCurrentText("1");
    QTest::mouseClick(w->FitButton(), Qt::LeftButton);
    ASSERT_TRUE(WaitFor([&] { return !w->Fitting(); }, 60000));
    ASSERT_EQ(ws.results.Count(), 1);

    const QStringList headings = Headings(w->Grid());
    for (const QString& expected : {"Amplitude (pA)", "Time (ms)", "Area (pA·ms)", "Decay90-37% (ms)", "Tau1 (ms)",
                                    "A1 (pA)", "R-Sqr", "Stdev (pA)", "SE Tau1 (ms)", "SE A1 (pA)"})
        EXPECT_TRUE(headings.contains(expected)) << expected.toStdString() << " in "
                                                 << headings.join(" | ").toStdString();
    QDir().mkpath(QString(VESS_BINARY_DIR) + "/app_screens");
    w->Grid()->grab().save(QString(VESS_BINARY_DIR) + "/app_screens/results_grid_units.png");

    // Saved as text, the heading line is the titles as they always were.
    dialogs.AnswerSaveFile((dir / "fits.txt").string());
    w->Action("menu_copyasciifile")->trigger();
    const auto text = ReadFileBytes(dir / "fits.txt");
    ASSERT_TRUE(text);
    const std::string saved(text->begin(), text->end());
    EXPECT_EQ(saved, group::ResultsText(ws.results));
    EXPECT_TRUE(saved.starts_with("Amplitude\tTime\tBaseline\tRise\tArea\t")) << saved.substr(0, 80);
}

}  // namespace
}  // namespace vess::test
