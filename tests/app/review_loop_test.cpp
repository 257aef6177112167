// The review loop on the main window: the fitted screen and display keys,
// parameter boxes and the parameter panel, the overview strip, event marks,
// the grid, the trace's end, zooming the trace and the channel list.
#include <QDialog>
#include <QHeaderView>
#include <QListWidget>
#include <QTimer>
#include <QWheelEvent>

#include <cmath>

#include "app/background_job.h"
#include "app/qt_dialogs.h"
#include "detection/decimate.h"
#include "detection/navigation.h"
#include "detection/trace_helpers.h"
#include "detection/ui/overview_strip.h"
#include "detection/ui/parameter_panel.h"
#include "detection/ui/trace_style.h"
#include "event_shapes.h"
#include "gui_fixture.h"
#include "recording/event_grid_format.h"

namespace vess::test {
namespace {

int ColourDistance(QRgb a, const QColor& b) {
    return std::abs(qRed(a) - b.red()) + std::abs(qGreen(a) - b.green()) + std::abs(qBlue(a) - b.blue());
}

// Whether some pixel of the box around (x, y) is within tolerance of colour.
bool ColourNear(const QImage& image, QPointF at, const QColor& colour, int radius = 5, int tolerance = 60) {
    for (int dy = -radius; dy <= radius; ++dy)
        for (int dx = -radius; dx <= radius; ++dx) {
            const QPoint p(int(at.x()) + dx, int(at.y()) + dy);
            if (image.rect().contains(p) && ColourDistance(image.pixel(p), colour) <= tolerance) return true;
        }
    return false;
}

class ReviewTest : public GuiTest {
protected:
    VisibleCounts Visible() const {
        const TraceView* t = window->Trace();
        const QRect r = t->PlotRect();
        return {t->CountsAtY(r.top() + r.height()), t->CountsAtY(r.top())};
    }
    std::vector<int16_t> ScreenSamples() const {
        std::vector<int16_t> v(std::size_t(window->Trace()->DataLength()));
        ws.recording->ReadSamples(int64_t(ws.screenStartBlock) * kBlockPoints, v);
        return v;
    }
    QImage TraceImage() const { return window->Trace()->grab().toImage(); }
    // Opens a hand-built upward trace: events of 1000 counts with onsets at
    // 150, 450 and 750 on the first screen, found by clicks on their peaks.
    void OpenThreeEvents() {
        std::vector<int16_t> trace(4096, 0);
        for (int64_t onset : {150, 450, 750}) AddEvent(trace, onset, 1000);
        MakeRecording(dir / "three.abf", trace, 50, 1.0f);
        ASSERT_TRUE(OpenFile(dir / "three.abf"));
        ws.params() = TestParams(1);
        window->RefreshAll();
        for (int64_t peak : {176, 476, 776}) ClickTrace(peak);
        ASSERT_EQ(ws.events.Count(), 3);
    }
    QPointF PeakPoint(int32_t k) const {
        const TraceView* t = window->Trace();
        const EventRecord& r = ws.events[k];
        return {t->XOfIndex(double(*t->PeakIndexOf(r)) + 0.5), t->YOfCounts(r.baseline + r.amplitude)};
    }
};

// On the 70 s recording a screen opens with its 0.5th to 99.5th percentile
// in view and the baseline a quarter below the top (downward events; the
// rule on every kind of screen: tests/detection); Home and End step the gain
// from there, 0 resets, H shows all.
TEST_F(ReviewTest, ScreensOpenFittedAndTheDisplayKeysStepFromThere) {
    VESS_REQUIRE_SHARED_DATA();
    ASSERT_TRUE(OpenFile(SharedData() / "abf1/171116sh_0020_saved.abf"));
    ASSERT_LT(ws.params().PeakDirection, 0);
    window->Overview()->SampleChosen(int64_t(97) * ws.BlocksPerScreen() * kBlockPoints);
    ASSERT_EQ(ws.screenStartBlock, 97 * ws.BlocksPerScreen());
    const LevelRange range = RobustRange(ScreenSamples(), 0.005);
    EXPECT_LT(Visible().bottomCounts, range.low);
    EXPECT_GT(Visible().topCounts, range.high);
    const double baselineShare =
        (Visible().topCounts - MedianLevel(ScreenSamples())) / (Visible().topCounts - Visible().bottomCounts);
    EXPECT_NEAR(baselineShare, 0.25, 0.01);

    const VisibleCounts fitted = Visible();
    Key(Qt::Key_Home);
    const VisibleCounts zoomed = Visible();
    EXPECT_NEAR(zoomed.topCounts - zoomed.bottomCounts, (fitted.topCounts - fitted.bottomCounts) / 1.25, 1e-6);
    Key(Qt::Key_PageUp);
    EXPECT_NE(ws.settings.displayOffsetCounts, 0);
    Type('0');
    EXPECT_EQ(ws.settings.displayGain, 1.0);
    EXPECT_EQ(ws.settings.displayOffsetCounts, 0);
    EXPECT_DOUBLE_EQ(Visible().topCounts, fitted.topCounts);

    // H: every sample of the screen, the largest transient included.
    Type('h');
    const auto samples = ScreenSamples();
    const auto [lo, hi] = std::minmax_element(samples.begin(), samples.end());
    EXPECT_LT(Visible().bottomCounts, *lo);
    EXPECT_GT(Visible().topCounts, *hi);
    EXPECT_NE(ws.settings.displayGain, 1.0);

}

// A box confirmed with Enter takes effect and gives the letter keys back to
// the trace.
TEST_F(ReviewTest, ParameterBoxesConfirmedWithEnterGiveTheKeysBack) {
    OpenSample();
    auto* threshold = window->findChild<QLineEdit*>("txtThresholdAmplitude");
    ASSERT_NE(threshold, nullptr);
    threshold->setFocus();
    threshold->selectAll();
    QTest::keyClicks(threshold, "7");
    QTest::keyClick(threshold, Qt::Key_Return);
    EXPECT_EQ(ws.params().ThresholdAmplitude, 7.0f);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_D);
    EXPECT_EQ(threshold->text(), "7");
    Type('d');
    ASSERT_EQ(ws.screenStartBlock, 8);

