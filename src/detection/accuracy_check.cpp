#include "detection/accuracy_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "detection/detector.h"
#include "detection/event_kernel.h"
#include "detection/method_texts.h"
#include "detection/suggest_from_recording.h"
#include "detection/whole_file.h"
#include "recording/abf_writer.h"
#include "recording/rounding.h"

namespace vess {
namespace {

struct Added {
    int64_t onset;
    double amplitudeCounts;
};

// A recording in memory holding samples in the channel's format.
std::unique_ptr<Recording> InMemory(const AccuracyInput& in, const std::vector<int16_t>& samples) {
    std::vector<uint8_t> bytes;
    if (!BuildAbfFile(in.format, samples, bytes).empty()) return nullptr;
    AbfError error = AbfError::None;
    return Recording::FromBytes(std::move(bytes), in.name, &error);
}

struct Detected {
    double at;         // peak, sample index
    double amplitude;  // counts
};

std::vector<double> PeaksOf(const std::vector<Detected>& detected) {
    std::vector<double> peaks;
    for (const Detected& d : detected) peaks.push_back(d.at);
    return peaks;
}

// The events detected on a copy, the progress going from one share to another
// as the screens are done. Stops early when the run is cancelled.
std::vector<Detected> DetectedEvents(const Settings& settings, std::unique_ptr<Recording> copy,
                                     const AccuracyControl& control, double from, double to) {
    Workspace ws;
    ws.settings = settings;
    ws.recording = std::move(copy);
    DetectWholeFile(ws, [&](const NonStopAnalysis::Progress& p) {
        const double share = p.screensTotal > 0 ? double(p.screensDone) / double(p.screensTotal) : 1.0;
        control.Report(from + (to - from) * std::clamp(share, 0.0, 1.0));
        return !control.Cancelled();
    });
    std::vector<Detected> out;
    for (const EventRecord& e : ws.events.Records())
        out.push_back({double(e.sampleIndex), std::abs(double(e.amplitude))});
    return out;
}

std::vector<Added> PlaceEvents(int64_t points, int64_t spacing, int count, double low, double high,
                               uint64_t seed) {
    std::mt19937_64 rng(seed);
    auto uniform = [&] { return double(rng() >> 11) * (1.0 / 9007199254740992.0); };
    std::vector<Added> out;
    // Slots of the spacing, in random order; an event lies at a random point
    // of the first half of its slot, so two never come closer than half of it.
    const int64_t slots = (points - 2 * spacing) / spacing;
    std::vector<int64_t> order;
    for (int64_t s = 0; s < slots; ++s) order.push_back(s);
    for (int64_t i = int64_t(order.size()) - 1; i > 0; --i)
        std::swap(order[std::size_t(i)], order[std::size_t(rng() % uint64_t(i + 1))]);
    for (int k = 0; k < count && k < int(order.size()); ++k) {
        const int64_t onset = spacing + order[std::size_t(k)] * spacing +
                              int64_t(uniform() * double(spacing / 2));
        const double amp = low * std::pow(high / low, uniform());
        out.push_back({onset, amp});
    }
    std::sort(out.begin(), out.end(), [](const Added& a, const Added& b) { return a.onset < b.onset; });
    return out;
}

// Recall and false detections per amplitude bin, from the peaks detected on
// the unchanged stretch (before) and on the copy with the added events (after).
void Tally(const std::vector<Added>& added, const std::vector<double>& before,
           const std::vector<double>& after, double sdCounts, double countUnits, double intervalUs,
           const AccuracyOptions& o, AccuracyReport& r) {
    r.originalEvents = int(before.size());
    r.added = int(added.size());
    // Bins evenly on the logarithmic amplitude scale.
    const int bins = std::max(o.bins, 1);
    const double low = o.lowSds * sdCounts, high = o.highSds * sdCounts;
    auto binOf = [&](double counts) {
        const double f = std::log(counts / low) / std::log(high / low);
        return std::clamp(int(std::floor(f * bins)), 0, bins - 1);
    };
    r.bins.resize(std::size_t(bins));
    for (int b = 0; b < bins; ++b) {
        r.bins[std::size_t(b)].lowUnits = low * std::pow(high / low, double(b) / bins) * countUnits;
        r.bins[std::size_t(b)].highUnits = low * std::pow(high / low, double(b + 1) / bins) * countUnits;
    }
    const int64_t match = int64_t(o.matchMs * 1000 / intervalUs);
    // A detection of the copy where the unchanged stretch has one (within a
    // millisecond) is the recording's own event, not an added one: it is
    // neither found nor false.
    const double near = 1000 / intervalUs;
    std::vector<bool> used(after.size(), false);
    for (std::size_t k = 0; k < after.size(); ++k)
        used[k] = std::any_of(before.begin(), before.end(),
                              [&](double b) { return std::abs(b - after[k]) <= near; });
    const auto collides = [&](const Added& a) {
        return std::any_of(before.begin(), before.end(), [&](double b) {
            return b >= double(a.onset) - near && b <= double(a.onset + match) + near;
        });
    };
    for (const Added& a : added) {
        if (collides(a)) {  // on the recording's own event: not counted either way
            ++r.collided;
            --r.added;
            continue;
        }
        AccuracyBin& bin = r.bins[std::size_t(binOf(a.amplitudeCounts))];
        ++bin.added;
        for (std::size_t k = 0; k < after.size(); ++k) {
            if (used[k] || after[k] < double(a.onset) || after[k] > double(a.onset + match)) continue;
            used[k] = true;
            ++bin.found;
            ++r.found;
            break;
        }
    }
    // A detection of the copy that is neither an added event nor one of the
    // unchanged stretch is a false one.
    for (std::size_t k = 0; k < after.size(); ++k) {
        if (used[k]) continue;
        ++r.falsePositives;
        // Binned by the size of the added event nearest before it, when any.
        const auto next = std::upper_bound(added.begin(), added.end(), after[k],
                                           [](double t, const Added& a) { return t < double(a.onset); });
        if (next != added.begin()) ++r.bins[std::size_t(binOf(std::prev(next)->amplitudeCounts))].falsePositives;
    }
    r.recall90Units = Recall90From(r.bins);
}

// Artefacts of the other direction (a test pulse's end, turned over) are no
// noise: a turned detection beyond this many times the median amplitude of
// the recording's own events is left out of the false events.
constexpr double kOutsizedOverMedian = 10;

// The detections on the turned-over stretch that lie away from the
// recording's own events, and the length of the trace away from them. A
// turned event's decay looks like a slow event of the detected direction, so
// the trace from a quarter of the event spacing before each detected peak to
// the later of a whole spacing and the time its decay (kernel's decay
// constant) takes to fall to one noise SD is left out: a large event's decay
// stays above the noise for long after the spacing.
void TallyInverted(const std::vector<Detected>& before, const std::vector<Detected>& inverted, int64_t points,
                   int64_t spacing, double decayPoints, double sdCounts, double intervalUs, AccuracyReport& r) {
    std::vector<std::pair<double, double>> spans;
    for (const Detected& b : before) {
        const double decay = decayPoints * std::log(std::max(b.amplitude / sdCounts, 1.0));
        const double from = std::max(0.0, b.at - double(spacing) / 4);
        const double to = std::min(double(points), b.at + std::max(double(spacing), decay));
        if (!spans.empty() && from <= spans.back().second) spans.back().second = std::max(spans.back().second, to);
        else spans.emplace_back(from, to);
    }
    double covered = 0;
    for (const auto& [from, to] : spans) covered += to - from;
    r.invertedSeconds = std::max(0.0, double(points) - covered) * intervalUs / 1e6;
    std::vector<double> amplitudes;
    for (const Detected& b : before) amplitudes.push_back(b.amplitude);
    double limit = INFINITY;
    if (!amplitudes.empty()) {
        std::nth_element(amplitudes.begin(), amplitudes.begin() + std::ptrdiff_t(amplitudes.size() / 2), amplitudes.end());
        limit = kOutsizedOverMedian * amplitudes[amplitudes.size() / 2];
    }
    r.invertedDetections = int(std::count_if(inverted.begin(), inverted.end(), [&](const Detected& d) {
        const auto s = std::upper_bound(spans.begin(), spans.end(), d.at,
                                        [](double v, const auto& span) { return v < span.first; });
        return (s == spans.begin() || d.at > std::prev(s)->second) && d.amplitude <= limit;
    }));
}

// Events are spaced by the kernel's peak time and three decay constants.
int64_t EventSpacing(const MethodParameters& m, double intervalUs) {
    const EventKernel kernel{m.riseTauMs, m.decayTauMs};
    return std::max<int64_t>(int64_t((KernelPeakMs(kernel) + 3 * kernel.decayTauMs) * 1000 / intervalUs), 8);
}

AccuracyReport Stopped() {
    AccuracyReport r;
    r.status = CommandResult::Cancelled();
    return r;
}

}  // namespace

std::optional<double> Recall90From(const std::vector<AccuracyBin>& bins) {
    std::optional<double> from;
    for (auto b = bins.rbegin(); b != bins.rend(); ++b) {
        if (b->added == 0) continue;
        if (b->Recall() < 0.9) break;
        from = b->lowUnits;
    }
    return from;
}

Outcome<AccuracyInput> PrepareAccuracyCheck(const Workspace& ws, const AccuracyOptions& o) {
    const auto refuse = [](const char* why) {
        return CommandResult::Failed(method_texts::kCheckCaption, why);
    };
    if (!ws.recording) return refuse("no recording is open");
    const Recording& rec = *ws.recording;
    const int64_t n =
        std::min<int64_t>(rec.PointsPerChannel(), int64_t(o.maxSeconds * 1e6 / rec.IntervalUs()));
    if (n < 4 * EventSpacing(ws.settings.method, rec.IntervalUs()))
        return refuse("the recording is too short for the check");
    AccuracyInput in;
    in.options = o;
    in.settings = ws.settings;
    in.samples.resize(static_cast<std::size_t>(n));
    rec.ReadSamples(0, in.samples);
    in.format = ChannelWriteLayout(rec);
    in.countUnits = std::abs(double(rec.Bit2pA2(1)));
    in.name = rec.Path().filename();
    return in;
}

AccuracyReport RunAccuracyCheck(const AccuracyInput& in, const AccuracyControl& control) {
    AccuracyReport r;
    if (control.Cancelled()) return Stopped();
    const AccuracyOptions& o = in.options;
    const std::vector<int16_t>& x = in.samples;
    const int64_t n = int64_t(x.size());
    const double intervalUs = in.format.intervalUs;
    const MethodParameters& m = in.settings.method;
    const EventKernel kernel{m.riseTauMs, m.decayTauMs};
    const int64_t spacing = EventSpacing(m, intervalUs);
    const double sdCounts = RecordingNoiseSdCounts(x, intervalUs, {}, kernel.decayTauMs);
    r.noiseSdUnits = sdCounts * in.countUnits;
    r.units = in.format.channels.front().units;
    r.seconds = double(n) * intervalUs / 1e6;
    const int dir = NormalizedDirection(in.settings.analysis.PeakDirection);
    const std::vector<Added> added =
        PlaceEvents(n, spacing, o.events, o.lowSds * sdCounts, o.highSds * sdCounts, o.seed);
    std::vector<int16_t> copy = x;
    const int64_t length = 2 * spacing;
    const std::vector<double> shape = KernelSamples(kernel, intervalUs, length);
    for (const Added& a : added)
        for (int64_t i = 0; i < length && a.onset + i < n; ++i) {
            const std::size_t at = std::size_t(a.onset + i);
            copy[at] = Clamp16(RoundEven(copy[at] + dir * a.amplitudeCounts * shape[std::size_t(i)]));
        }
    std::vector<int16_t> inverted(x.size());
    std::transform(x.begin(), x.end(), inverted.begin(), [](int16_t v) { return Clamp16(-int64_t(v)); });
    control.Report(0);
    const std::vector<Detected> before = DetectedEvents(in.settings, InMemory(in, x), control, 0, 1.0 / 3);
    if (control.Cancelled()) return Stopped();
    const std::vector<Detected> after =
        DetectedEvents(in.settings, InMemory(in, copy), control, 1.0 / 3, 2.0 / 3);
    if (control.Cancelled()) return Stopped();
    const std::vector<Detected> turned =
        DetectedEvents(in.settings, InMemory(in, inverted), control, 2.0 / 3, 1);
    if (control.Cancelled()) return Stopped();
    Tally(added, PeaksOf(before), PeaksOf(after), sdCounts, in.countUnits, intervalUs, o, r);
    TallyInverted(before, turned, n, spacing, kernel.decayTauMs * 1000 / intervalUs, sdCounts, intervalUs, r);
    return r;
}

AccuracyReport CheckAccuracy(const Workspace& ws, const AccuracyOptions& o, const AccuracyControl& control) {
    const Outcome<AccuracyInput> in = PrepareAccuracyCheck(ws, o);
    if (!in) {
        AccuracyReport r;
        r.status = in.status();
        return r;
    }
    return RunAccuracyCheck(in.value(), control);
}

std::string AccuracySummary(const AccuracyReport& r) {
    const auto perMinute = r.FalsePerMinute();
    const std::string rate =
        perMinute ? fmt::format("noise alone gives about {:.2f} false events per minute", *perMinute)
                  : fmt::format("false events per minute not measurable (less than {:.0f} s of event-free trace)",
                                AccuracyReport::kMinFalseRateSeconds);
    const std::string collided =
        r.collided > 0 ? fmt::format(" ({} more landed on the recording's own events and are left out)", r.collided)
                       : std::string();
    return fmt::format(
        "{:.1f} s checked, noise SD {:.4g} {}; {} events added{}, {} found (recall {:.3f}); {} false "
        "detections; {} detections in the unchanged stretch\n"
        "{} detections in the stretch turned upside down, away from its own events ({:.1f} s): {}",
        r.seconds, r.noiseSdUnits, r.units, r.added, collided, r.found,
        r.added > 0 ? double(r.found) / r.added : 0.0, r.falsePositives, r.originalEvents,
        r.invertedDetections, r.invertedSeconds, rate);
}

std::string AccuracyRecall90Text(const AccuracyReport& r) {
    return r.recall90Units ? fmt::format("Recall reaches 90 % from {:.4g} {}", *r.recall90Units, r.units)
                           : std::string("Recall stays below 90 %");
}

std::string AccuracyTable(const AccuracyReport& r) {
    std::string out = AccuracySummary(r) + "\n";
    out += fmt::format("{:>12} {:>12} {:>7} {:>7} {:>8} {:>7}\n", "from " + r.units, "to " + r.units,
                       "added", "found", "recall", "false");
    for (const AccuracyBin& b : r.bins)
        out += fmt::format("{:>12.4g} {:>12.4g} {:>7} {:>7} {:>8.3f} {:>7}\n", b.lowUnits, b.highUnits,
                           b.added, b.found, b.Recall(), b.falsePositives);
    return out + AccuracyRecall90Text(r) + "\n";
}

PlotData AccuracyPlot(const AccuracyReport& r) {
    PlotData plot;
    plot.title = "Detection accuracy";
    plot.xAxis = "Amplitude (" + r.units + ")";
    plot.yAxis = "Recall";
    PlotSeries recall;
    recall.kind = SeriesKind::Lines;
    recall.legend = "recall";
    for (const AccuracyBin& b : r.bins) {
        recall.x.push_back(std::sqrt(b.lowUnits * b.highUnits));
        recall.y.push_back(b.Recall());
    }
    PlotSeries falseShare;
    falseShare.kind = SeriesKind::Scatter;
    falseShare.legend = "false detections per added event";
    for (const AccuracyBin& b : r.bins) {
        falseShare.x.push_back(std::sqrt(b.lowUnits * b.highUnits));
        falseShare.y.push_back(b.added > 0 ? double(b.falsePositives) / b.added : 0.0);
    }
    plot.series = {recall, falseShare};
    return plot;
}

}  // namespace vess
