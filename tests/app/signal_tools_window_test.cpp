// The signal menu's noise and trace tools on the main window: the noise
// message and the spectrum (on logarithmic axes) of the trace on screen, the event-free file written from
// the detected events, and a picture series of screens.
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <qcustomplot.h>

#include "app/main_window.h"
#include "gui_fixture.h"
#include "graphs/ui/graph_frame.h"
#include "graphs/ui/plot_widget.h"
#include "signal/ui/filter_dialog.h"
#include "signal/tool_texts.h"

namespace vess::test {
namespace {

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
    ASSERT_EQ(data.bands.size(), 1u);          // the 50 Hz line marker
    EXPECT_EQ(data.bands[0].label, "50 Hz");
    EXPECT_EQ(plot->Canvas()->xAxis->scaleType(), QCPAxis::stLogarithmic);
    EXPECT_EQ(plot->Canvas()->yAxis->scaleType(), QCPAxis::stLogarithmic);
    // The first bin above 0 Hz to the last, on screen.
    EXPECT_LE(plot->Ranges().x.lower, data.series[0].x[1]);
    EXPECT_GT(plot->Ranges().x.lower, 0);
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