    // The screen holding block 8 in screens of 6 blocks starts at 6.
    auto* box = window->findChild<QSpinBox*>("spBlocksPerScreen");
    ASSERT_NE(box, nullptr);
    box->setFocus();
    box->selectAll();
    QTest::keyClicks(box, "6");
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_EQ(ws.screenStartBlock, 6);
    EXPECT_EQ(window->Trace()->DataLength(), 6 * 256);
    EXPECT_EQ(window->findChild<QLabel*>("lbScreenLength")->text(), "= 76.8 ms");  // 6 x 256 x 50 us
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_D);
    EXPECT_EQ(ws.screenStartBlock, 12);
}

// The overview is read as a job that leaves every command enabled; a read
// for a recording that was replaced is dropped. Moving never reads again.
TEST_F(ReviewTest, OverviewIsReadOnceForTheRecordingShownAndJumpsWhereClicked) {
    ASSERT_TRUE(OpenFile(WriteSynth("other.abf", 3, 2)));
    EXPECT_FALSE(window->Busy());
    OpenSample();  // replaces it before (or after) its read ends
    window->OverviewReader().Wait();
    EXPECT_FALSE(window->OverviewReader().Running());
    OverviewStrip* strip = window->Overview();
    ASSERT_TRUE(strip->HasExtremes());
    EXPECT_EQ(strip->ExtremesReads(), 1);  // only the recording shown
    AnalyseUntilEvents(3);
    Type('f');
    Type('a');
    EXPECT_EQ(strip->ExtremesReads(), 1);

    // Ticks along the bottom for the events (none on the screen shown).
    const EventRecord& first = ws.events[1];
    const int64_t firstSample = EventSamplePosition(first, ws.recording->IntervalUs());
    if (GeometryOf(ws).ScreenOfSample(firstSample) != ws.screenStartBlock) {
        const QImage image = strip->grab().toImage();
        EXPECT_TRUE(ColourNear(image, QPointF(strip->XOfSample(double(firstSample)), strip->height() - 3),
                               trace_style::kPeakColour, 1, 30));
    }
    const QPoint click(strip->width() * 3 / 4, strip->height() / 2);
    QTest::mouseClick(strip, Qt::LeftButton, {}, click);
    EXPECT_EQ(ws.screenStartBlock, GeometryOf(ws).ScreenOfSample(strip->SampleAtX(click.x())));
    EXPECT_GT(ws.screenStartBlock, 0);
    // The screen shown is highlighted where it lies.
    const QImage image = strip->grab().toImage();
    const double x = strip->XOfSample(double(ws.screenStartBlock) * kBlockPoints) + 1;
    EXPECT_GT(ColourDistance(image.pixel(int(x), 3), trace_style::kBackground), 20);
    EXPECT_LT(ColourDistance(image.pixel(5, 3), trace_style::kBackground), 10);
}

