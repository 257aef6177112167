// Measurements of one detected event on the samples of a screen: the 10-90 %
// rise time, the rise to 50 %, the half-width and the slope. Everything works
// in raw counts; "excess" is direction x (sample - baseline), positive in the
// event's own direction. Only recorded samples are measured: a value that
// would need samples beyond the recording is not measured (see RecordedSpan).
#pragma once

#include <cmath>
#include <cstdint>
#include <optional>

#include "recording/screen.h"

namespace vess {

// The window indices of a screen that hold recorded samples. Reads outside
// them are served with whatever the recording gives at its edges, which is
// no data: nothing may be measured on them.
struct DataSpan {
    int64_t first = 0;
    int64_t last = -1;
    bool Contains(int64_t i) const { return i >= first && i <= last; }
};
DataSpan RecordedSpan(const Screen& screen);

// The last window index the half-width's decaying walk may visit: the end of
// the screen after the one holding the peak (the same point whichever of two
// neighbouring screens measures the event), and not past the recording.
int64_t HalfWidthReach(const Screen& screen, int64_t peak);

// The decay of an earlier event under a later one, extrapolated as an
// exponential: amplitude (signed counts) at window index at, falling with the
// time constant tauPoints. The later event is measured on the trace less it;
// a zero amplitude leaves the trace as recorded.
struct DecayUnder {
    double amplitude = 0;
    int64_t at = 0;
    double tauPoints = 1;
    double At(int64_t i) const {
        return amplitude == 0 ? 0.0 : amplitude * std::exp(-double(i - at) / tauPoints);
    }
};

// A sample of the screen less the decay under the event.
inline double SampleLess(const Screen& screen, const DecayUnder& under, int64_t i) {
    return double(screen.GetSampleValue(i)) - under.At(i);
}

// What the measurements need to know of an event (window indices).
struct EventShape {
    int64_t peak = 0;
    int16_t value = 0;            // peak value used for the amplitude
    int16_t baseline = 0;         // absolute level, counts
    int64_t start = 0;            // the 1 % point; the rising walks stop here
    int32_t amplitudeCounts = 0;  // |value - baseline|
    int16_t direction = -1;       // +1 or -1
    int64_t decayLimit = 0;       // last index the decaying walk may visit (HalfWidthReach)
    DecayUnder under;             // an earlier event's decay the levels ride on
};

// Interpolated position of the crossing of fraction x amplitude on the rising
// side: walks back from the peak to the event start and stops at the first
// sample whose excess is strictly below the level; the crossing lies between
// it and its neighbour on the peak side. Equal neighbours give the integer
// index; a walk that reaches the event start without stopping gives the start.
double RisingCrossing(const Screen& screen, const EventShape& e, double fraction);
// The same walking forwards from the peak, up to e.decayLimit; nullopt when
// the trace does not fall below the level by then.
std::optional<double> FallingCrossing(const Screen& screen, const EventShape& e, double fraction);

// (x90 - x10) x interval / 1000, in ms.
float Detect1090Rise(const Screen& screen, const EventShape& e);
// Peak index minus the first sample (walking back, not beyond the start)
// whose excess is below half the amplitude; whole samples.
int16_t Detect50RiseTime(const Screen& screen, const EventShape& e);
// Distance between the two 50 % crossings in ms; the rising one is
// interpolated at the sample that ended the rise-to-50 % walk. Not a number
// when the trace does not fall to half within e.decayLimit: a long event
// has no half-width that the walk could give, and a limit reported as one
// would be a wrong value that looks right.
float DetectHalfWidth(const Screen& screen, const EventShape& e, int16_t rise50Points);
// direction x amplitude x 0.8 / rise time (units per ms); 0 for a zero rise
// time, which only a step without any sample between 10 and 90 % can give.
float Slope1090(int16_t direction, float amplitudeUnits, float rise1090Ms);

}  // namespace vess
