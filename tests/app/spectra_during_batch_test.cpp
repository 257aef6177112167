// Spectra plan Fourier transforms; batch workers plan theirs at the same
// time. The noise spectrum and the heart-rate spectrum used to run on the
// windows' thread while a batch went (an unlocked planner freed memory twice).
// Now a running batch holds them off, and they run once it has ended.
#include <QPushButton>
#include <QSpinBox>

#include "app/gui_fixture.h"
#include "batch/ui/batch_window.h"
#include "graphs/ui/graph_frame.h"
#include "graphs/ui/plot_widget.h"
#include "hrv/ui/spectrum_window.h"

namespace vess::test {
namespace {

using SpectraDuringBatchTest = GuiTest;

TEST_F(SpectraDuringBatchTest, NoiseAndHeartRateSpectraWaitForARunningBatch) {
    OpenSample();
    window->Action("menu_HRV_Spectrum")->trigger();
    auto* spectrum = window->findChild<hrv::SpectrumWindow*>("frmHRVSpectrum");
    ASSERT_NE(spectrum, nullptr);
    QPushButton* compute = spectrum->findChild<QPushButton*>("Command1");
    ASSERT_TRUE(compute->isEnabled());

    window->Action("menu_Batch")->trigger();
    auto* batch = window->findChild<BatchWindow*>("BatchWindow");
    ASSERT_NE(batch, nullptr);
    std::vector<std::filesystem::path> files;
    for (const char* name : {"a.abf", "b.abf", "c.abf"}) {
        SynthOptions o;
        o.seconds = 20;
        files.push_back(dir / name);
        ASSERT_EQ(WriteSynthetic(files.back(), Synthesise(o)), "");
    }
    batch->AddRecordings(files);
    batch->findChild<QSpinBox*>("jobs")->setValue(2);
    QTest::mouseClick(batch->findChild<QPushButton*>("run"), Qt::LeftButton);
    // The run's end is applied by the event loop, which does not turn here.
    ASSERT_TRUE(batch->Running());

    dialogs.ClearTranscript();
    dialogs.AnswerInput("256");
    window->Action("menu_NoiseSpectrum")->trigger();
    EXPECT_TRUE(dialogs.Transcript().empty());  // not even the segment length is asked
    EXPECT_EQ(CurrentGraphFrame(), nullptr);
    EXPECT_FALSE(compute->isEnabled());

    ASSERT_TRUE(WaitFor([&] { return !batch->Running(); }, 60000));
    EXPECT_TRUE(compute->isEnabled());
    window->Action("menu_NoiseSpectrum")->trigger();
    ASSERT_TRUE(WaitFor([&] { return !window->Busy() && CurrentGraphFrame(); }));
    EXPECT_EQ(CurrentGraphFrame()->CurrentPlot()->Description().series.at(0).x.size(), 129u);  // bins 0..128
    CloseGraphFrame();
}

}  // namespace
}  // namespace vess::test
