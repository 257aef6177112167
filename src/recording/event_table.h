// The events of the open recording: a 1-based table (index 0 does not exist)
// with its count, plus the undo history and the unsaved-changes flag.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "recording/event_record.h"

namespace vess {

class EventTable {
public:
    int32_t Count() const { return static_cast<int32_t>(records_.size()); }
    bool Empty() const { return records_.empty(); }
    // Row is one of the table's (1..Count()).
    bool HasRow(int32_t row) const { return row >= 1 && row <= Count(); }

    // 1-based access; i must lie in 1..Count().
    EventRecord& operator[](int32_t i) { return records_[static_cast<std::size_t>(i - 1)]; }
    const EventRecord& operator[](int32_t i) const { return records_[static_cast<std::size_t>(i - 1)]; }
    const EventRecord& Last() const { return records_.back(); }

    void Append(const EventRecord& r) { records_.push_back(r); }
    // Removes record i (1-based), shifting the later ones down by one.
    void Delete(int32_t i);
    // Keeps records 1..count.
    void Truncate(int32_t count);
    void Clear() { records_.clear(); }

    // Ascending quicksort of records 1..Count() by one field (not stable).
    void Sort(EventField field);

    const std::vector<EventRecord>& Records() const { return records_; }
    void Assign(std::vector<EventRecord> records) { records_ = std::move(records); }

    bool operator==(const EventTable&) const = default;

private:
    std::vector<EventRecord> records_;
};

// Undo/redo of whole-table changes. A command that is about to change the
// table calls Checkpoint first; Undo and Redo swap whole tables. Snapshots are
// cheap (76 bytes an event) and the depth is bounded.
class EventHistory {
public:
    explicit EventHistory(std::size_t maxDepth = 64) : maxDepth_(maxDepth) {}

    // Records the table as it is now, before a change described by label.
    void Checkpoint(const EventTable& table, std::string label);
    bool CanUndo() const { return !undo_.empty(); }
    bool CanRedo() const { return !redo_.empty(); }
    std::string UndoLabel() const;
    std::string RedoLabel() const;
    // Replace table with the state before the last change / after the last undo.
    bool Undo(EventTable& table);
    bool Redo(EventTable& table);
    void Clear();

    // Unsaved-changes tracking: MarkSaved after a save or load; any checkpoint,
    // undo or redo that moves away from the saved state makes Modified() true.
    void MarkSaved();
    bool Modified() const { return generation_ != savedGeneration_; }

private:
    struct Entry {
        std::vector<EventRecord> records;
        std::string label;
        uint64_t generation;
    };
    std::size_t maxDepth_;
    std::vector<Entry> undo_;
    std::vector<Entry> redo_;
    uint64_t generation_ = 0;
    uint64_t nextGeneration_ = 1;
    uint64_t savedGeneration_ = 0;
};

}  // namespace vess