// Rejected events are faded and struck through, grouped ones wear their
// group's colour, and a peak beyond the top gets an arrowhead at the edge.
TEST_F(ReviewTest, MarksShowRejectedAndGroupedEventsAndPeaksOutOfView) {
    OpenThreeEvents();
    Type('z');
    Type('j');  // event 1 rejected
    Type('c');
    dialogs.AnswerInput("3");
    Type('g');  // event 2 in group 3
    ASSERT_EQ(ws.events[1].group, kGroupRejected);
    ASSERT_EQ(ws.events[2].group, 3);
    Type('c');  // event 3 selected, plain
    QImage image = TraceImage();
    EXPECT_TRUE(ColourNear(image, PeakPoint(3), trace_style::kPeakColour));
    EXPECT_FALSE(ColourNear(image, PeakPoint(1), trace_style::kPeakColour));
    EXPECT_TRUE(ColourNear(image, PeakPoint(2), trace_style::GroupColour(3)));
    EXPECT_FALSE(ColourNear(image, PeakPoint(2), trace_style::kPeakColour));

    // Enlarged until the peaks leave the plot: markers at the top edge.
    for (int i = 0; i < 12; ++i) Key(Qt::Key_Home);
    ASSERT_LT(PeakPoint(3).y(), window->Trace()->PlotRect().top());
    image = TraceImage();
    const double top = window->Trace()->PlotRect().top() + 4;
    EXPECT_TRUE(ColourNear(image, QPointF(PeakPoint(3).x(), top), trace_style::kPeakColour, 2, 40));
    EXPECT_TRUE(ColourNear(image, QPointF(PeakPoint(2).x(), top), trace_style::GroupColour(3), 2, 40));
}

