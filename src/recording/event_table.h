// The events of the open recording: a 1-based table (index 0 does not exist)
// with its count, plus the undo history and the unsaved-changes flag.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "recording/event_record.h"

namespace vess {

class EventTable {
public:
    int32_t Count() const { return static_cast<int32_t>(records_.size()); }
    bool Empty() const { return records_.empty(); }
    // Row is one of the table's (1..Count()).
    bool HasRow(int32_t row) const { return row >= 1 && row <= Count(); }

    // 1-based access; i must lie in 1..Count(). Writable access may move a
    // peak, so the peak order is checked again from the start when next asked.
    EventRecord& operator[](int32_t i) {
        peaksInOrder_ = 0;
        return records_[static_cast<std::size_t>(i - 1)];
    }
    const EventRecord& operator[](int32_t i) const { return records_[static_cast<std::size_t>(i - 1)]; }
    const EventRecord& Last() const { return records_.back(); }

    void Append(const EventRecord& r) { records_.push_back(r); }
    // Removes record i (1-based), shifting the later ones down by one.
    void Delete(int32_t i);
    // Keeps records 1..count.
    void Truncate(int32_t count);
    void Clear() {
        records_.clear();
        peaksInOrder_ = 0;
    }

    // Ascending quicksort of records 1..Count() by one field (not stable).
    void Sort(EventField field);

    const std::vector<EventRecord>& Records() const { return records_; }
    void Assign(std::vector<EventRecord> records) {
        records_ = std::move(records);
        peaksInOrder_ = 0;
    }

    // Rows [first, end) (1-based) that hold every event whose peak sample
    // lies in [fromSample, toSample): found by binary search when the peaks
    // are in sample order (as detection appends them), otherwise every row.
    // Rows in the range may still have their peak outside it. Remembers how
    // far the order is known, so one table is not asked from two threads.
    std::pair<int32_t, int32_t> RowsAround(int64_t fromSample, int64_t toSample) const;

    bool operator==(const EventTable& other) const { return records_ == other.records_; }

private:
    // Whether every record has its peak's sample index and they never
    // decrease; the prefix already checked is remembered, so that a table
    // that only grows at its end is checked once a record.
    bool PeaksInOrder() const;

    std::vector<EventRecord> records_;
    mutable std::size_t peaksInOrder_ = 0;  // leading records known to be in peak order
};

// Undo/redo of whole-table changes. A command that is about to change the
// table calls Checkpoint first; Undo and Redo swap whole tables. Snapshots are
// cheap (76 bytes an event) and the depth is bounded.
class EventHistory {
public:
    explicit EventHistory(std::size_t maxDepth = 64) : maxDepth_(maxDepth) {}

    // Records the table as it is now, before a change described by label.
    void Checkpoint(const EventTable& table, std::string label);
    // Records, after a change that only appended records, that the table
    // before it was its first countBefore records: the entry keeps no copy.
    void CheckpointAppended(int32_t countBefore, std::string label);
    bool CanUndo() const { return !undo_.empty(); }
    bool CanRedo() const { return !redo_.empty(); }
    std::string UndoLabel() const;
    std::string RedoLabel() const;
    // A stamp unique in the process, new whenever the undo or redo list
    // changes: what Undo and Redo would do (and their labels) stays the same
    // while it does, whichever history it comes from.
    uint64_t ListsStamp() const { return listsStamp_; }
    // Replace table with the state before the last change / after the last undo.
    bool Undo(EventTable& table);
    bool Redo(EventTable& table);
    void Clear();

    // Unsaved-changes tracking: MarkSaved after a save or load; any checkpoint,
    // undo or redo that moves away from the saved state makes Modified() true.
    void MarkSaved();
    bool Modified() const { return generation_ != savedGeneration_; }

private:
    // A whole table, or (keep >= 0) the table's first keep records followed
    // by records (none in the undo list, the undone ones in the redo list).
    struct Entry {
        std::vector<EventRecord> records;
        std::string label;
        uint64_t generation;
        int32_t keep = -1;
    };
    void Push(std::vector<Entry>& list, Entry entry);
    // Makes table the state entry holds and returns the entry for the
    // opposite list, which brings back the table as it was.
    static Entry Apply(Entry entry, EventTable& table, uint64_t generation);
    std::size_t maxDepth_;
    std::vector<Entry> undo_;
    std::vector<Entry> redo_;
    uint64_t generation_ = 0;
    uint64_t nextGeneration_ = 1;
    uint64_t savedGeneration_ = 0;
    void ListsChanged();
    uint64_t listsStamp_ = 0;
};

}  // namespace vess
