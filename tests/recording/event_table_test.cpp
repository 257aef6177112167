#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "recording/event_record.h"
#include "recording/event_table.h"
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

TEST(EventRecord, FieldsSitAtTheirOffsetsLittleEndian) {
    EventRecord r;
    r.time = 1.5f;                  // 0x3FC00000
    r.amplitude = -2;               // FE FF FF FF
    r.group = 255;
    r.channel = 3;
    r.baseOffset = 0x1234;
    r.reserved[0] = 0xAB;
    r.reserved[23] = 0xCD;
    r.relativeTime = 0x01020304;
    r.sampleIndex = -1;
    const auto b = Bytes(r);
    EXPECT_EQ((std::array<uint8_t, 4>{b[0], b[1], b[2], b[3]}),
              (std::array<uint8_t, 4>{0x00, 0x00, 0xC0, 0x3F}));
    EXPECT_EQ(b[4], 0xFE);
    EXPECT_EQ(b[7], 0xFF);
    EXPECT_EQ(b[20], 255);
    EXPECT_EQ(b[21], 3);
    EXPECT_EQ(b[22], 0x34);
    EXPECT_EQ(b[23], 0x12);
    EXPECT_EQ(b[44], 0xAB);
    EXPECT_EQ(b[67], 0xCD);
    EXPECT_EQ(b[68], 0x04);
    EXPECT_EQ(b[71], 0x01);
    EXPECT_EQ(b[75], 0xFF);
}

TEST(EventRecord, RoundTripKeepsEveryByte) {
    std::mt19937 rng(11);
    for (int k = 0; k < 200; ++k) {
        std::vector<uint8_t> raw(kEventRecordBytes);
        for (auto& b : raw) b = uint8_t(rng());
        // Any byte image (NaN floats included) survives a read and a write.
        EXPECT_EQ(Bytes(ReadEventRecord(raw)), raw);
    }
}

// The sort must give the same key order as std::sort on every field, keep the
// records whole (the same multiset of byte images), and cope with heavy ties.
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

TEST(EventTableSort, ByteFieldsCompareUnsigned) {
    EventTable t;
    for (uint8_t g : {200, 1, 255, 0, 128}) {
        EventRecord r;
        r.group = g;
        r.channel = uint8_t(255 - g);
        t.Append(r);
    }
    t.Sort(EventField::Group);
    EXPECT_EQ(t[1].group, 0);
    EXPECT_EQ(t[5].group, 255);
    t.Sort(EventField::Channel);
    EXPECT_EQ(t[1].channel, 0);
    EXPECT_EQ(t[5].channel, 255);
}

// A half-width that could not be measured is stored as not a number. Such
// records sort after every measured one (in any order among themselves), the
// others in order; and a record equals its copy, as its bytes do.
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

TEST(EventTableSort, OneRecordAndAllEqualKeysKeepContent) {
    std::mt19937 rng(3);
    EventTable one;
    one.Append(RandomRecord(rng, 100));
    const EventTable before = one;
    one.Sort(EventField::Area);
    EXPECT_EQ(one, before);

    std::vector<EventRecord> same;
    for (int k = 0; k < 100; ++k) {
        auto r = RandomRecord(rng, 100);
        r.time = 42;
        same.push_back(r);
    }
    EventTable t;
    t.Assign(same);
    t.Sort(EventField::Time);
    EXPECT_EQ(SortedImages(t.Records()), SortedImages(same));
}

TEST(EventTableSort, SortedAndReversedLargeTablesDoNotRecurseDeeply) {
    std::vector<EventRecord> v(200000);
    for (std::size_t k = 0; k < v.size(); ++k) v[k].relativeTime = int32_t(v.size() - k);
    EventTable t;
    t.Assign(v);
    t.Sort(EventField::RelativeTime);
    for (int i = 1; i <= t.Count(); ++i) ASSERT_EQ(t[i].relativeTime, i);
}

TEST(EventTable, DeleteAndTruncate) {
    EventTable t;
    for (int k = 1; k <= 5; ++k) {
        EventRecord r;
        r.amplitude = k;
        t.Append(r);
    }
    t.Delete(2);
    ASSERT_EQ(t.Count(), 4);
    EXPECT_EQ(t[1].amplitude, 1);
    EXPECT_EQ(t[2].amplitude, 3);
    t.Delete(0);   // out of range: no change
    t.Delete(5);
    EXPECT_EQ(t.Count(), 4);
    t.Truncate(9);  // longer than the table: no change
    EXPECT_EQ(t.Count(), 4);
    t.Truncate(2);
    ASSERT_EQ(t.Count(), 2);
    EXPECT_EQ(t[2].amplitude, 3);
    t.Truncate(-1);
    EXPECT_TRUE(t.Empty());
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
}

TEST(EventHistory, ModifiedFollowsTheSavedState) {
    EventHistory h;
    EventTable t = TableOf({1});
    h.Checkpoint(t, "a");
    t.Append(t[1]);
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
