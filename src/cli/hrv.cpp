// vess hrv SOURCE | --beats FILE.txt | --rr FILE.txt [options]: the
// heart-rate-variability measures of a series of beats, from the events of
// an event file, from a text file of beat times in ms or from a text file of
// RR intervals in ms. The same engine as the heart-rate windows.
#include <algorithm>
#include <iostream>
#include <memory>
#include <string>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/named_recording.h"
#include "hrv/analysis.h"
#include "hrv/spectrum.h"
#include "hrv/texts.h"
#include "recording/event_file.h"
#include "recording/file_io.h"
#include "recording/recording.h"

namespace vess::cli {

namespace {

struct HrvCliOptions {
    std::string source, beatsFile, rrFile;
    hrv::HrvOptions hrv;
    double intervalUs = 0;   // 0: the recording's, else 1000
    bool json = false, spectrum = false, lomb = false, mouseBands = false;
    hrv::SpectrumOptions spectral;
};

struct Beats {
    std::vector<double> timesMs;
    double lengthMs = 0;
    double intervalUs = 1000;
    std::string name;
};

[[noreturn]] void Fail(const std::string& message) {
    std::cerr << "vess hrv: " << message << "\n";
    throw CLI::RuntimeError(1);
}

std::vector<double> ReadNumbers(const std::string& file) {
    const auto bytes = ReadFileBytes(file);
    if (!bytes) Fail("cannot read " + file);
    return hrv::ReadNumberList(std::string_view(reinterpret_cast<const char*>(bytes->data()), bytes->size()));
}

Beats LoadBeats(const HrvCliOptions& o) {
    Beats b;
    if (!o.beatsFile.empty() || !o.rrFile.empty()) {
        const bool rr = !o.rrFile.empty();
        b.name = std::filesystem::path(rr ? o.rrFile : o.beatsFile).filename().string();
        const std::vector<double> numbers = ReadNumbers(rr ? o.rrFile : o.beatsFile);
        b.timesMs = rr ? hrv::BeatsFromIntervals(numbers) : numbers;
    } else {
        const EventFileContents f = ReadEventFile(o.source);
        if (!f.Ok()) Fail(o.source + ": " + DescribeProblem(f));
        b.name = f.storedName.empty() ? std::filesystem::path(o.source).filename().string() : f.storedName;
        double exactIntervalUs = 0;  // no recording: the stored times
        if (const auto rec = OpenNamedRecording(o.source, f)) {
            b.intervalUs = exactIntervalUs = rec->IntervalUs();
            b.lengthMs = double(rec->PointsPerChannel()) * b.intervalUs / 1000;
        }
        EventTable table;
        table.Assign(f.records);
        b.timesMs = hrv::BeatTimesMs(table, exactIntervalUs);
    }
    if (!std::is_sorted(b.timesMs.begin(), b.timesMs.end())) {
        std::cerr << "vess hrv: the beats are not in time order; they are sorted by time\n";
        std::sort(b.timesMs.begin(), b.timesMs.end());
    }
    if (!b.timesMs.empty()) b.lengthMs = std::max(b.lengthMs, b.timesMs.back());
    if (o.intervalUs > 0) b.intervalUs = o.intervalUs;
    return b;
}

nlohmann::ordered_json Json(const hrv::HrvAnalysis& a, const hrv::SpectrumResult* s) {
    nlohmann::ordered_json j;
    const auto values = a.timeDomain.Values();
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::string key(hrv::texts::kMeasureColumns[i]);
        if (i == 0 || i == 4 || i == 8 || i == 10) j[key] = int64_t(values[i]);
        else j[key] = values[i];
    }
    nlohmann::ordered_json rows = nlohmann::ordered_json::array();
    for (const hrv::SegmentRow& r : a.timeDomain.segments) {
        const auto& c = hrv::texts::kSegmentColumns;
        rows.push_back({{std::string(c[0]), r.number}, {std::string(c[1]), r.count},
                        {std::string(c[2]), r.meanMs}, {std::string(c[3]), r.sdMs}});
    }
    j["segments"] = rows;
    j["HRV triangular index"] = a.triangle.triangularIndex;
    j["TINN"] = a.triangle.tinnMs;
    j["SD1"] = a.lorenz.sd1Ms;
    j["SD2"] = a.lorenz.sd2Ms;
    j["SD1/SD2"] = a.lorenz.ratio;
    if (s) {
        j["VLF"] = s->vlf.powerMs2;
        j["LF"] = s->lf.powerMs2;
        j["HF"] = s->hf.powerMs2;
        j["Total power"] = s->totalMs2;
        j["LF nu"] = s->lfNu;
        j["HF nu"] = s->hfNu;
        j["LF/HF"] = s->lfHfRatio;
        j["VLF peak"] = s->vlf.peakHz;
        j["LF peak"] = s->lf.peakHz;
        j["HF peak"] = s->hf.peakHz;
    }
    return j;
}

void PrintText(const Beats& b, const hrv::HrvAnalysis& a, const hrv::SpectrumResult* s) {
    const auto titles = hrv::ResultTitles();
    const auto row = hrv::ResultRow(b.name, a.timeDomain);
    for (std::size_t i = 0; i < titles.size(); ++i)
        std::cout << fmt::format("{:<10} {}\n", titles[i], row[i].empty() ? "not measured" : row[i]);
    std::cout << fmt::format("{:<10} {:.3f}\n{:<10} {:.3f} ms\n{:<10} {:.3f} ms\n{:<10} {:.3f} ms\n",
                             "HRV tri", a.triangle.triangularIndex, "TINN", a.triangle.tinnMs, "SD1",
                             a.lorenz.sd1Ms, "SD2", a.lorenz.sd2Ms);
    if (s)
        std::cout << fmt::format(
            "VLF {:.3f} ms2 (peak {:.4f} Hz)\nLF  {:.3f} ms2 (peak {:.4f} Hz)\n"
            "HF  {:.3f} ms2 (peak {:.4f} Hz)\nLF {:.2f} nu, HF {:.2f} nu, LF/HF {:.3f}\n",
            s->vlf.powerMs2, s->vlf.peakHz, s->lf.powerMs2, s->lf.peakHz, s->hf.powerMs2, s->hf.peakHz,
            s->lfNu, s->hfNu, s->lfHfRatio);
    std::cout << "\n" << hrv::GridText(hrv::SegmentTitles(), hrv::SegmentRows(a.timeDomain));
}

}  // namespace

