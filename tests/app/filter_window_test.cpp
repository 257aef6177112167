// The digital filter on the main window: the form, a refused cut-off, the
// response plot, the filtered trace with its indicator and the key that
// switches it, and detection reading the filtered trace when asked.
#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

#include "graphs/ui/graph_frame.h"
#include "gui_fixture.h"
#include "signal/ui/filter_dialog.h"

namespace vess::test {
namespace {

class FilterWindowTest : public GuiTest {
protected:
    FilterDialog* OpenForm() {
        window->Action("menu_Filter")->trigger();
        auto* form = window->findChild<FilterDialog*>("FilterDialog");
        return form && form->isVisible() ? form : nullptr;
    }
    void Click(FilterDialog* form, const char* button) {
        QTest::mouseClick(form->findChild<QPushButton*>(button), Qt::LeftButton);
    }
    QImage TraceImage() { return window->Trace()->grab().toImage(); }
};

TEST_F(FilterWindowTest, ApplyShowsTheFilteredTraceWithIndicatorAndShiftFToggles) {
    OpenSample();
    const QImage raw = TraceImage();
    FilterDialog* form = OpenForm();
    ASSERT_TRUE(form);
    auto* label = window->findChild<QLabel*>("lbFilter");
    ASSERT_TRUE(label);
    EXPECT_FALSE(label->isVisible());

    // 10 kHz is half the sampling frequency of the 20 kHz recording.
    form->findChild<QLineEdit*>("edFilterCutoff")->setText("10000");
    Click(form, "btnFilterApply");
    ASSERT_EQ(dialogs.Transcript().size(), 1u);
    EXPECT_NE(dialogs.Transcript()[0].text.find("10000 Hz cannot be used"), std::string::npos);
    EXPECT_FALSE(ws.recording->HasFiltered());

    form->findChild<QComboBox*>("cbFilterKind")->setCurrentIndex(0);  // Butterworth
    form->findChild<QLineEdit*>("edFilterCutoff")->setText("300");
    form->findChild<QSpinBox*>("spFilterOrder")->setValue(2);
    Click(form, "btnFilterApply");
    ASSERT_TRUE(WaitFor([&] { return ws.recording->HasFiltered(); }, 20000));
    EXPECT_EQ(ws.settings.filterKind, 1);
    EXPECT_EQ(ws.settings.filterCutoffHz, 300.0);
    EXPECT_TRUE(label->isVisible());
    EXPECT_TRUE(label->text().contains("FILTERED: Butterworth low-pass 300 Hz, order 2")) << label->text().toStdString();
    const QImage filtered = TraceImage();
    EXPECT_NE(filtered, raw);

    // Shift+F goes to the main window, as after a click on it (the form,
    // shown meanwhile, is the active window now).
    QApplication::setActiveWindow(window.get());
    Key(Qt::Key_F, Qt::ShiftModifier);
    EXPECT_TRUE(label->text().contains("Recorded trace")) << label->text().toStdString();
    EXPECT_FALSE(window->Action("menu_ShowFiltered")->isChecked());
    EXPECT_EQ(TraceImage(), raw);
    Key(Qt::Key_F, Qt::ShiftModifier);
    EXPECT_EQ(TraceImage(), filtered);

    Click(form, "btnFilterResponse");
    ASSERT_TRUE(WaitFor([] { return CurrentGraphFrame() != nullptr; }));
    CloseGraphFrame();

    Click(form, "btnFilterRemove");
    EXPECT_FALSE(ws.recording->HasFiltered());
    EXPECT_FALSE(label->isVisible());
    EXPECT_EQ(TraceImage(), raw);
}

TEST_F(FilterWindowTest, DetectOnTheFilteredTraceIsSavedAndMakesReadsFiltered) {
    OpenSample();
    std::vector<int16_t> raw(2000), read(2000);
    ws.recording->ReadSamples(1000, raw);
    FilterDialog* form = OpenForm();
    ASSERT_TRUE(form);
    Click(form, "btnFilterApply");  // the settings' filter: elliptic low-pass 1 kHz
    ASSERT_TRUE(WaitFor([&] { return ws.recording->HasFiltered(); }, 20000));
    ws.recording->ReadSamples(1000, read);
    EXPECT_EQ(read, raw);  // detection still reads the recording

    window->Action("menu_DetectOnFiltered")->trigger();
    EXPECT_TRUE(ws.settings.detectOnFiltered);
    ws.recording->ReadSamples(1000, read);
    EXPECT_NE(read, raw);
    EXPECT_TRUE(window->findChild<QLabel*>("lbFilter")->text().contains("detection on filtered"));
    // Showing the recorded trace leaves detection on the filtered one.
    Key(Qt::Key_F, Qt::ShiftModifier);
    std::vector<int16_t> after(2000);
    ws.recording->ReadSamples(1000, after);
    EXPECT_EQ(after, read);
}

}  // namespace
}  // namespace vess::test
