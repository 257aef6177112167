// Searches over a run of raw samples held in memory, written so that the
// compiler turns them into vector instructions: the first sample holding the
// greatest or least value, and the sum. Detection asks these questions of
// every search range and of every candidate peak, so they set its speed.
#pragma once

#include <cstdint>
#include <vector>

namespace vess {

struct FirstExtreme {
    int32_t offset = 0;  // from the start of the run
    int16_t value = 0;
};

// The greatest (greatest true) or least value of p[0] .. p[n-1] and the first
// offset that holds it: a later sample wins only when strictly beyond. n >= 1.
// Searched in vectors as wide as the processor has.
FirstExtreme FirstExtremeOf(const int16_t* p, int32_t n, bool greatest);

// The vector widths, in samples, this processor can search in: widest first,
// 8 on every one.
std::vector<int32_t> SampleSearchWidths();
// FirstExtremeOf searching lanes samples at a time, one of SampleSearchWidths().
FirstExtreme FirstExtremeOfAtWidth(const int16_t* p, int32_t n, bool greatest, int32_t lanes);

// p[0] + ... + p[n-1]; 0 for n <= 0.
int64_t SumOf(const int16_t* p, int64_t n);

}  // namespace vess
