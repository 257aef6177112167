#!/bin/sh
# A check of detection on real recordings as a new user runs it (no settings
# file, no options): vess check adds 200 events of the recording's own kernel
# at 0.5 to 10 noise SDs to a copy of each recording of spontaneous currents
# and detects on it. Where human annotators agree (taken here as events of
# at least 3 noise SDs) it prints recall, an F1 of the added events (precision
# = found / (found + false detections caused by the added events)) and, apart,
# the false events per minute of the noise (the copy turned upside down: an
# upper estimate on recordings rich in events, whose turned decays count;
# marked * when less than a minute of event-free trace measured it).
#
#   scripts/check_real.sh [BUILD_DIR] [DATA_DIR] [EXTRA vess check OPTIONS]
set -eu
build=${1:-build}
data=${2:-../shared/data/abf1}
if [ $# -ge 2 ]; then shift 2; else shift $#; fi
[ -d "$data" ] || { echo "no real recordings in $data" >&2; exit 1; }
# file:channel of the recordings of spontaneous currents (05210017_vc_abf1
# and 171116sh with a test pulse per sweep, 130618-1-12 with voltage steps;
# the others hold no currents to speak of).
for item in 171116sh_0020_saved.abf:0 19911002-2.abf:1 f1.abf:0 130618-1-12.abf:0 05210017_vc_abf1.abf:0; do
    file=${item%:*} channel=${item#*:}
    "$build/vess" check "$data/$file" --channel "$channel" --json "$@" 2>/dev/null |
    python3 -c '
import json, sys
j = json.load(sys.stdin)
sd = j["noise_sd"]
big = [b for b in j["bins"] if b["from"] >= 3 * sd * 0.999]
added = sum(b["added"] for b in big)
found = sum(b["found"] for b in big)
false = j["false_positives"]
r = found / added if added else 0
p = found / (found + false) if found + false else 0
f1 = 2 * p * r / (p + r) if p + r else 0
r90 = j["recall_90_amplitude"]
rate, mark = j["false_per_minute"], ""
if rate is None:
    seconds = j["inverted_seconds"]
    rate, mark = (j["inverted_detections"] * 60 / seconds if seconds else 0), "*"
print("%-30s ch %s  noise %.3g %s  recall(>=3 SD) %.3f  recall 90%% from %s SD  false/min %.1f%s  F1 %.3f"
      % (sys.argv[1], sys.argv[2], sd, j["units"], r, "%.2f" % (r90 / sd) if r90 else "-",
         rate, mark, f1))
' "$file" "$channel" || echo "$file ch $channel: not checked"
done