// The grid keeps a column width the user set until another file is opened.
TEST_F(ReviewTest, GridShowsFixedDecimalsInWideColumnsSortsOnAHeaderClickAndKeepsWidths) {
    OpenSample();
    QTableView* grid = window->Grid();
    QHeaderView* header = grid->horizontalHeader();
    const int fitted = header->sectionSize(3);
    header->resizeSection(3, fitted + 57);
    AnalyseUntilEvents(6);
    const QFontMetrics fm(grid->font());
    for (int row = 0; row < GridRows(); ++row)
        for (int c = 0; c < grid->model()->columnCount(); ++c) {
            const QString text = grid->model()->index(row, c).data().toString();
            if (text.isEmpty()) continue;  // a measurement that could not be made
            const int decimals = EventColumnDecimals(ws.recording.get(), c);
            const qsizetype dot = text.indexOf('.');
            EXPECT_EQ(dot < 0 ? 0 : int(text.size() - dot - 1), decimals) << c << " " << text.toStdString();
            EXPECT_GE(grid->columnWidth(c), fm.horizontalAdvance(text) + 8) << c << " " << text.toStdString();
        }

    const EventTable before = ws.events;
    const int amplitudeColumn = 2;
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      QPoint(header->sectionViewportPosition(amplitudeColumn) + 5, header->height() / 2));
    for (int32_t k = 2; k <= ws.events.Count(); ++k)
        EXPECT_LE(ws.events[k - 1].amplitude, ws.events[k].amplitude);
    EXPECT_NE(ws.events, before);
    Key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(ws.events, before);
    // The event number is not a field: its column does not sort.
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(5, header->height() / 2));
    EXPECT_EQ(ws.events, before);

    Type('k');  // a deletion resets the rows of the grid
    EXPECT_EQ(header->sectionSize(3), fitted + 57);
    dialogs.AnswerYesNo(false);  // do not save the events first
    ClickFile("syn.abf");
    EXPECT_TRUE(dialogs.AllAnswersUsed());
    EXPECT_EQ(header->sectionSize(3), fitted);
}

// The last screen of a recording that ends inside it shows no trace past the
// last sample (the recording would repeat that sample as a flat line).
TEST_F(ReviewTest, NoTraceIsDrawnPastTheEndOfTheData) {
    std::vector<int16_t> samples(4 * 256 + 300);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = int16_t(200 * std::sin(double(i) / 9));
    samples.back() = 150;
    MakeRecording(dir / "short.abf", samples, 50, 1.0f);
    ASSERT_TRUE(OpenFile(dir / "short.abf"));
    Type('f');
    ASSERT_EQ(ws.screenStartBlock, 4);
    TraceView* t = window->Trace();
    ASSERT_EQ(t->DataLength(), 300);
    const QImage image = TraceImage();
    const QRect plot = t->PlotRect();
    const int end = int(std::ceil(t->XOfIndex(300))) + 2;
    int traceLeft = 0, tracePast = 0;
    for (int x = plot.left() + 2; x < plot.right() - 2; ++x)
        for (int y = plot.top() + 2; y < plot.bottom() - 2; ++y) {
            const bool trace = ColourDistance(image.pixel(x, y), trace_style::kTraceColour) < 60;
            if (trace && x < end - 4) ++traceLeft;
            if (trace && x > end) ++tracePast;
        }
    EXPECT_GT(traceLeft, 50);
    EXPECT_EQ(tracePast, 0);
}

// Wheel and Shift+drag zoom (a view that never changes the screen), and
// the channel list.
using ZoomTest = GuiTest;

void Wheel(TraceView* t, QPointF at, int delta, Qt::KeyboardModifiers mods = Qt::NoModifier) {
    QWheelEvent e(at, t->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton, mods,
                  Qt::NoScrollPhase, false);
    QApplication::sendEvent(t, &e);
}

