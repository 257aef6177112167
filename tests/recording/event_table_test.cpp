#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
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
    for (float w : {3.0f, nan, 1.0f, nan, 2.0f, nan, 0.5f}) {
        EventRecord r;
        r.halfWidth = w;
        t.Append(r);
    }
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

EventTable TableOf(std::initializer_list<int32_t> amplitudes) {
    EventTable t;
    for (int32_t a : amplitudes) {
        EventRecord r;
        r.amplitude = a;
        t.Append(r);
    }
    return t;
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

}  // namespace
}  // namespace vess
