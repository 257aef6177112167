// Writes gap-free ABF 1.x files with 16-bit integer samples, 1 to 16
// channels, in our own code. Used for synthetic recordings, the event-free
// file and the tachogram file, and for the template header file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace vess {

class Recording;

struct AbfChannelLayout {
    std::string name = "IN 0";
    std::string units = "pA";
    // Counts to units: value = counts / (programmableGain * scaleFactor *
    // signalGain) * adcRange / adcResolution + signalOffset + instrumentOffset.
    float programmableGain = 1;
    float instrumentScaleFactor = 0.001f;
    float signalGain = 1;
    float instrumentOffset = 0;
    float signalOffset = 0;
    // Additional (telegraph) gain of the channel, multiplied into its gain
    // when above 0; 0 means none.
    float telegraphAdditGain = 0;
};

struct AbfWriteLayout {
    double intervalUs = 50;            // per channel
    float adcRange = 10;               // volts full scale
    int32_t adcResolution = 32768;
    std::vector<AbfChannelLayout> channels{AbfChannelLayout{}};
    std::string creator = "Vessantorium";
    std::string comment;
    // Start of the recording as stored in the header: date as yyyymmdd and
    // seconds since midnight. 0 means the time of writing.
    int32_t fileStartDate = 0;
    int32_t fileStartTimeS = 0;
};

// The chosen channel of rec as a single-channel file: its interval, range,
// units, and its whole gain in one factor, so that counts convert to units
// exactly as in rec.
AbfWriteLayout ChannelWriteLayout(const Recording& rec);

// The header bytes (6144, the extended header) that WriteAbf puts before
// frames interleaved samples.
std::vector<uint8_t> BuildAbfHeader(const AbfWriteLayout& abfLayout, int64_t frames);

// The whole file (header and interleaved samples) in memory. Returns an
// empty string on success, otherwise what is wrong with the request.
std::string BuildAbfFile(const AbfWriteLayout& abfLayout, std::span<const int16_t> interleaved,
                         std::vector<uint8_t>& bytes);

// interleaved holds frames of channels.size() samples each. Writes to a
// temporary file and renames it over path. Returns an empty string on
// success, otherwise a message saying what went wrong.
std::string WriteAbf(const std::filesystem::path& path, const AbfWriteLayout& abfLayout,
                     std::span<const int16_t> interleaved);

}  // namespace vess
