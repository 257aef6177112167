// The stretches of the open recording that a screen analysis has run over
// since it was opened, as merged block ranges: a run over every screen of a
// recording is one range, so the record stays a few entries long.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>

namespace vess {

class AnalysedBlocks {
public:
    // Notes that blocks [first, first + count) were analysed.
    void Add(int32_t first, int32_t count) {
        if (count <= 0) return;
        int64_t begin = first, end = int64_t(first) + count;
        auto it = ranges_.upper_bound(int32_t(begin));
        if (it != ranges_.begin() && std::prev(it)->second >= begin) --it;
        while (it != ranges_.end() && it->first <= end) {
            begin = std::min<int64_t>(begin, it->first);
            end = std::max<int64_t>(end, it->second);
            it = ranges_.erase(it);
        }
        ranges_.emplace(int32_t(begin), end);
    }
    // Whether any block of [first, first + count) was analysed.
    bool AnyIn(int32_t first, int32_t count) const {
        if (count <= 0) return false;
        const int64_t end = int64_t(first) + count;
        auto it = ranges_.lower_bound(first);
        if (it != ranges_.end() && it->first < end) return true;
        return it != ranges_.begin() && std::prev(it)->second > first;
    }
    void Clear() { ranges_.clear(); }
    std::size_t RangeCount() const { return ranges_.size(); }

private:
    std::map<int32_t, int64_t> ranges_;  // first block -> one past the last
};

}  // namespace vess