TEST_F(ZoomTest, WheelAndShiftDragZoomTheViewOnlyAndResetReturnsToTheScreen) {
    OpenSample();
    Key(Qt::Key_D);  // a screen other than the first
    TraceView* t = window->Trace();
    const int32_t start = ws.screenStartBlock, blocks = ws.BlocksPerScreen();
    const TraceZoom screen = t->View();
    const QRect plot = t->PlotRect();
    const QPointF at(plot.left() + plot.width() * 0.25, plot.center().y());
    const double indexAt = t->IndexAtXUnclamped(at.x()), countsAt = t->CountsAtY(at.y());

    Wheel(t, at, 120);  // one notch: 0.8 of the time, the point under the pointer stays
    TraceZoom v = t->View();
    EXPECT_NEAR(v.lastIndex - v.firstIndex, 0.8 * (screen.lastIndex - screen.firstIndex), 1e-9);
    EXPECT_NEAR(t->IndexAtXUnclamped(at.x()), indexAt, 1e-6);
    EXPECT_EQ(v.topCounts, screen.topCounts);
    Wheel(t, at, 240, Qt::ControlModifier);  // two notches of amplitude
    v = t->View();
    EXPECT_NEAR(v.topCounts - v.bottomCounts, 0.64 * (screen.topCounts - screen.bottomCounts), 1e-6);
    EXPECT_NEAR(t->CountsAtY(at.y()), countsAt, 1e-6);
    Wheel(t, at, -120 * 40);  // zooming out stops at the screen
    EXPECT_EQ(t->View().firstIndex, 0);
    EXPECT_EQ(t->View().lastIndex, screen.lastIndex);

    // Shift+drag: the rectangle becomes the view.
    const QPoint from(plot.left() + plot.width() / 2, plot.top() + 20);
    const QPoint to(plot.left() + plot.width() * 3 / 4, plot.bottom() - 20);
    const double i0 = t->IndexAtXUnclamped(from.x()), i1 = t->IndexAtXUnclamped(to.x());
    const int32_t eventsBefore = ws.events.Count();
    QTest::mousePress(t, Qt::LeftButton, Qt::ShiftModifier, from);
    QTest::mouseMove(t, to);
    QTest::mouseRelease(t, Qt::LeftButton, Qt::ShiftModifier, to);
    v = t->View();
    EXPECT_NEAR(v.firstIndex, i0, 1e-6);
    EXPECT_NEAR(v.lastIndex, i1, 1e-6);  // the rectangle's arithmetic: tests/detection
    EXPECT_EQ(ws.events.Count(), eventsBefore);  // a drag is not a Shift+click
    EXPECT_EQ(ws.screenStartBlock, start);
    EXPECT_EQ(ws.BlocksPerScreen(), blocks);
    Snapshot("trace_zoomed");

    Key(Qt::Key_0);  // the toolbar's Reset
    EXPECT_FALSE(t->Zoomed());
    EXPECT_EQ(t->View(), screen);
    Wheel(t, at, 120);
    Key(Qt::Key_D);  // another screen opens whole
    EXPECT_FALSE(t->Zoomed());
}

// The Qt channel question is a list of the channels, the first selected.
TEST_F(ZoomTest, ChannelQuestionIsAListWithNamesAndUnits) {
    QtDialogs qt(window.get());
    const std::vector<ChannelLabel> labels{{"Im", "pA"}, {"Vm", "mV"}};
    QStringList shown;
    int selected = -1;
    QTimer::singleShot(0, [&] {
        auto* d = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(d, nullptr);
        auto* list = d->findChild<QListWidget*>("lstChoice");
        ASSERT_NE(list, nullptr);
        for (int i = 0; i < list->count(); ++i) shown << list->item(i)->text();
        selected = list->currentRow();
        Snapshot("channel_list", d);
        list->setCurrentRow(1);
        d->accept();
    });
    EXPECT_EQ(AskChannel(labels, qt), std::optional<uint8_t>(1));
    EXPECT_EQ(shown, (QStringList{"0: Im (pA)", "1: Vm (mV)"}));
    EXPECT_EQ(selected, 0);
}

// Points at peak up to 255 are accepted from files; the list offers 1 to 21,
// and a larger value is added to it rather than shown as 21.
TEST(ParameterPanelTest, PointsAtPeakBeyondTheListIsShownAsItIs) {
    ParameterPanel panel;
    Settings settings;
    auto* points = panel.PointsAtPeakBox();
    for (int shown : {5, 40, 40}) {  // shown again: no second "40"
        settings.analysis.NumberPointsPeak = shown;
        panel.Show(settings, "pA", 50);
        EXPECT_EQ(points->currentText(), QString::number(shown));
    }
    EXPECT_EQ(points->findText("40"), points->count() - 1);
    EXPECT_EQ(points->count(), 22);
}

}  // namespace
}  // namespace vess::test
