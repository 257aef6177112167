#!/bin/sh
# Scores detection as a new user runs it (no settings file, no options) and
# with each method chosen, on the simulated recordings of events in real
# noise: a detection counts when its peak lies 0 to 5 ms after a true onset,
# each true event matched once. Prints F1 per recording and pooled.
#
#   scripts/score_events.sh [BUILD_DIR] [DATA_DIR]
set -eu
build=${1:-build}
data=${2:-../shared/data/events}
[ -d "$data" ] || { echo "no simulated recordings in $data" >&2; exit 1; }
for run in "" "--method threshold" "--method deconvolution" "--method template"; do
    label=${run:-"(no options)"}
    label=${label#--method }
    pooled="0 0 0"
    for dir in "$data"/*/; do
        [ -f "$dir/Simulation.abf" ] || continue
        # shellcheck disable=SC2086
        line=$("$build/vess" score "$dir/Simulation.abf" "$dir/EventTimes.txt" $run 2>/dev/null |
               grep -m1 ' true  *[0-9]')
        set -- $line
        # "true T found F matched M recall ... precision ... F1 x"
        t=$2 f=$4 m=$6
        printf '%-16s %-6s true %3d found %3d matched %3d F1 %s\n' "$label" "$(basename "$dir")" \
            "$t" "$f" "$m" "${12}"
        pooled=$(echo "$pooled" | awk -v t="$t" -v f="$f" -v m="$m" '{print $1+t, $2+f, $3+m}')
    done
    echo "$pooled" | awk -v l="$label" '{p = $2 ? $3/$2 : 0; r = $1 ? $3/$1 : 0;
        printf "%-16s pooled true %3d found %3d matched %3d recall %.3f precision %.3f F1 %.3f\n",
        l, $1, $2, $3, r, p, (p + r) ? 2*p*r/(p + r) : 0}'
done
