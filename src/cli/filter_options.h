// The filter options shared by vess filter and vess detect: kind, pass,
// cut-off, order, ripple, attenuation and zero phase, each overriding the
// filter of the settings when given.
#pragma once

#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "signal/filter_design.h"

namespace vess::cli {

struct FilterOptions {
    std::optional<std::string> kind, pass;
    std::optional<double> cutoffHz, rippleDb, attenuationDb;
    std::optional<int> order;
    bool zeroPhase = false;
};

// Registers the options; required makes kind, pass, cut-off and order so.
void AddFilterOptions(CLI::App& cmd, FilterOptions& options, bool required);

// base with the options given applied.
FilterChoice ResolveFilter(const FilterOptions& options, FilterChoice base);

}  // namespace vess::cli
