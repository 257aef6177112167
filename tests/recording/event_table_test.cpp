#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "recording/event_record.h"
#include "recording/event_table.h"
#include "recording/le_bytes.h"
#include "recording/random_events.h"

namespace vess {
namespace {

std::vector<uint8_t> Bytes(const EventRecord& r) {
    std::vector<uint8_t> b(kEventRecordBytes);
    WriteEventRecord(r, b);
    return b;
}

// Records with these amplitudes, or peaks at these samples (times at 50 us).
EventTable TableOf(std::initializer_list<int32_t> amplitudes) {
    EventTable t;
    for (int32_t a : amplitudes) t.Append(EventRecord{.amplitude = a});
    return t;
}
EventTable PeaksAt(const std::vector<int32_t>& samples) {
    EventTable t;
    for (const int32_t s : samples) t.Append(EventRecord{.time = float(s) / 20, .sampleIndex = s});
    return t;
}

// Orders records by their full byte image, to compare contents as multisets.
std::vector<std::vector<uint8_t>> SortedImages(const std::vector<EventRecord>& v) {
    std::vector<std::vector<uint8_t>> out;
    for (const auto& r : v) out.push_back(Bytes(r));
    std::sort(out.begin(), out.end());
    return out;
}

// Every field at its offset of the file format (written out here, not taken
// from the code's table), little-endian.
TEST(EventRecord, FieldsSitAtTheirOffsetsLittleEndian) {
    std::mt19937 rng(3);
    EventRecord r = RandomRecord(rng, 30000);
    r.time = 1.5f;  // 0x3FC00000
    const auto b = Bytes(r);
    EXPECT_EQ(std::vector<uint8_t>(b.begin(), b.begin() + 4), (std::vector<uint8_t>{0, 0, 0xC0, 0x3F}));
    EXPECT_EQ(le::Get<int32_t>(b, 4), r.amplitude);
    EXPECT_EQ(le::Get<int16_t>(b, 8), r.noise);
    EXPECT_EQ(le::Get<int16_t>(b, 10), r.riseTime);
    EXPECT_EQ(le::Get<int16_t>(b, 12), r.decayTime);
    EXPECT_EQ(le::Get<int16_t>(b, 14), r.baseline);
    EXPECT_EQ(le::Get<float>(b, 16), r.area);
    EXPECT_EQ(b[20], r.group);
    EXPECT_EQ(b[21], r.channel);
    EXPECT_EQ(le::Get<int16_t>(b, 22), r.baseOffset);
    EXPECT_EQ(le::Get<float>(b, 24), r.rise1090);
    EXPECT_EQ(le::Get<float>(b, 28), r.halfWidth);
    EXPECT_EQ(le::Get<int16_t>(b, 32), r.rise50);
    EXPECT_EQ(le::Get<int16_t>(b, 34), r.peakDirection);
    EXPECT_EQ(le::Get<int16_t>(b, 36), r.burstNumber);
    EXPECT_EQ(le::Get<int16_t>(b, 38), r.burstEventNumber);
    EXPECT_EQ(le::Get<float>(b, 40), r.slope1090);
    EXPECT_TRUE(std::equal(r.reserved.begin(), r.reserved.end(), b.begin() + 44));
    EXPECT_EQ(le::Get<int32_t>(b, 68), r.relativeTime);
    EXPECT_EQ(le::Get<int32_t>(b, 72), r.sampleIndex);
}

// The same key order as std::sort on every field, records kept whole, heavy ties included.
TEST(EventTableSort, MatchesStdSortOnEveryField) {
    std::mt19937 rng(5);
    for (int f = 0; f < kEventFieldCount; ++f) {
        const auto field = EventField(f);
        for (int size : {0, 1, 2, 3, 7, 64, 500}) {
            for (int spread : {1, 1000}) {
                std::vector<EventRecord> v;
                for (int k = 0; k < size; ++k) v.push_back(RandomRecord(rng, spread));
                EventTable t;
                t.Assign(v);
                t.Sort(field);
                WithEventField(field, [&](auto m) {
                    auto expected = v;
                    std::sort(expected.begin(), expected.end(),
                              [m](const EventRecord& a, const EventRecord& b) { return a.*m < b.*m; });
                    ASSERT_EQ(t.Count(), size);
                    for (int i = 1; i <= size; ++i)
                        EXPECT_EQ(t[i].*m, expected[std::size_t(i - 1)].*m)
                            << "field " << f << " size " << size << " row " << i;
                });
                EXPECT_EQ(SortedImages(t.Records()), SortedImages(v));
            }
        }
    }
}

// Half-widths not measured (NaN) sort after every measured one; a record equals its copy.
TEST(EventTableSort, UnmeasuredValuesSortLastAndRecordsStayEqual) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EventTable t;
    for (float w : {3.0f, nan, 1.0f, nan, 2.0f, nan, 0.5f}) t.Append(EventRecord{.halfWidth = w});
    const EventTable copy = t;
    EXPECT_EQ(copy, t);
    t.Sort(EventField::HalfWidth);
    const std::vector<float> measured{0.5f, 1.0f, 2.0f, 3.0f};
    for (int i = 1; i <= 4; ++i) EXPECT_EQ(t[i].halfWidth, measured[std::size_t(i - 1)]);
    for (int i = 5; i <= 7; ++i) EXPECT_TRUE(std::isnan(t[i].halfWidth));
    EventRecord other = t[1];
    other.halfWidth = 0.25f;
    EXPECT_FALSE(other == t[1]);
}

TEST(EventTableSort, SortedAndReversedLargeTablesDoNotRecurseDeeply) {
    std::vector<EventRecord> v(200000);
    for (std::size_t k = 0; k < v.size(); ++k) v[k].relativeTime = int32_t(v.size() - k);
    EventTable t;
    t.Assign(v);
    t.Sort(EventField::RelativeTime);
    for (int i = 1; i <= t.Count(); ++i) ASSERT_EQ(t[i].relativeTime, i);
}

// Rows count from 1; rows outside the table and lengths past it change nothing.
TEST(EventTable, DeleteAndTruncate) {
    EventTable t = TableOf({1, 2, 3, 4, 5});
    t.Delete(2);
    t.Delete(0);
    t.Delete(5);
    EXPECT_EQ(t, TableOf({1, 3, 4, 5}));
    t.Truncate(9);
    EXPECT_EQ(t.Count(), 4);
    t.Truncate(2);
    EXPECT_EQ(t, TableOf({1, 3}));
    t.Truncate(-1);
    EXPECT_TRUE(t.Empty());
}

TEST(EventHistory, UndoRedoRestoreTablesAndLabels) {
    EventHistory h;
    EventTable t = TableOf({1, 2});
    EXPECT_FALSE(h.Modified());
    h.Checkpoint(t, "Delete event");
    t.Delete(1);
    h.Checkpoint(t, "Add event");
    t.Append(t[1]);
    EXPECT_TRUE(h.Modified());
    EXPECT_EQ(h.UndoLabel(), "Add event");
    ASSERT_TRUE(h.Undo(t));
    EXPECT_EQ(t, TableOf({2}));
    EXPECT_EQ(h.UndoLabel(), "Delete event");
    EXPECT_EQ(h.RedoLabel(), "Add event");
    ASSERT_TRUE(h.Undo(t));
    EXPECT_EQ(t, TableOf({1, 2}));
    EXPECT_FALSE(h.CanUndo());
    EXPECT_FALSE(h.Undo(t));
    EXPECT_FALSE(h.Modified());  // back at the initial, unmodified state
    ASSERT_TRUE(h.Redo(t));
    EXPECT_EQ(t, TableOf({2}));
    EXPECT_TRUE(h.Modified());
    // A new change drops what could be redone.
    h.Checkpoint(t, "Group");
    t[1].group = 3;
    EXPECT_FALSE(h.CanRedo());
    EXPECT_FALSE(h.Redo(t));
    // Modified follows the state last saved.
    h.MarkSaved();
    EXPECT_FALSE(h.Modified());
    h.Undo(t);
    EXPECT_TRUE(h.Modified());   // away from what was saved
    h.Redo(t);
    EXPECT_FALSE(h.Modified());  // back to it
}

TEST(EventHistory, DepthIsBounded) {
    EventHistory h(3);
    EventTable t;
    for (int k = 0; k < 10; ++k) {
        h.Checkpoint(t, "step " + std::to_string(k));
        t.Append(EventRecord{});
    }
    int undos = 0;
    while (h.Undo(t)) ++undos;
    EXPECT_EQ(undos, 3);
    EXPECT_EQ(t.Count(), 7);
}

using Rows = std::pair<int32_t, int32_t>;

// A screen [from, to) finds the rows of the events whose peaks lie on it, the
// first sample in and the one past the end out, also among equal peaks.
TEST(EventOrder, ScreenRowsAreFoundByPeakAtTheScreensEdges) {
    const EventTable t = PeaksAt({10, 20, 20, 30, 45});
    const struct {
        int64_t from, to;
        Rows rows;
    } cases[] = {
        {0, 10, {1, 1}},  {0, 11, {1, 2}},   {10, 20, {1, 2}}, {20, 30, {2, 4}},
        {21, 30, {4, 4}}, {30, 46, {4, 6}},  {46, 99, {6, 6}}, {-5, 1000, {1, 6}},
    };
    for (const auto& c : cases) EXPECT_EQ(t.RowsAround(c.from, c.to), c.rows) << c.from << ".." << c.to;
}

// Whatever may break the order makes every row a candidate until the order
// holds again: a peak moved through writable access, a record appended out
// of order, a record known only by its time, a sort by another field.
TEST(EventOrder, EveryRowWhenThePeaksMayBeOutOfOrder) {
    const Rows all{1, 5};
    EventTable moved = PeaksAt({10, 20, 30, 40});
    EXPECT_EQ(moved.RowsAround(30, 31), Rows(3, 4));
    moved[2].sampleIndex = 35;
    EXPECT_EQ(moved.RowsAround(30, 31), all);

    EventTable appended = PeaksAt({10, 20, 30});
    EXPECT_EQ(appended.RowsAround(30, 31), Rows(3, 4));
    appended.Append(PeaksAt({25})[1]);
    EXPECT_EQ(appended.RowsAround(30, 31), all);
    appended.Truncate(3);
    EXPECT_EQ(appended.RowsAround(30, 31), Rows(3, 4));

    EventTable timeOnly = PeaksAt({10, 20, 30, 40});
    EventRecord saved = std::as_const(timeOnly)[4];
    saved.sampleIndex = 0;
    timeOnly.Delete(4);
    timeOnly.Append(saved);
    EXPECT_EQ(timeOnly.RowsAround(30, 31), all);

    EventTable sorted = PeaksAt({10, 20, 30, 40});
    for (int32_t k = 1; k <= 4; ++k) sorted[k].amplitude = -k;
    EXPECT_EQ(sorted.RowsAround(30, 31), Rows(3, 4));
    sorted.Sort(EventField::Amplitude);
    EXPECT_EQ(sorted.RowsAround(30, 31), all);
}

// An undo step that only notes the count before an append gives the same
// tables, labels and saved state through any undo and redo as one holding a
// copy of the table before.
TEST(EventOrder, AppendedStepsUndoAndRedoLikeWholeCopies) {
    EventHistory compact, copies;
    EventTable a = PeaksAt({1, 2}), b = a;
    const auto append = [&](std::vector<int32_t> peaks, const std::string& label) {
        const EventTable before = b;
        const int32_t count = a.Count();
        const EventTable added = PeaksAt(peaks);
        for (const EventRecord& r : added.Records()) a.Append(r), b.Append(r);
        compact.CheckpointAppended(count, label);
        copies.Checkpoint(before, label);
    };
    const auto expectSame = [&](int step) {
        EXPECT_EQ(a, b) << step;
        EXPECT_EQ(compact.UndoLabel(), copies.UndoLabel()) << step;
        EXPECT_EQ(compact.RedoLabel(), copies.RedoLabel()) << step;
        EXPECT_EQ(compact.Modified(), copies.Modified()) << step;
    };
    compact.MarkSaved();
    copies.MarkSaved();
    append({3, 4}, "Analyze window");
    append({5}, "Next window");
    compact.Checkpoint(a, "Delete event");
    copies.Checkpoint(b, "Delete event");
    a.Delete(1), b.Delete(1);
    append({6, 7, 8}, "Next window");
    int step = 0;
    expectSame(step);
    for (const bool undo : {true, true, true, false, true, true, true, false, false, false, false, true}) {
        EXPECT_EQ(undo ? compact.Undo(a) : compact.Redo(a), undo ? copies.Undo(b) : copies.Redo(b));
        expectSame(++step);
    }
}

}  // namespace
}  // namespace vess
