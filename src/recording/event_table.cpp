#include "recording/event_table.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <type_traits>
#include <utility>

namespace vess {

void EventTable::Delete(int32_t i) {
    if (!HasRow(i)) return;
    records_.erase(records_.begin() + (i - 1));
    peaksInOrder_ = std::min(peaksInOrder_, std::size_t(i - 1));
}

void EventTable::Truncate(int32_t count) {
    if (count < 0) count = 0;
    if (count < Count()) records_.resize(static_cast<std::size_t>(count));
    peaksInOrder_ = std::min(peaksInOrder_, records_.size());
}

bool EventTable::PeaksInOrder() const {
    std::size_t k = peaksInOrder_;
    for (; k < records_.size(); ++k) {
        const EventRecord& r = records_[k];
        // A record saved without its sample index has its peak only as a time.
        if (r.sampleIndex == 0 && r.time != 0) break;
        if (k > 0 && r.sampleIndex < records_[k - 1].sampleIndex) break;
    }
    peaksInOrder_ = k;
    return k == records_.size();
}

std::pair<int32_t, int32_t> EventTable::RowsAround(int64_t fromSample, int64_t toSample) const {
    if (!PeaksInOrder()) return {1, Count() + 1};
    const auto below = [](const EventRecord& r, int64_t sample) { return r.sampleIndex < sample; };
    const auto first = std::lower_bound(records_.begin(), records_.end(), fromSample, below);
    const auto end = std::lower_bound(first, records_.end(), toSample, below);
    return {int32_t(first - records_.begin()) + 1, int32_t(end - records_.begin()) + 1};
}

namespace {

// Quicksort of whole records on the key held by one member. The middle record
// is the pivot: it is copied out and the first record of the range moves into
// its slot, leaving the first slot free. Scanning the rest, the left index
// advances over keys below the pivot's and the right index retreats over keys
// above it; the two records they stop at are exchanged. Where the indices
// meet, that record moves to the free first slot and the pivot is written in
// its place, splitting the range. Both sides are then sorted the same way
// (the smaller side by recursion, the larger by looping, so the depth stays
// logarithmic). Records with equal keys end up in no particular order.
// Key order of the sort. A float that is not a number (a measurement that
// could not be made) sorts after every number, so that comparisons stay a
// strict order and such records gather at the end.
template <class T>
bool KeyLess(T a, T b) {
    if constexpr (std::is_floating_point_v<T>) {
        if (std::isnan(a)) return false;
        if (std::isnan(b)) return true;
    }
    return a < b;
}

template <class T>
void QuickSort(std::vector<EventRecord>& a, std::ptrdiff_t lo, std::ptrdiff_t hi,
               T EventRecord::*key) {
    while (lo < hi) {
        const std::ptrdiff_t mid = lo + (hi - lo) / 2;
        const EventRecord pivot = a[std::size_t(mid)];
        const T pk = pivot.*key;
        a[std::size_t(mid)] = a[std::size_t(lo)];
        std::ptrdiff_t i = lo + 1, j = hi;
        for (;;) {
            while (i <= j && KeyLess(a[std::size_t(i)].*key, pk)) ++i;
            while (i <= j && KeyLess(pk, a[std::size_t(j)].*key)) --j;
            if (i >= j) break;
            std::swap(a[std::size_t(i)], a[std::size_t(j)]);
            ++i;
            --j;
        }
        // Records lo+1..j have keys not above the pivot's, j+1..hi not below.
        a[std::size_t(lo)] = a[std::size_t(j)];
        a[std::size_t(j)] = pivot;
        if (j - lo < hi - j) {
            QuickSort(a, lo, j - 1, key);
            lo = j + 1;
        } else {
            QuickSort(a, j + 1, hi, key);
            hi = j - 1;
        }
    }
}

}  // namespace

void EventTable::Sort(EventField field) {
    WithEventField(field, [this](auto member) {
        QuickSort(records_, 0, std::ptrdiff_t(records_.size()) - 1, member);
    });
    peaksInOrder_ = 0;
}

void EventHistory::ListsChanged() {
    static std::atomic<uint64_t> lastStamp{0};
    listsStamp_ = ++lastStamp;
}

void EventHistory::Push(std::vector<Entry>& list, Entry entry) {
    ListsChanged();
    list.push_back(std::move(entry));
    if (list.size() > maxDepth_) list.erase(list.begin());
}

void EventHistory::Checkpoint(const EventTable& table, std::string label) {
    Push(undo_, {table.Records(), std::move(label), generation_});
    redo_.clear();
    generation_ = nextGeneration_++;
}

void EventHistory::CheckpointAppended(int32_t countBefore, std::string label) {
    Push(undo_, {{}, std::move(label), generation_, std::max(countBefore, 0)});
    redo_.clear();
    generation_ = nextGeneration_++;
}

EventHistory::Entry EventHistory::Apply(Entry entry, EventTable& table, uint64_t generation) {
    if (entry.keep < 0) {
        Entry back{table.Records(), entry.label, generation};
        table.Assign(std::move(entry.records));
        return back;
    }
    // Only the records after the first keep differ: they change places.
    const auto& now = table.Records();
    Entry back{{now.begin() + std::min<std::size_t>(std::size_t(entry.keep), now.size()), now.end()},
               entry.label, generation, entry.keep};
    table.Truncate(entry.keep);
    for (const EventRecord& r : entry.records) table.Append(r);
    return back;
}

std::string EventHistory::UndoLabel() const { return undo_.empty() ? std::string() : undo_.back().label; }
std::string EventHistory::RedoLabel() const { return redo_.empty() ? std::string() : redo_.back().label; }

bool EventHistory::Undo(EventTable& table) {
    if (undo_.empty()) return false;
    Entry entry = std::move(undo_.back());
    undo_.pop_back();
    const uint64_t generation = entry.generation;
    ListsChanged();
    redo_.push_back(Apply(std::move(entry), table, generation_));
    generation_ = generation;
    return true;
}

bool EventHistory::Redo(EventTable& table) {
    if (redo_.empty()) return false;
    Entry entry = std::move(redo_.back());
    redo_.pop_back();
    const uint64_t generation = entry.generation;
    ListsChanged();
    undo_.push_back(Apply(std::move(entry), table, generation_));
    generation_ = generation;
    return true;
}

void EventHistory::Clear() {
    ListsChanged();
    undo_.clear();
    redo_.clear();
}

void EventHistory::MarkSaved() { savedGeneration_ = generation_; }

}  // namespace vess
