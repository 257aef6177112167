// Units in the headings of the results grid.
#include <gtest/gtest.h>

#include <set>

#include "group_analysis/result_units.h"

namespace vess::group {
namespace {

TEST(ResultUnits, HeadingsCarryTheRecordingsUnitOrOneBuiltOnIt) {
    struct Case {
        ResultKind kind;
        std::string_view title, signalUnit, heading;
    };
    const Case cases[] = {
        {ResultKind::DecayFit, "Amplitude", "pA", "Amplitude (pA)"},
        {ResultKind::DecayFit, "SE Tau2", "pA", "SE Tau2 (ms)"},
        {ResultKind::DecayFit, "Area", "mV", "Area (mV·ms)"},
        {ResultKind::DecayFit, "Stdev", "pA", "Stdev (pA)"},
        {ResultKind::Diffusion, "Stdev", "pA", "Stdev (µM)"},  // the model's concentration
        {ResultKind::Diffusion, "Vmax", "pA", "Vmax (µM/s)"},
        {ResultKind::SpikeShape, "Max Rise", "mV", "Max Rise (mV/ms)"},
        {ResultKind::Fluctuation, "Base Var", "pA", "Base Var (pA²)"},
        {ResultKind::Amperometric, "Charge", "pA", "Charge (pC)"},
        {ResultKind::Amperometric, "Foot Charge", "nA", "Foot Charge (nC)"},
        {ResultKind::Amperometric, "Charge", "mV", "Charge (mV·s)"},
        {ResultKind::SpikeTrain, "Frequency", "mV", "Frequency (Hz)"},
        {ResultKind::SpikeTrain, "Adaptation", "mV", "Adaptation"},
        {ResultKind::Fluctuation, "R-Sqr", "pA", "R-Sqr"},
        // No recording open: the recording's unit and those built on it are left out.
        {ResultKind::DecayFit, "Amplitude", "", "Amplitude"},
        {ResultKind::DecayFit, "Area", "", "Area"},
        {ResultKind::DecayFit, "Tau1", "", "Tau1 (ms)"},
    };
    for (const Case& c : cases) EXPECT_EQ(ColumnHeading(c.kind, c.title, c.signalUnit), c.heading) << c.title;
}

TEST(ResultUnits, EveryColumnWithoutAUnitIsACountOrARatio) {
    // A heading misspelt in the unit table would lose its unit silently.
    const std::set<std::string_view> unitless = {"R-Sqr", "N", "Po", "Count", "Adaptation", "Molecules",
                                                 "Iterations", "Spike #", "Response #", "Peak #", "Point #",
                                                 "PPR Slope", "PPR Amp", "-"};
    for (int k = 0; k <= int(ResultKind::Ecg); ++k)
        for (const ResultColumn& c : ResultColumns(ResultKind(k)))
            if (UnitOfColumn(ResultKind(k), c.title) == ColumnUnit::None) {
                EXPECT_TRUE(unitless.contains(c.title)) << c.title << " of kind " << k;
            }
}

}  // namespace
}  // namespace vess::group
