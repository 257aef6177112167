// Delineation of one ECG beat (an averaged beat or a single one, R upwards):
// P, QRS and T located by their onset, peak and offset, the intervals between
// them, QT corrected for the heart rate, and the wave amplitudes against the
// isoelectric level of the PR segment.
#pragma once

#include <span>
#include <vector>

#include "group_analysis/trace_analysis.h"

namespace vess::group {

// Search windows and boundary thresholds. A boundary lies where the slope of
// the smoothed beat, going outwards from the wave's steepest point, falls to
// the given fraction of that steepest slope.
struct EcgSettings {
    double rrMs = kNotMeasured;       // RR interval for QTc; not measured: no QTc
    double qrsHalfWidthMs = 80;       // steepest QRS slopes within this of the R peak
    double qsWaveMs = 40;             // a Q or S wave within this of the R slopes
    double pWindowMs = 250;           // P searched this far before the QRS onset
    double tDelayMs = 40;             // T peak searched from this long after the QRS offset
    double tWindowMs = 500;           // up to this long after it
    double qrsThreshold = 0.5, waveThreshold = 0.5;
    double significantSlope = 0.05;   // a Q or S slope below this share of the R slope is none
};

// Times in ms on the trace's clock, amplitudes in the trace's units.
struct EcgBeat {
    double pOnset = kNotMeasured, pPeak = kNotMeasured, pOffset = kNotMeasured;
    double qrsOnset = kNotMeasured, rPeak = kNotMeasured, qrsOffset = kNotMeasured;
    double sPeak = kNotMeasured;
    double tOnset = kNotMeasured, tPeak = kNotMeasured, tOffset = kNotMeasured;
    double pr = kNotMeasured, qrs = kNotMeasured, qt = kNotMeasured, rr = kNotMeasured;
    double qtcBazett = kNotMeasured, qtcFridericia = kNotMeasured;
    double baseline = kNotMeasured;
    double pAmp = kNotMeasured, rAmp = kNotMeasured, sAmp = kNotMeasured, tAmp = kNotMeasured;
};

// QT corrected to 60 beats/min: QT / RR^(1/2) (Bazett) and QT / RR^(1/3)
// (Fridericia), RR in seconds, QT in ms.
// The RR interval QTc takes: the mean of the recording's intervals (one
// event per beat); not measured without an interval or with beats out of
// time order (an interval not above 0).
double MeanRrForQtc(std::span<const double> rrMs);
double QtcBazett(double qtMs, double rrMs);
double QtcFridericia(double qtMs, double rrMs);

EcgBeat DelineateBeat(const SampledTrace& trace, const EcgSettings& settings);

std::vector<double> EcgValues(const EcgBeat& b);
std::vector<PlotSeries> EcgMarkers(const SampledTrace& trace, const EcgBeat& b);

}  // namespace vess::group
