// The digital filter on the main window: the form, a refused cut-off, the
// response plot, the filtered trace with its indicator and the key that
// switches it, detection reading the filtered trace when asked, and the
// Gaussian's form; the signal menu's noise and trace tools.
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <qcustomplot.h>

#include "app/main_window.h"
#include "graphs/ui/graph_frame.h"
#include "graphs/ui/plot_widget.h"
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

// The Gaussian has no order, pass or second pass to choose (the kinds
// themselves are checked in tests/signal).
TEST_F(FilterWindowTest, GaussianFilterAppliesFromTheForm) {
    OpenSample();
    FilterDialog* form = OpenForm();
    ASSERT_TRUE(form);
    auto* kind = form->findChild<QComboBox*>("cbFilterKind");
    auto* apply = form->findChild<QPushButton*>("btnFilterApply");
    auto* label = window->findChild<QLabel*>("lbFilter");

    form->findChild<QLineEdit*>("edFilterCutoff")->setText("1000");
    form->findChild<QComboBox*>("cbFilterPass")->setCurrentIndex(1);  // high-pass
    kind->setCurrentIndex(kind->findText("Gaussian"));
    EXPECT_FALSE(form->findChild<QSpinBox*>("spFilterOrder")->isEnabled());
    EXPECT_FALSE(form->findChild<QCheckBox*>("chkFilterZeroPhase")->isEnabled());
    EXPECT_FALSE(form->findChild<QComboBox*>("cbFilterPass")->isEnabled());
    EXPECT_EQ(form->findChild<QComboBox*>("cbFilterPass")->currentIndex(), 0);  // back to low-pass
    QTest::mouseClick(apply, Qt::LeftButton);
    ASSERT_TRUE(WaitFor([&] { return ws.recording->HasFiltered(); }, 20000));
    EXPECT_EQ(ws.settings.filterKind, 6);
    EXPECT_TRUE(label->text().contains("Gaussian low-pass 1000 Hz")) << label->text().toStdString();
    EXPECT_FALSE(label->text().contains("order"));
    form->grab().save(QString(VESS_BINARY_DIR) + "/app_screens/filter_dialog_gaussian.png");
}

// The signal menu's noise and trace tools: the noise message and the spectrum
// (on logarithmic axes) of the trace on screen, the event-free file written
// from the detected events, and a picture series of screens.
using SignalToolsTest = GuiTest;

// The noise tools measure the trace on screen: the filtered one while it is
// shown (detection reads the recorded one), the recorded one after Shift+F.
TEST_F(SignalToolsTest, NoiseToolsMeasureTheShownTraceAndNameTheFilter) {
    OpenSample();
    const auto measure = [&] {
        dialogs.ClearTranscript();
        window->Action("menu_NoiseMeasures")->trigger();
        EXPECT_EQ(dialogs.Messages().size(), 1u);
        return dialogs.Messages().empty() ? std::string() : dialogs.Messages()[0].text;
    };
    const auto sd = [](const std::string& text) {
        const std::size_t at = text.find(tool_texts::kSdLabel);
        return at == std::string::npos ? 0.0 : std::stod(text.substr(at + tool_texts::kSdLabel.size()));
    };
    const std::string recorded = measure();
    // The first screen: 4 blocks of 256 points, in pA.
    EXPECT_NE(recorded.find(std::string(tool_texts::kPointsLabel) + "1024"), std::string::npos) << recorded;
    EXPECT_NE(recorded.find(" pA\n"), std::string::npos) << recorded;
    EXPECT_EQ(recorded.find("filtered"), std::string::npos) << recorded;

    window->Action("menu_Filter")->trigger();
    auto* form = window->findChild<FilterDialog*>("FilterDialog");
    ASSERT_TRUE(form);
    form->findChild<QComboBox*>("cbFilterKind")->setCurrentIndex(0);  // Butterworth
    form->findChild<QLineEdit*>("edFilterCutoff")->setText("300");
    form->findChild<QSpinBox*>("spFilterOrder")->setValue(2);
    QTest::mouseClick(form->findChild<QPushButton*>("btnFilterApply"), Qt::LeftButton);
    ASSERT_TRUE(WaitFor([&] { return ws.recording->HasFiltered() && !window->Busy(); }, 20000));
    ASSERT_FALSE(ws.settings.detectOnFiltered);  // detection still reads the recorded trace
    form->close();

    const std::string filtered = measure();
    EXPECT_NE(filtered.find("Displayed screen, filtered: Butterworth low-pass 300 Hz, order 2\n"), std::string::npos)
        << filtered;
    // A 300 Hz low-pass takes most of the 20 kHz recording's noise away.
    EXPECT_LT(sd(filtered), 0.8 * sd(recorded)) << filtered << "\n" << recorded;

    dialogs.AnswerInput("256");
    window->Action("menu_NoiseSpectrum")->trigger();
    ASSERT_TRUE(WaitFor([&] { return !window->Busy() && CurrentGraphFrame(); }));
    GraphFrame* frame = CurrentGraphFrame();
    PlotWidget* plot = frame->CurrentPlot();
    const PlotData& data = plot->Description();
    EXPECT_NE(data.title.find("filtered: Butterworth low-pass 300 Hz"), std::string::npos) << data.title;
    ASSERT_EQ(data.series.size(), 1u);
    EXPECT_EQ(data.series[0].x.size(), 129u);  // 256-point segments: bins 0 .. 128
    EXPECT_EQ(plot->Canvas()->xAxis->scaleType(), QCPAxis::stLogarithmic);
    EXPECT_EQ(plot->Canvas()->yAxis->scaleType(), QCPAxis::stLogarithmic);
    CloseGraphFrame();

    QApplication::setActiveWindow(window.get());
    Key(Qt::Key_F, Qt::ShiftModifier);  // back to the recorded trace on screen
    EXPECT_EQ(measure(), recorded);
}

TEST_F(SignalToolsTest, EventFreeFileAndPictureSeries) {
    OpenSample();
    AnalyseUntilEvents(3);
    dialogs.ClearTranscript();
    dialogs.AnswerInput("2").AnswerSaveFile((dir / "free.abf").string());
    window->Action("menu_EventFree")->trigger();
    ASSERT_FALSE(dialogs.Messages().empty());
    EXPECT_EQ(dialogs.Messages().back().text, std::string(tool_texts::kEventFreeSaved) + "free.abf");
    AbfError error{};
    const auto written = Recording::Open(dir / "free.abf", &error);
    ASSERT_TRUE(written);
    EXPECT_EQ(written->PointsPerChannel(), ws.recording->PointsPerChannel());

    const int32_t shown = ws.screenStartBlock;
    std::filesystem::create_directory(dir / "pics");
    dialogs.AnswerInput("1").AnswerInput("5").AnswerInput("2").AnswerSaveFile((dir / "pics" / "x.png").string());
    window->Action("menu_PictureSeries")->trigger();
    for (const char* name : {"screen_0001.png", "screen_0003.png", "screen_0005.png"})
        EXPECT_TRUE(std::filesystem::exists(dir / "pics" / name)) << name;
    EXPECT_FALSE(std::filesystem::exists(dir / "pics" / "screen_0002.png"));
    EXPECT_EQ(ws.screenStartBlock, shown);  // the screen shown before comes back
}

}  // namespace
}  // namespace vess::test
