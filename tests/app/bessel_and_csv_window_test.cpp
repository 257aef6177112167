// The Bessel and Gaussian filters in the filter form (the Gaussian has no
// order, pass or second pass to choose), and the event grid exported as CSV
// from the File menu.
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

#include "gui_fixture.h"
#include "recording/file_io.h"
#include "signal/ui/filter_dialog.h"

namespace vess::test {
namespace {

class BesselAndCsvTest : public GuiTest {};

TEST_F(BesselAndCsvTest, BesselAndGaussianFiltersApplyFromTheForm) {
    OpenSample();
    window->Action("menu_Filter")->trigger();
    auto* form = window->findChild<FilterDialog*>("FilterDialog");
    ASSERT_TRUE(form && form->isVisible());
    auto* kind = form->findChild<QComboBox*>("cbFilterKind");
    auto* apply = form->findChild<QPushButton*>("btnFilterApply");
    auto* label = window->findChild<QLabel*>("lbFilter");

    kind->setCurrentIndex(kind->findText("Bessel"));
    form->findChild<QLineEdit*>("edFilterCutoff")->setText("1000");
    form->findChild<QSpinBox*>("spFilterOrder")->setValue(4);
    QTest::mouseClick(apply, Qt::LeftButton);
    ASSERT_TRUE(WaitFor([&] { return ws.recording->HasFiltered(); }, 20000));
    EXPECT_EQ(ws.settings.filterKind, 5);
    EXPECT_TRUE(label->text().contains("Bessel low-pass 1000 Hz, order 4")) << label->text().toStdString();

    form->findChild<QComboBox*>("cbFilterPass")->setCurrentIndex(1);  // high-pass
    kind->setCurrentIndex(kind->findText("Gaussian"));
    EXPECT_FALSE(form->findChild<QSpinBox*>("spFilterOrder")->isEnabled());
    EXPECT_FALSE(form->findChild<QCheckBox*>("chkFilterZeroPhase")->isEnabled());
    EXPECT_FALSE(form->findChild<QComboBox*>("cbFilterPass")->isEnabled());
    EXPECT_EQ(form->findChild<QComboBox*>("cbFilterPass")->currentIndex(), 0);  // back to low-pass
    QTest::mouseClick(form->findChild<QPushButton*>("btnFilterRemove"), Qt::LeftButton);
    ASSERT_FALSE(ws.recording->HasFiltered());
    QTest::mouseClick(apply, Qt::LeftButton);
    ASSERT_TRUE(WaitFor([&] { return ws.recording->HasFiltered(); }, 20000));
    EXPECT_EQ(ws.settings.filterKind, 6);
    EXPECT_TRUE(label->text().contains("Gaussian low-pass 1000 Hz")) << label->text().toStdString();
    EXPECT_FALSE(label->text().contains("order"));
    form->grab().save(QString(VESS_BINARY_DIR) + "/app_screens/filter_dialog_gaussian.png");
}

TEST_F(BesselAndCsvTest, GridCsvFromTheFileMenuHoldsEveryColumnWithUnits) {
    OpenSample();
    AnalyseUntilEvents(2);
    dialogs.AnswerSaveFile((dir / "grid").string());
    QAction* entry = window->Action("menu_SaveGridCsv");
    ASSERT_TRUE(entry && entry->isEnabled());
    entry->trigger();
    const auto bytes = ReadFileBytes(dir / "grid.csv");
    ASSERT_TRUE(bytes);
    const std::string text(bytes->begin(), bytes->end());
    const std::string units = ws.recording->Units();
    EXPECT_EQ(text.rfind("Event,Time (ms),Amplitude (" + units + "),", 0), 0u) << text.substr(0, 80);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), ws.events.Count() + 1);
}

}  // namespace
}  // namespace vess::test
