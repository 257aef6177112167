#!/usr/bin/env bash
# Files per second of vess batch over the shared real recordings with one
# worker and with two, in one run; prints both timings and the ratio.
# Usage: bash bench/batch_speed.sh [build/vess] [../shared/data]
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
vess=${1:-$here/build/vess}
data=${2:-$here/../shared/data}
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
files=("$data"/abf1 "$data"/abf2)
count=$({ "$vess" batch "${files[@]}" --jobs 1 --quiet --out-dir "$out/count" || true; } | tail -n +2 | wc -l)
for jobs in 1 2; do
  /usr/bin/time -f "%e %M" -o "$out/time$jobs" \
    "$vess" batch "${files[@]}" --jobs "$jobs" --quiet --out-dir "$out/$jobs" --summary "$out/$jobs.csv" || true
  # time puts "Command exited with non-zero status" first when a row failed.
  read -r seconds kb < <(tail -n 1 "$out/time$jobs")
  echo "$seconds" > "$out/seconds$jobs"
  echo "jobs $jobs: $count files in $seconds s ($(echo "$count / $seconds" | bc -l | cut -c1-6) files/s), max RSS $kb KB"
done
echo "speed-up 2 workers / 1: $(echo "$(cat "$out/seconds1") / $(cat "$out/seconds2")" | bc -l | cut -c1-5)"
