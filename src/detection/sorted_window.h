// A sorted window of values, one taken out and one put in at each step, for
// running medians of a few dozen values.
#pragma once

#include <cstddef>
#include <vector>

#include "detection/point_loops.h"

namespace vess {

// The values sit in a buffer whose places beyond them hold +infinity, which
// no count below takes in: taking a value out and putting one in are one
// step, and "none" is +infinity. With eight lanes a step writes the whole
// new order into a second buffer without a branch on the values or a count,
// each place from its own tests; otherwise the values between the two places
// move by one, in place. Both give the same sequence.
class SortedWindow {
public:
    explicit SortedWindow(std::size_t most, int lanes = WidestLanes());
    SortedWindow(const SortedWindow&) = delete;
    SortedWindow& operator=(const SortedWindow&) = delete;

    // The values, sorted as std::sort sorts them in this order.
    void Fill(const double* values, std::size_t count);

    double operator[](std::size_t i) const { return current_[i]; }

    // Takes gone out and puts in in, as erasing at the first value not below
    // gone and then inserting after the last value not above in do.
    void Replace(double gone, double in);

private:
    friend void RunningMedians(const double*, std::size_t, std::size_t, double*, int);
    friend void RunningMediansOfKept(const double*, const char*, std::size_t, std::size_t, const double*, double*,
                                     int);
    std::size_t capacity_;  // even; a multiple of eight with eight lanes
    bool eight_;
    // Two buffers of capacity_ places, each with one place before and after
    // (read, never taken in; the one after is +infinity).
    std::vector<double> store_;
    double* current_;
    double* other_;
};

// medians[k] = the median (the middle value) of values[k .. k + width - 1],
// width odd, for k <= count - width: a window slid along them, in registers
// throughout where it fits in them.
void RunningMedians(const double* values, std::size_t count, std::size_t width, double* medians,
                    int lanes = WidestLanes());

// The same of the values not left out (leftOut[j] set), the lower middle of
// an even count; where none of a window is left out, or all of it,
// ofAll[k], the median of all of it.
void RunningMediansOfKept(const double* values, const char* leftOut, std::size_t count, std::size_t width,
                          const double* ofAll, double* medians, int lanes = WidestLanes());

}  // namespace vess
