// The signal menu's noise and trace tools on the main window: the noise
// message, the spectrum in the graph frame, the event-free file written from
// the detected events, and a picture series of screens.
#include <QAction>

#include "app/main_window.h"
#include "gui_fixture.h"
#include "graphs/ui/graph_frame.h"
#include "graphs/ui/plot_widget.h"
#include "signal/tool_texts.h"

namespace vess::test {
namespace {

using SignalToolsTest = GuiTest;

TEST_F(SignalToolsTest, NoiseMeasuresAndSpectrumOfTheScreen) {
    OpenSample();
    dialogs.ClearTranscript();
    window->Action("menu_NoiseMeasures")->trigger();
    ASSERT_EQ(dialogs.Messages().size(), 1u);
    const std::string text = dialogs.Messages()[0].text;
    EXPECT_EQ(dialogs.Messages()[0].caption, tool_texts::kNoiseMenu);
    // The first screen: 4 blocks of 256 points, in pA.
    EXPECT_NE(text.find(std::string(tool_texts::kPointsLabel) + "1024"), std::string::npos) << text;
    EXPECT_NE(text.find(" pA\n"), std::string::npos) << text;

    dialogs.AnswerInput("256");
    window->Action("menu_NoiseSpectrum")->trigger();
    ASSERT_TRUE(WaitFor([&] { return !window->Busy(); }));
    GraphFrame* frame = CurrentGraphFrame();
    ASSERT_NE(frame, nullptr);
    const PlotData& plot = frame->CurrentPlot()->Description();
    ASSERT_EQ(plot.series.size(), 1u);
    EXPECT_EQ(plot.series[0].x.size(), 129u);  // 256-point segments: bins 0 .. 128
    ASSERT_EQ(plot.bands.size(), 1u);          // the 50 Hz line marker
    EXPECT_EQ(plot.bands[0].label, "50 Hz");
    Snapshot("signal_tools_main");  // makes the screens folder
    frame->resize(900, 600);
    QTest::qWait(50);
    frame->grab().save(QString(VESS_BINARY_DIR) + "/app_screens/noise_spectrum.png");
    CloseGraphFrame();
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
    std::filesystem::copy_file(dir / "pics" / "screen_0003.png",
                               std::string(VESS_BINARY_DIR) + "/app_screens/picture_series_0003.png",
                               std::filesystem::copy_options::overwrite_existing);
}

}  // namespace
}  // namespace vess::test
