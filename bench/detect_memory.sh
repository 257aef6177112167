#!/usr/bin/env bash
# Peak memory and wall time of whole-file deconvolution detection on 10- and
# 60-minute 20 kHz synthetic recordings, in one run:
#  - peak RSS of vess detect over that of vess info on the same file (what
#    opening the file costs), and of the 60-minute file over the 10-minute
#    one (1 when memory is flat in the file's length);
#  - wall time of vess detect over vess info --scan (one plain read of every
#    sample), the best of three runs each.
# Each length is made twice: with the synthesiser's 5 events a second, and
# with almost none (0.01 a second), which separates what the samples cost
# from what the events found cost (they are kept: they are the result).
# The recordings go to a temporary folder under /tmp and are deleted after.
# Usage: bash bench/detect_memory.sh [build/vess] [minutes ...]
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
vess=${1:-$here/build/vess}
shift || true
if (($#)); then lengths=("$@"); else lengths=(10 60); fi
tmp=$(mktemp -d /tmp/vess-detect-memory.XXXXXX)
trap 'rm -rf "$tmp"' EXIT

# Runs a command three times; prints the best wall time (s) and the largest
# peak RSS (KB).
measure() {
  local best="" rss=0 s kb
  for _ in 1 2 3; do
    /usr/bin/time -f "%e %M" -o "$tmp/time" "$@" > /dev/null 2> /dev/null
    read -r s kb < <(tail -n 1 "$tmp/time")
    if [[ -z $best ]] || (( $(echo "$s < $best" | bc -l) )); then best=$s; fi
    (( kb > rss )) && rss=$kb
  done
  echo "$best $rss"
}

ratio() { echo "scale=3; $1 / $2" | bc -l | sed 's/^\./0./'; }

declare -A detectRss
printf "%8s %8s %10s %10s %10s %10s %10s %12s %12s\n" minutes events/s info_KB scan_KB detect_KB scan_s \
  detect_s "RSS det/inf" "time det/scan"
for rate in 5 0.01; do
  for minutes in "${lengths[@]}"; do
    file="$tmp/synthetic-$minutes.abf"
    "$vess" synth "$file" --seconds $((minutes * 60)) --rate 20000 --seed 5 --rate-of-events "$rate" > /dev/null
    read -r _ infoKb < <(measure "$vess" info "$file")
    read -r scanS scanKb < <(measure "$vess" info "$file" --scan)
    read -r detectS detectKb < <(measure "$vess" detect "$file" --method deconvolution --quiet)
    detectRss[$rate-$minutes]=$detectKb
    printf "%8s %8s %10s %10s %10s %10s %10s %12s %12s\n" "$minutes" "$rate" "$infoKb" "$scanKb" \
      "$detectKb" "$scanS" "$detectS" "$(ratio "$detectKb" "$infoKb")" "$(ratio "$detectS" "$scanS")"
    rm -f "$file" "${file%.abf}_events.csv"
  done
done
if (( ${#lengths[@]} > 1 )); then
  first=${lengths[0]} last=${lengths[-1]}
  for rate in 5 0.01; do
    echo "peak RSS of detect at $rate events/s, $last min over $first min:" \
      "$(ratio "${detectRss[$rate-$last]}" "${detectRss[$rate-$first]}")"
  done
fi
