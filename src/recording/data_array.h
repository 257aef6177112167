// The two work arrays "Array #1" and "Array #2": 1-based growable arrays of
// 32-bit floats whose upper bound is their count. A cleared array holds one
// element of value 0 (upper bound 1), and every consumer treats an upper
// bound below 2 as empty. Importing an array text file is the one path that
// gives a lower bound of 0 (element 0 then exists and stays 0).
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace vess {

class DataArray {
public:
    DataArray() { Clear(); }

    int32_t LowerBound() const { return lower_; }
    int32_t UpperBound() const { return int32_t(store_.size()) - 1; }
    // The consumers' rule: an upper bound below 2 is an empty array.
    bool Empty() const { return UpperBound() < 2; }

    // Element i, LowerBound() <= i <= UpperBound().
    float& operator[](int32_t i) { return store_[std::size_t(i)]; }
    float operator[](int32_t i) const { return store_[std::size_t(i)]; }

    // Elements 1..UpperBound(), the series every statistic reads.
    std::span<const float> Values() const {
        return std::span<const float>(store_).subspan(1);
    }
    std::vector<double> ValuesAsDouble() const { return {Values().begin(), Values().end()}; }

    // One element of value 0, bounds 1..1.
    void Clear() { store_.assign(2, 0.0f); lower_ = 1; }
    // Exactly these values at 1..n (n may be 0: upper bound 0).
    void Assign(std::span<const float> values) {
        store_.assign(1, 0.0f);
        store_.insert(store_.end(), values.begin(), values.end());
        lower_ = 1;
    }
    // These values after the old upper bound, the old contents kept.
    void Append(std::span<const float> values) { store_.insert(store_.end(), values.begin(), values.end()); }
    // Bounds lower..upper (lower 0 or 1), every element 0.
    void Reallocate(int32_t lower, int32_t upper) {
        store_.assign(std::size_t(upper < 0 ? 0 : upper) + 1, 0.0f);
        lower_ = lower;
    }

    bool operator==(const DataArray&) const = default;

private:
    std::vector<float> store_;  // store_[i] is element i; store_[0] is element 0
    int32_t lower_ = 1;
};

}  // namespace vess
