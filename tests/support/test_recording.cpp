#include "support/test_recording.h"

#include <cstdlib>
#include <stdexcept>
#include <system_error>

namespace vess::test {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "vess-test-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("cannot create a temporary folder from " + pattern);
    path_ = pattern;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

AbfWriteLayout MakeAbfLayout(double intervalUs, float countsPerUnit) {
    // value = counts / (programmable gain x scale factor x signal gain) x range / resolution.
    // With range 8 V over 32768 counts (2^-12 V a count) and a scale factor of
    // countsPerUnit / 4096, every factor is a power of two times countsPerUnit,
    // so counts / countsPerUnit comes out exactly.
    return AbfWriteLayout{.intervalUs = intervalUs, .adcRange = 8.0f, .adcResolution = 32768,
                          .channels = {AbfChannelLayout{.programmableGain = 1.0f,
                                                        .instrumentScaleFactor = countsPerUnit / 4096.0f,
                                                        .signalGain = 1.0f}},
                          .creator = "vess tests", .fileStartDate = 20240101, .fileStartTimeS = 0};
}

std::unique_ptr<Recording> MakeRecording(const std::filesystem::path& file,
                                         std::span<const int16_t> samples, double intervalUs,
                                         float countsPerUnit) {
    const std::string written = WriteAbf(file, MakeAbfLayout(intervalUs, countsPerUnit), samples);
    if (!written.empty()) throw std::runtime_error(written);
    AbfError error = AbfError::None;
    std::string detail;
    auto rec = Recording::Open(file, &error, &detail);
    if (!rec) throw std::runtime_error("cannot open " + file.string() + ": " + detail);
    return rec;
}

std::filesystem::path SharedData() {
    std::error_code ec;
    const auto dir = std::filesystem::weakly_canonical(
        std::filesystem::path(VESS_SOURCE_DIR) / ".." / "shared" / "data", ec);
    if (ec || !std::filesystem::is_directory(dir, ec)) return {};
    return dir;
}

}  // namespace vess::test
