// The digital filter on the main window: the form, a refused cut-off, the
// filtered trace with its indicator and the key that switches it, the noise
// tools on the trace shown, the Gaussian's form, and detection reading the
// filtered trace when asked; the signal menu's event-free file and pictures.
#include <qcustomplot.h>

#include "gui_fixture.h"
#include "signal/tool_texts.h"
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
    // The noise message of the screen shown.
    std::string MeasureNoise() {
        dialogs.ClearTranscript();
        window->Action("menu_NoiseMeasures")->trigger();
        EXPECT_EQ(dialogs.Messages().size(), 1u);
        return dialogs.Messages().empty() ? std::string() : dialogs.Messages()[0].text;
    }
    static double Sd(const std::string& text) {
        const std::size_t at = text.find(tool_texts::kSdLabel);
        return at == std::string::npos ? 0.0 : std::stod(text.substr(at + tool_texts::kSdLabel.size()));
    }
};

// The noise tools measure the trace on screen: the filtered one while it is
// shown (detection reads the recorded one), the recorded one after Shift+F.
TEST_F(FilterWindowTest, ApplyShowsTheFilteredTraceAndShiftFTogglesWhatIsShownAndMeasured) {
    OpenSample();
    const QImage raw = TraceImage();
    std::vector<int16_t> rawSamples(2000), read(2000);
    ws.recording->ReadSamples(1000, rawSamples);
    const std::string recorded = MeasureNoise();
    // The first screen: 4 blocks of 256 points, in pA.
    EXPECT_NE(recorded.find(std::string(tool_texts::kPointsLabel) + "1024"), std::string::npos) << recorded;
    EXPECT_NE(recorded.find(" pA\n"), std::string::npos) << recorded;
    FilterDialog* form = OpenForm();
    ASSERT_TRUE(form);
    auto* label = window->findChild<QLabel*>("lbFilter");
    EXPECT_FALSE(label->isVisible());

    // 10 kHz is half the sampling frequency of the 20 kHz recording.
    dialogs.ClearTranscript();
    form->findChild<QLineEdit*>("edFilterCutoff")->setText("10000");
    Click(form, "btnFilterApply");
    ASSERT_EQ(dialogs.Transcript().size(), 1u);
    EXPECT_NE(dialogs.Transcript()[0].text.find("10000 Hz cannot be used"), std::string::npos);
    EXPECT_FALSE(ws.recording->HasFiltered());

    form->findChild<QComboBox*>("cbFilterKind")->setCurrentIndex(0);  // Butterworth
    form->findChild<QLineEdit*>("edFilterCutoff")->setText("300");
    form->findChild<QSpinBox*>("spFilterOrder")->setValue(2);
    Click(form, "btnFilterApply");
    ASSERT_TRUE(WaitFor([&] { return ws.recording->HasFiltered() && !window->Busy(); }, 20000));
    EXPECT_EQ(ws.settings.filterKind, 1);
    EXPECT_EQ(ws.settings.filterCutoffHz, 300.0);
    EXPECT_TRUE(label->isVisible());
    EXPECT_TRUE(label->text().contains("FILTERED: Butterworth low-pass 300 Hz, order 2")) << label->text().toStdString();
    const QImage filtered = TraceImage();
    EXPECT_NE(filtered, raw);
    ASSERT_FALSE(ws.settings.detectOnFiltered);
    const std::string measured = MeasureNoise();
    EXPECT_NE(measured.find("Displayed screen, filtered: Butterworth low-pass 300 Hz, order 2\n"), std::string::npos)
        << measured;
    // A 300 Hz low-pass takes most of the 20 kHz recording's noise away.
    EXPECT_LT(Sd(measured), 0.8 * Sd(recorded)) << measured << "\n" << recorded;
    dialogs.AnswerInput("256");
    window->Action("menu_NoiseSpectrum")->trigger();
    ASSERT_TRUE(WaitFor([&] { return !window->Busy() && CurrentGraphFrame(); }));
    PlotWidget* plot = CurrentGraphFrame()->CurrentPlot();
    EXPECT_NE(plot->Description().title.find("filtered: Butterworth low-pass 300 Hz"), std::string::npos);
    EXPECT_EQ(plot->Description().series.at(0).x.size(), 129u);  // 256-point segments: bins 0 .. 128
    EXPECT_EQ(plot->Canvas()->yAxis->scaleType(), QCPAxis::stLogarithmic);
    CloseGraphFrame();

    // Shift+F goes to the main window, as after a click on it (the form,
    // shown meanwhile, is the active window now).
    QApplication::setActiveWindow(window.get());
    Key(Qt::Key_F, Qt::ShiftModifier);
    EXPECT_TRUE(label->text().contains("Recorded trace")) << label->text().toStdString();
    EXPECT_FALSE(window->Action("menu_ShowFiltered")->isChecked());
    EXPECT_EQ(TraceImage(), raw);
    EXPECT_EQ(MeasureNoise(), recorded);
    Key(Qt::Key_F, Qt::ShiftModifier);
    EXPECT_EQ(TraceImage(), filtered);

    Click(form, "btnFilterResponse");
    ASSERT_TRUE(WaitFor([] { return CurrentGraphFrame() != nullptr; }));
    CloseGraphFrame();
    Click(form, "btnFilterRemove");
    EXPECT_FALSE(ws.recording->HasFiltered());
    EXPECT_FALSE(label->isVisible());
    EXPECT_EQ(TraceImage(), raw);

    // The Gaussian has no order, pass or second pass to choose (the kinds
    // themselves are checked in tests/signal).
    auto* kind = form->findChild<QComboBox*>("cbFilterKind");
    auto* pass = form->findChild<QComboBox*>("cbFilterPass");
    form->findChild<QLineEdit*>("edFilterCutoff")->setText("1000");
    pass->setCurrentIndex(1);  // high-pass
    kind->setCurrentIndex(kind->findText("Gaussian"));
    EXPECT_FALSE(form->findChild<QSpinBox*>("spFilterOrder")->isEnabled());
    EXPECT_FALSE(form->findChild<QCheckBox*>("chkFilterZeroPhase")->isEnabled());
    EXPECT_FALSE(pass->isEnabled());
    EXPECT_EQ(pass->currentIndex(), 0);  // back to low-pass
    Click(form, "btnFilterApply");
    ASSERT_TRUE(WaitFor([&] { return ws.recording->HasFiltered(); }, 20000));
    EXPECT_EQ(ws.settings.filterKind, 6);
    EXPECT_TRUE(label->text().contains("Gaussian low-pass 1000 Hz")) << label->text().toStdString();
    EXPECT_FALSE(label->text().contains("order"));
    Snapshot("filter_dialog_gaussian", form);

    // Detection reads the recording until asked to read the filtered trace,
    // and goes on reading it while the recorded trace is shown.
    ws.recording->ReadSamples(1000, read);
    EXPECT_EQ(read, rawSamples);
    window->Action("menu_DetectOnFiltered")->trigger();
    EXPECT_TRUE(ws.settings.detectOnFiltered);
    ws.recording->ReadSamples(1000, read);
    EXPECT_NE(read, rawSamples);
    EXPECT_TRUE(label->text().contains("detection on filtered"));
    QApplication::setActiveWindow(window.get());
    Key(Qt::Key_F, Qt::ShiftModifier);
    std::vector<int16_t> after(2000);
    ws.recording->ReadSamples(1000, after);
    EXPECT_EQ(after, read);
}

