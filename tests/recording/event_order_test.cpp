#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "recording/event_table.h"

namespace vess {
namespace {

EventTable PeaksAt(const std::vector<int32_t>& samples) {
    EventTable t;
    for (const int32_t s : samples) {
        EventRecord r;
        r.sampleIndex = s;
        r.time = float(s) / 20;
        t.Append(r);
    }
    return t;
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
        for (const EventRecord& r : PeaksAt(peaks).Records()) a.Append(r), b.Append(r);
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
