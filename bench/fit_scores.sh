#!/usr/bin/env bash
# Scores the default least-squares fit on real averages: every recording of
# the shared data is detected with the default parameters, the average of all
# its events (group 0, baseline adjusted) is taken over 1 to 4 blocks, and on
# the default fit range of vess fit each average is fitted with 1 to 3
# exponentials, with and without offset, by vess_fit_score against an
# exhaustive multi-start search.
#   bench/fit_scores.sh [BUILD_DIR] [DATA_DIR]
set -euo pipefail
build=${1:-build}
data=${2:-../shared/data}
if [[ ! -d "$data" ]]; then
  echo "no shared data at $data" >&2
  exit 0
fi
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
passed=0 cases=0
for abf in "$data"/abf1/*.abf "$data"/abf2/*.abf; do
  name=$(basename "$abf" .abf)
  ln -s "$(realpath "$abf")" "$tmp/$name.abf"
  "$build/vess" detect "$tmp/$name.abf" --out "$tmp/$name.EVT" --quiet >/dev/null 2>&1 || continue
  for blocks in 1 2 3 4; do
    "$build/vess" average "$tmp/$name.EVT" --group 0 --blocks "$blocks" --baseline \
      --csv "$tmp/avg.csv" >/dev/null 2>&1 || continue
    range=$({ "$build/vess" fit "$tmp/avg.csv" --exp 1 --json 2>/dev/null || true; } |
      python3 -c 'import json,sys; r=json.load(sys.stdin)["range"]; print("%r:%r" % (r["from ms"], r["to ms"]))') || continue
    read -r _ p c < <("$build/bench/vess_fit_score" csv "$tmp/avg.csv" "$range" | tail -1)
    echo "$name blocks $blocks range $range: $p of $c"
    passed=$((passed + p)) cases=$((cases + c))
  done
done
echo "real averages: $passed of $cases within 0.1 % of the best"