// The event-free file written from the detected events, and a picture
// series of every second screen from 1 to 5.
TEST_F(FilterWindowTest, EventFreeFileAndPictureSeries) {
    OpenSample();
    AnalyseUntilEvents(3);
    dialogs.ClearTranscript();
    dialogs.AnswerInput("2").AnswerSaveFile((dir / "free.abf").string());
    window->Action("menu_EventFree")->trigger();
    ASSERT_FALSE(dialogs.Messages().empty());
    EXPECT_EQ(dialogs.Messages().back().text, std::string(tool_texts::kEventFreeSaved) + "free.abf");
    AbfError error{};
    EXPECT_TRUE(Recording::Open(dir / "free.abf", &error));  // its samples: tests/signal

    const int32_t shown = ws.screenStartBlock;
    std::filesystem::create_directory(dir / "pics");
    dialogs.AnswerInput("1").AnswerInput("5").AnswerInput("2").AnswerSaveFile((dir / "pics" / "x.png").string());
    window->Action("menu_PictureSeries")->trigger();
    EXPECT_TRUE(std::filesystem::exists(dir / "pics" / "screen_0005.png"));  // which screens: tests/signal
    EXPECT_EQ(ws.screenStartBlock, shown);  // the screen shown before comes back
}

}  // namespace
}  // namespace vess::test
