// The headings of the rows that the trace analyses of the group window
// append. Their values lie one after the other from byte 32 of the row, in
// the order given here; a heading's index is its value's index.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace vess::group::columns {

inline constexpr std::size_t kFirstOffset = 32;
inline constexpr std::size_t kSlots = 28;  // up to byte 256

// One spike's shape; a spike of a train adds its number before and its
// phase-plane threshold and interval after.
inline constexpr std::array<std::string_view, 16> kSpikeShape = {
    "Threshold", "Thr Time", "Peak", "Peak Time", "Amplitude", "Amp (Base)", "Baseline", "Rise",
    "Half-width", "Width", "Max Rise", "Max Decay", "Decay%", "AHP Peak", "AHP Time", "AHP Area"};
inline constexpr std::array<std::string_view, 24> kSpikeTrain = {
    "Spike #", "Threshold", "Thr Time", "Peak", "Peak Time", "Amplitude", "Amp (Base)", "Baseline",
    "Rise", "Half-width", "Width", "Max Rise", "Max Decay", "Decay%", "AHP Peak", "AHP Time",
    "AHP Area", "Thr (d2V)", "ISI", "Count", "Frequency", "Latency", "Mean ISI", "Adaptation"};
inline constexpr std::array<std::string_view, 14> kFieldPotential = {
    "Response #", "Stim Time", "Baseline", "FV Amp", "FV Latency", "fEPSP Slope", "fEPSP Amp",
    "Onset Latency", "Peak Latency", "PS Amp", "PS Latency", "PPR Slope", "PPR Amp", "Slope At"};
// The same values under the names of evoked synaptic currents (no volley,
// no population spike).
inline constexpr std::array<std::string_view, 14> kEvokedCurrent = {
    "Response #", "Stim Time", "Baseline", "-", "-", "PSC Slope", "PSC Amp",
    "Onset Latency", "Peak Latency", "-", "-", "PPR Slope", "PPR Amp", "Slope At"};
inline constexpr std::array<std::string_view, 11> kMultipeak = {
    "Peak #", "Time", "Amplitude", "Local Base", "Rise", "Half-width", "Interval",
    "Count", "Mean Amp", "Largest Amp", "Mean Interval"};
// One amperometric spike: charge in pC for a trace in pA.
inline constexpr std::array<std::string_view, 13> kAmperometric = {
    "Baseline", "Imax", "Peak Time", "Time to Peak", "Rise", "Rise Slope", "Half-width", "Decay",
    "Charge", "Molecules", "Foot Dur", "Foot Amp", "Foot Charge"};
// The fitted release (µM), Vmax (µM/s) and Km (µM) of the diffusion model.
inline constexpr std::array<std::string_view, 6> kDiffusion = {"Release", "Vmax", "Km", "R-Sqr", "Stdev",
                                                               "Iterations"};
// One ECG beat: times in ms, amplitudes against the PR segment.
inline constexpr std::array<std::string_view, 20> kEcg = {
    "P On", "P Peak", "P Off", "QRS On", "R Peak", "QRS Off", "T On", "T Peak", "T Off", "PR", "QRS", "QT",
    "RR", "QTc Bazett", "QTc Frid", "Baseline", "P Amp", "R Amp", "S Amp", "T Amp"};
inline constexpr std::array<std::string_view, 5> kManualPoint = {"Point #", "Time", "Value", "dTime",
                                                                 "dValue"};

}  // namespace vess::group::columns
