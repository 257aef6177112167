#!/usr/bin/env bash
# Checks that two vess builds write the same event files, byte for byte, for
# template and deconvolution detection in both directions, on every ABF 1
# recording of ../shared/data/abf1 and on a 60-minute 20 kHz synthetic one
# (the one bench/speed_table.py makes; made here with `vess synth` when the
# folder given does not hold it). Saved settings fix the method's parameters
# (no suggestion from the recording): the defaults, as the speed table has
# them, and a short kernel with low thresholds, which finds events on the
# recordings where the defaults find none.
# Prints one line per run and exits non-zero when any file differs.
# Usage: bash bench/same_events.sh OTHER_VESS [THIS_VESS] [SYNTHETIC_FOLDER]
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
other=${1:?usage: same_events.sh OTHER_VESS [THIS_VESS] [SYNTHETIC_FOLDER]}
this=${2:-$here/build/vess}
tmp=$(mktemp -d /tmp/vess-same-events.XXXXXX)
trap 'rm -rf "$tmp"' EXIT
synthetic=${3:-$tmp}
long=$synthetic/synthetic-60min.abf
if [[ ! -f $long ]]; then
  HOME=$tmp "$this" synth "$long" --seconds 3600 --rate 20000 --seed 5 > /dev/null
fi
printf '[Analysis]\nDetectionMethod=threshold\nSuggestFromRecording=0\n' > "$tmp/default.ini"
printf '[Analysis]\nDetectionMethod=threshold\nSuggestFromRecording=0\nKernelRiseMs=0.3\nKernelDecayMs=3
DeconvolutionThreshold=2.5\nTemplateThreshold=2.5\n' > "$tmp/sensitive.ini"

files=("$here"/../shared/data/abf1/*.abf "$long")
differ=0
for file in "${files[@]}"; do
  for settings in default sensitive; do
  for method in template deconvolution; do
    for direction in -1 1; do
      for build in other this; do
        vess=$other
        [[ $build == this ]] && vess=$this
        HOME=$tmp "$vess" detect "$file" --quiet --settings "$tmp/$settings.ini" --method "$method" \
          --set "PeakDirection=$direction" --out "$tmp/$build.EVT" > /dev/null
      done
      if cmp -s "$tmp/other.EVT" "$tmp/this.EVT"; then verdict=same; else verdict=DIFFER; differ=1; fi
      printf '%-7s %-9s %-14s %2s %10s bytes  %s\n' "$verdict" "$settings" "$method" "$direction" \
        "$(stat -c %s "$tmp/this.EVT")" "$(basename "$file")"
    done
  done
  done
done
exit $differ
