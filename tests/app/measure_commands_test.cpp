// The measurement commands of the main window, and tool-tips on and off.
#include <QHelpEvent>
#include <QToolTip>

#include <cstring>

#include "detection/texts.h"
#include "detection/trace_helpers.h"
#include "detection/ui/texts.h"
#include "event_shapes.h"
#include "gui_fixture.h"

namespace vess::test {
namespace {

class MeasureGuiTest : public GuiTest {
protected:
    // A flat trace with an event of 1000 counts whose onset is at sample 600
    // and a second one of 600 counts on its decay 80 samples later; a lone
    // event of the same shape on the third screen (onset 2600). 50 us, one
    // count a unit, parameters in samples.
    void OpenDoublePeakTrace() {
        std::vector<int16_t> trace(4096, 0);
        for (auto [onset, peak] : {std::pair{600, 1000}, {680, 600}, {2600, 1000}}) AddEvent(trace, onset, peak);
        MakeRecording(dir / "dbl.abf", trace, 50, 1.0f);
        ASSERT_TRUE(OpenFile(dir / "dbl.abf"));
        ws.params() = TestParams(1);
        window->RefreshAll();
    }
    void ClickAt(int64_t index, Qt::KeyboardModifiers mods) { ClickTrace(index, Qt::LeftButton, mods); }
    // The number after label in the last message, e.g. "RMS noise: 2.1 pA".
    static double NumberAfter(const std::string& text, const char* label) {
        const std::size_t at = text.find(label);
        EXPECT_NE(at, std::string::npos) << text;
        return at == std::string::npos ? NAN : std::stod(text.substr(at + std::strlen(label)));
    }
};

// L, Alt+click and the scan each store the second peak riding on an event's
// decay once, as one undoable step; where there is none they say so.
TEST_F(MeasureGuiTest, DoublePeaksFromTheKeyTheMouseAndTheScan) {
    OpenDoublePeakTrace();
    ClickAt(300, Qt::AltModifier);  // flat trace
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    EXPECT_EQ(dialogs.Messages()[0].caption, detection_texts::kNoEventFoundCaption);
    ClickAt(626, Qt::AltModifier);
    ASSERT_EQ(ws.events.Count(), 2);
    EXPECT_NEAR(ws.events[1].sampleIndex, 626, 2);
    EXPECT_GT(ws.events[2].sampleIndex, 680);
    Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(ws.events.Count(), 0);

    // A click stores the first peak only; L adds the second and selects it,
    // once.
    ClickAt(626, Qt::NoModifier);
    ASSERT_EQ(ws.events.Count(), 1);
    Type('l');
    ASSERT_EQ(ws.events.Count(), 2);
    EXPECT_EQ(ws.selectedEvent, 2);
    EXPECT_EQ(GridCurrentRow(), 1);
    EXPECT_GT(ws.events[2].sampleIndex, 680);
    Type('z');
    Type('l');
    EXPECT_EQ(ws.events.Count(), 2);
    Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(GridRows(), 1);

    // The lone event on the third screen: L says there is no second peak;
    // the scan adds the first event's and keeps the lone one selected.
    Type('d');
    Type('d');
    ClickAt(2626 - ws.screenStartBlock * 256, Qt::NoModifier);
    ASSERT_EQ(ws.selectedEvent, 2);
    Type('l');
    EXPECT_EQ(dialogs.Messages().back().caption, detection_texts::kNoDoublePeakCaption);
    EXPECT_EQ(ws.events.Count(), 2);
    const EventRecord lone = ws.events[2];
    window->Action("menu_ScanDoublePeak")->trigger();
    ASSERT_EQ(ws.events.Count(), 3);
    EXPECT_EQ(GridRows(), 3);
    EXPECT_EQ(ws.events[ws.selectedEvent], lone);
    EXPECT_EQ(dialogs.Messages().back().text, "2 events scanned; double peaks added: 1.");
}

TEST_F(MeasureGuiTest, NoiseMenusReportTheScreenAndSetTheThresholdBox) {
    OpenSample();
    Key(Qt::Key_F9);  // events of the screen are left out of the noise
    window->Action("menu_RMSNoise")->trigger();
    ASSERT_FALSE(dialogs.Messages().empty());
    const DialogEntry rms = dialogs.Messages().back();
    EXPECT_EQ(rms.caption, "RMS Noise");
    // The synthetic noise: 2 pA RMS coloured noise and a 0.6 pA hum.
    const double rmsPa = NumberAfter(rms.text, detection_texts::kRmsNoiseLabel);
    EXPECT_GT(rmsPa, 1.0);
    EXPECT_LT(rmsPa, 3.5);

    auto* box = window->findChild<QLineEdit*>("txtThresholdAmplitude");
    const float before = ws.params().ThresholdAmplitude;
    dialogs.AnswerYesNo(false).AnswerYesNo(true);
    window->Action("menu_BaselineThreshold")->trigger();
    EXPECT_EQ(ws.params().ThresholdAmplitude, before);
    EXPECT_EQ(box->text(), QString::number(before));
    window->Action("menu_BaselineThreshold")->trigger();
    EXPECT_TRUE(dialogs.Transcript().back().text.ends_with(detection_texts::kUseThresholdQuestion));
    // Yes: four times the RMS noise, shown in the box at once.
    EXPECT_NEAR(ws.params().ThresholdAmplitude, 4 * rmsPa, 0.05 * rmsPa);
    EXPECT_EQ(box->text(), QString::number(ws.params().ThresholdAmplitude));
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

TEST_F(MeasureGuiTest, ToolTipsFollowTheDisplayTooltipsSetting) {
    auto* button = window->AnalyzeButton();
    auto hover = [&] {
        QToolTip::hideText();  // hides after a short delay
        EXPECT_TRUE(WaitFor([] { return !QToolTip::isVisible(); }, 2000));
        QHelpEvent help(QEvent::ToolTip, button->rect().center(),
                        button->mapToGlobal(button->rect().center()));
        QApplication::sendEvent(button, &help);
        return QToolTip::isVisible() ? QToolTip::text() : QString();
    };
    EXPECT_EQ(hover(), ui_text::kTipAnalyze);

    QAction* toggle = window->Action("menu_DisplayTooltips");
    for (bool on : {false, true}) {
        toggle->trigger();
        EXPECT_EQ(ws.settings.showToolTips, on);
        EXPECT_EQ(hover(), on ? QString(ui_text::kTipAnalyze) : QString());
    }

    // Settings read from a file (DisplayTooltips=False) take effect and move
    // the menu check with them.
    ws.settings.showToolTips = false;
    window->RefreshAll();
    EXPECT_FALSE(toggle->isChecked());
    EXPECT_EQ(hover(), QString());
    QToolTip::hideText();
}

}  // namespace
}  // namespace vess::test
