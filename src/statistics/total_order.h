// Ascending sort that stays well defined when a series holds NaN (the
// arithmetic stores 0/0 as NaN): the IEEE total order, NaN after +infinity.
// A plain std::sort with NaN breaks its ordering contract.
#pragma once

#include <algorithm>
#include <compare>
#include <vector>

namespace vess {

template <class T>
void SortTotalOrder(std::vector<T>& values) {
    std::sort(values.begin(), values.end(), [](T a, T b) { return std::strong_order(a, b) < 0; });
}

}  // namespace vess
