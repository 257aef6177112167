// The group analysis window's data menus, work-array plots, right-click
// highlight and episodic grouping reach their commands; the texts and the
// grouping rules are checked in tests/group_analysis.
#include <QCheckBox>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QSpinBox>
#include <QTimer>

#include <set>

#include "app/group_window_fixture.h"
#include "graphs/ui/graph_frame.h"
#include "graphs/ui/plot_widget.h"
#include "group_analysis/ui/group_assign_dialog.h"
#include "recording/file_io.h"
#include "support/abf2_bytes.h"

namespace vess::test {
namespace {

using group::GroupAnalysisWindow;

class GroupDataTest : public GroupWindowFixture {
protected:
    GroupAnalysisWindow* OpenAndDisplay(const char* type) {
        GroupSampleEvents();
        return Display(type);
    }
    std::string ReadText(const std::filesystem::path& path) {
        const auto bytes = ReadFileBytes(path);
        return bytes ? std::string(bytes->begin(), bytes->end()) : std::string("(missing)");
    }
    static std::string Clipboard() { return QGuiApplication::clipboard()->text().toStdString(); }
    // The text after its first line.
    static std::string Body(const std::string& text) { return text.substr(text.find("\r\n") + 2); }
    static int Lines(const std::string& text) { return int(std::count(text.begin(), text.end(), '\n')); }
};

TEST_F(GroupDataTest, TraceAndCurveDataGoToTheClipboardOrAFile) {
    GroupAnalysisWindow* w = OpenAndDisplay("Average");
    const int32_t length = w->Traces().length;
    ASSERT_GT(length, 0);

    // Copy: trace 0 through the temporary file to the clipboard, no file asked.
    QGuiApplication::clipboard()->clear();
    dialogs.AnswerInput("0").AnswerInput("1");
    w->Action("menu_copydata")->trigger();
    const std::string average = Clipboard();
    EXPECT_EQ(average.rfind("Group Analysis: syn.abf Group # 1 Trace # 0\r\n", 0), 0u) << average.substr(0, 80);
    EXPECT_EQ(Lines(average), length + 2);
    EXPECT_EQ(ReadText(std::filesystem::temp_directory_path() / "TempTrace.txt"), average);

    // Save: trace 1 halved into a chosen text file.
    dialogs.AnswerInput("1").AnswerInput("2").AnswerSaveFile((dir / "trace1").string());
    w->Action("menu_saveascii")->trigger();
    const std::string saved = ReadText(dir / "trace1.txt");
    EXPECT_EQ(saved.rfind("Group Analysis: syn.abf Group # 1 Trace # 1\r\n", 0), 0u) << saved.substr(0, 80);
    EXPECT_EQ(Lines(saved), length + 2);

    // No curve yet: the curve commands say so.
    w->Action("menu_extractcurvedata")->trigger();
    EXPECT_EQ(dialogs.Messages().back().caption, "Curve Data");

    // Extract makes the shown trace (the average) the curve, under its own
    // header. It follows the display, not the type box changed since.
    w->findChild<QAction*>("key_next")->trigger();  // trace 1 is current, the average still shown
    ASSERT_EQ(w->TraceLabel()->text().toStdString().rfind("Trace: 1 of ", 0), 0u);
    w->AnalysisTypeBox()->setCurrentText("Individual");
    w->Action("menu_trace_extract")->trigger();
    dialogs.AnswerInput("1");
    w->Action("menu_extractcurvedata")->trigger();
    const std::string extracted = Clipboard();
    EXPECT_EQ(extracted.rfind("Group Analysis: syn.abf Group # 1\r\n", 0), 0u) << extracted.substr(0, 80);
    EXPECT_EQ(Body(extracted), Body(average));

    // A fit replaces it by the fitted curve, which starts after the stretch's start.
    w->ExponentialsBox()->setCurrentText("1");
    QTest::mouseClick(w->FitButton(), Qt::LeftButton);
    ASSERT_TRUE(WaitFor([&] { return !w->Fitting(); }, 60000));
    dialogs.AnswerInput("1").AnswerSaveFile((dir / "curve.txt").string());
    w->Action("menu_savecurvedata")->trigger();
    const std::string curve = ReadText(dir / "curve.txt");
    EXPECT_EQ(curve.rfind("Curve Fit Group # 1 Trace # 0\r\n", 0), 0u) << curve.substr(0, 80);
    const std::string firstPoint = Body(Body(curve));
    EXPECT_GT(std::stod(firstPoint.substr(0, firstPoint.find('\t'))), 0.0);
    EXPECT_LT(Lines(curve), length + 2);
    EXPECT_TRUE(dialogs.AllAnswersUsed());
}

TEST_F(GroupDataTest, PlotMenuDrawsTheWorkArrays) {
    GroupAnalysisWindow* w = OpenAndDisplay("Average");
    w->Action("menu_Plot_2")->trigger();
    EXPECT_EQ(dialogs.Messages().back().caption, "Empty Data Array #2");

    const std::vector<float> values{2, 2, 2, 3, 4.5f};
    ws.Array(1).Assign(values);
    dialogs.AnswerInput("1");
    w->Action("menu_Plot_1")->trigger();
    GraphFrame* frame = CurrentGraphFrame();
    ASSERT_NE(frame, nullptr);
    ASSERT_NE(frame->CurrentPlot(), nullptr);
    const PlotData& shown = frame->CurrentPlot()->Description();
    EXPECT_EQ(shown.xAxis, "Data Array #1");
    ASSERT_EQ(shown.series.size(), 1u);
    EXPECT_EQ(shown.series[0].y, (std::vector<double>{3, 1, 1}));  // bins 2, 3, 4
    CloseGraphFrame();
}

TEST_F(GroupDataTest, RightClickHighlightsTheShownTrace) {
    GroupAnalysisWindow* w = OpenAndDisplay("Individual");
    group::TracePicture* picture = w->Picture();
    w->resize(1000, 700);
    QApplication::processEvents();
    w->MoveTo(1);
    auto rightClick = [picture](QPointF at) {
        QTest::mouseClick(picture, Qt::RightButton, {}, at.toPoint());
    };
    const int32_t mid = w->Traces().length / 2;
    rightClick(picture->PixelOf(1, mid));
    EXPECT_EQ(picture->Highlighted(), 1);
    // Drawn in the highlight colour.
    const QImage image = picture->grab().toImage();
    const QPoint on = picture->PixelOf(1, mid).toPoint();
    bool yellow = false;  // red and green without blue, allowing for antialiasing
    for (int dx = -2; dx <= 2; ++dx)
        for (int dy = -2; dy <= 2; ++dy) {
            const QColor c = image.pixelColor(on + QPoint(dx, dy));
            yellow |= c.red() > 120 && c.green() > 120 && c.blue() < 60;
        }
    EXPECT_TRUE(yellow);
    // A click far from the trace clears it; so does moving to another trace.
    rightClick(QPointF(picture->PixelOf(1, mid).x(), 3));
    EXPECT_EQ(picture->Highlighted(), -1);
    rightClick(picture->PixelOf(1, mid));
    ASSERT_EQ(picture->Highlighted(), 1);
    w->MoveTo(2);
    EXPECT_EQ(picture->Highlighted(), -1);

    // The average type: the average is the shown trace.
    w->AnalysisTypeBox()->setCurrentText("Average");
    QTest::mouseClick(w->StartButton(), Qt::LeftButton);
    rightClick(picture->PixelOf(0, mid / 2));
    EXPECT_EQ(picture->Highlighted(), 0);
}

// An episodic recording built here: the synthetic events cut into 6 sweeps
// of 1 s (20000 points), written as an ABF 2 file.
TEST_F(GroupDataTest, EpisodicEventsAreGroupedByTheirSweeps) {
    constexpr int64_t kSweep = 20000;
    SynthOptions options;
    options.seconds = 6;
    options.seed = 11;
    options.eventsPerSecond = 8;
    const SynthRecording synth = Synthesise(options);
    Abf2Layout layout;
    layout.intervalUs = 50;
    layout.adcRange = synth.abfLayout.adcRange;
    layout.adcResolution = synth.abfLayout.adcResolution;
    layout.operationMode = 5;  // episodic stimulation
    layout.samplesPerSweep = int32_t(kSweep);
    layout.sweeps = 6;
    static_cast<AbfChannelLayout&>(layout.channels[0]) = synth.abfLayout.channels[0];
    ASSERT_EQ(synth.samples.size(), std::size_t(6 * kSweep));
    ASSERT_EQ(WriteFileAtomic(dir / "episodic.abf", std::span<const uint8_t>(Abf2Bytes(layout, synth.samples))), "");
    ClickFile("episodic.abf");
    ASSERT_NE(ws.recording, nullptr);
    ASSERT_EQ(ws.recording->SweepStarts().size(), 6u);
    window->Trace()->setFocus();
    AnalyseUntilEvents(30);

    // The dialog opened from the menu, in its episodic mode, grouping by sweep from group 3.
    bool seen = false;
    QTimer::singleShot(0, [&] {
        auto* d = qobject_cast<group::GroupAssignDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(d, nullptr);
        seen = true;
        auto* bySweep = d->findChild<QCheckBox*>("EpisodeBySweep");
        EXPECT_TRUE(bySweep->isChecked());
        EXPECT_TRUE(bySweep->isVisible());
        d->findChild<QSpinBox*>("EpisodeFirstGroup")->setValue(3);
        d->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Apply)->click();
        d->reject();
    });
    window->Action("menu_groupEpisodic")->trigger();
    ASSERT_TRUE(seen);
    std::set<int> sweeps;
    for (const auto& e : ws.events.Records()) {
        if (e.group == kGroupRejected) continue;
        EXPECT_EQ(e.group, 3 + e.sampleIndex / kSweep) << e.sampleIndex;
        sweeps.insert(int(e.sampleIndex / kSweep));
    }
    EXPECT_GE(sweeps.size(), 3u);
}

// Sweeps of their own lengths, shown whole (the full-sweep box): seven
// traces as long as the longest (4230 points), each ending where its sweep ends.
TEST_F(GroupDataTest, VariableLengthSweepsAreShownAsEpisodes) {
    VESS_REQUIRE_SHARED_DATA();
    dialogs.AnswerInput("0");  // the channel
    ASSERT_TRUE(OpenFile(SharedData() / "abf1/2009_01_19_0002_varlen_v18.abf"));
    GroupAnalysisWindow* w = group::OpenGroupAnalysis(*window);
    w->EpisodesOption()->setChecked(true);
    w->FullSweepCheck()->setChecked(true);
    w->AnalysisTypeBox()->setCurrentText("Superimpose");
    QTest::mouseClick(w->StartButton(), Qt::LeftButton);
    const group::TraceSet& set = w->Traces();
    ASSERT_EQ(set.count, 7);
    ASSERT_EQ(set.length, 4230);
    EXPECT_EQ(set.Row(1)[4158], 0);  // the first sweep holds 4158 points
    EXPECT_EQ(set.Row(2)[4229], ws.recording->Sample(4158 + 4229));
}

}  // namespace
}  // namespace vess::test