void AddHrvCommand(CLI::App& app) {
    auto o = std::make_shared<HrvCliOptions>();
    auto* cmd = app.add_subcommand("hrv", "Heart-rate variability of the beats of an event file or text file");
    auto* src = cmd->add_option("source", o->source, "event file (.EVT) whose events are the beats");
    auto* beats = cmd->add_option("--beats", o->beatsFile, "text file of beat times in ms");
    auto* rr = cmd->add_option("--rr", o->rrFile, "text file of RR intervals in ms");
    src->excludes(beats, rr);
    beats->excludes(rr);
    cmd->add_option("--upper", o->hrv.upperBoundMs, "leave out RR intervals greater than this (ms)");
    cmd->add_option("--lower", o->hrv.lowerBoundMs, "leave out RR intervals smaller than this (ms)");
    cmd->add_option("--segment-points", o->hrv.pointsPerSegment, "sample points per segment")
        ->check(CLI::PositiveNumber);
    cmd->add_option("--interval-us", o->intervalUs,
                    "sample interval for the segments (default: the recording's, else 1000)");
    cmd->add_option("--threshold", o->hrv.thresholdMs, "delta RR threshold of nNN and %NN (ms)");
    cmd->add_option("--rr-bin", o->hrv.rrBinMs, "RR histogram bin (ms) for the triangular index and TINN");
    cmd->add_flag("--include-zero", o->hrv.includeZeroSegments, "include segments with no RR interval");
    cmd->add_flag("--exclude-last", o->hrv.excludeLastSegment, "exclude the last segment");
    cmd->add_flag("--spectrum", o->spectrum, "add the VLF, LF and HF band powers");
    cmd->add_flag("--lomb", o->lomb, "Lomb-Scargle periodogram instead of Welch's method");
    cmd->add_flag("--mouse", o->mouseBands, "mouse bands and resampling instead of the human ones");
    cmd->add_option("--resample", o->spectral.resampleHz, "resampling rate (Hz)");
    cmd->add_option("--window", o->spectral.windowPoints, "Welch window length (samples)");
    cmd->add_option("--overlap", o->spectral.overlapPercent, "Welch window overlap (%)");
    cmd->add_flag("--json", o->json, "print one JSON object");
    cmd->callback([o, cmd] {
        if (o->source.empty() && o->beatsFile.empty() && o->rrFile.empty())
            Fail("give an event file, --beats FILE or --rr FILE");
        const Beats b = LoadBeats(*o);
        const hrv::HrvAnalysis a =
            hrv::AnalyseBeats(b.timesMs, b.lengthMs, o->hrv.SegmentMs(b.intervalUs), o->hrv);
        if (a.rr.rrMs.empty() && a.rr.outsideBounds > 0)
            Fail(hrv::texts::NoIntervalInBoundsText(a.rr.outsideBounds, o->hrv.lowerBoundMs, o->hrv.upperBoundMs) +
                 " (--lower, --upper)");
        if (a.rr.notMeasured > 0) std::cerr << hrv::texts::NotMeasuredIntervalsText(a.rr.notMeasured) << "\n";
        hrv::SpectrumOptions so = o->mouseBands ? hrv::MouseSpectrumPreset() : hrv::HumanSpectrumPreset();
        if (cmd->count("--resample")) so.resampleHz = o->spectral.resampleHz;
        if (cmd->count("--window")) so.windowPoints = o->spectral.windowPoints;
        if (cmd->count("--overlap")) so.overlapPercent = o->spectral.overlapPercent;
        if (o->lomb) so.method = hrv::SpectrumMethod::LombScargle;
        hrv::SpectrumResult s;
        if (o->spectrum) {
            s = hrv::AnalyseSpectrum(a.rr.endMs, a.rr.rrMs, so);
            if (!s.error.empty()) Fail(s.error);
        }
        if (!a.timeDomain.segmentProblem.empty()) std::cerr << "vess hrv: " << a.timeDomain.segmentProblem << "\n";
        if (o->json) std::cout << Json(a, o->spectrum ? &s : nullptr).dump(2) << "\n";
        else PrintText(b, a, o->spectrum ? &s : nullptr);
    });
}

}  // namespace vess::cli
