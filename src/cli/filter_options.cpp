#include "cli/filter_options.h"

namespace vess::cli {

void AddFilterOptions(CLI::App& cmd, FilterOptions& o, bool required) {
    cmd.add_option("--kind", o.kind, "filter kind")
        ->check(CLI::IsMember({"butterworth", "chebyshev", "inverse-chebyshev", "elliptic", "bessel", "gaussian"}))
        ->required(required);
    cmd.add_option("--pass", o.pass, "low or high (default low; gaussian is low only)")
        ->check(CLI::IsMember({"low", "high"}));
    cmd.add_option("--cutoff", o.cutoffHz,
                   "cut-off in Hz: -3 dB (butterworth, bessel, gaussian), ripple edge (chebyshev, elliptic), "
                   "stop-band edge (inverse-chebyshev)")
        ->required(required);
    cmd.add_option("--order", o.order, "filter order (default 4; gaussian has none)")
        ->check(CLI::Range(1, int(kMaxFilterOrder)));
    cmd.add_option("--ripple", o.rippleDb, "pass-band ripple in dB (chebyshev, elliptic)");
    cmd.add_option("--attenuation", o.attenuationDb, "stop-band attenuation in dB (inverse-chebyshev, elliptic)");
    cmd.add_flag("--zero-phase", o.zeroPhase, "filter forward and backward (no phase shift)");
}

FilterChoice ResolveFilter(const FilterOptions& o, FilterChoice choice) {
    if (o.kind) ParseKind(*o.kind, &choice.kind);
    if (o.pass) ParsePass(*o.pass, &choice.pass);
    if (o.cutoffHz) choice.cutoffHz = *o.cutoffHz;
    if (o.order) choice.order = *o.order;
    if (o.rippleDb) choice.rippleDb = *o.rippleDb;
    if (o.attenuationDb) choice.attenuationDb = *o.attenuationDb;
    if (o.zeroPhase) choice.zeroPhase = true;
    return choice;
}

}  // namespace vess::cli
