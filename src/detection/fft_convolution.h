// Linear convolution of a long signal with a fixed filter by blocks of FFTs
// (overlap-save): memory and time per sample are fixed by the filter length,
// not by the signal's.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace vess {

class FftConvolver {
public:
    // taps[k] weights input[n - k + centre] in output[n]: centre = 0 is a
    // causal filter, centre = taps.size() / 2 a centred one.
    FftConvolver(std::vector<double> taps, int64_t centre);
    ~FftConvolver();
    // A copy has transforms of its own (Filter works in their buffers): one
    // copy a thread.
    FftConvolver(const FftConvolver& other) : FftConvolver(other.taps_, other.centre_) {}
    FftConvolver& operator=(const FftConvolver&) = delete;

    // Points the filter reaches before and after an output point.
    int64_t ReachBefore() const { return int64_t(taps_.size()) - 1 - centre_; }
    int64_t ReachAfter() const { return centre_; }

    // output[i] for i in 0 .. n-1 from input, which holds ReachBefore() points
    // before the first output point and ReachAfter() after the last:
    // input.size() = n + ReachBefore() + ReachAfter().
    void Filter(const std::vector<double>& input, std::vector<double>& output) const;
    // The same from recorded samples (size of them), each block converted as
    // it is copied into the transform.
    void Filter(const int16_t* input, int64_t size, std::vector<double>& output) const;
    // The same handed over a block at a time, without the output's copy:
    // use(first, values, count) with values[k] = output[first + k], held in
    // the transform's buffer until use returns.
    using BlockUse = std::function<void(int64_t first, const double* values, int64_t count)>;
    void Filter(const int16_t* input, int64_t size, const BlockUse& use) const;

private:
    struct Plans;
    template <class T>
    void FilterBlocks(const T* input, int64_t size, const BlockUse& use) const;
    std::vector<double> taps_;
    int64_t centre_;
    int64_t fftSize_;
    std::unique_ptr<Plans> plans_;
};

}  // namespace vess
