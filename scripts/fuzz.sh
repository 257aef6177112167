#!/usr/bin/env bash
# Builds every libFuzzer target in fuzz/ with clang (ASan + UBSan) and runs
# each for SECONDS seconds on its corpus under build-fuzz/corpus/<target>.
# Seeds: small whole files made from the real ABF 1 recordings and the first
# 32 KiB of the ABF 2 ones beside the checkout (when present) for the
# readers of ABF headers, files made by our own writer, and the real and
# edge files of fuzz/seeds/<target>/. Corpora and crashes stay under build-fuzz/.
set -euo pipefail
seconds=${1:?usage: scripts/fuzz.sh SECONDS [TARGET...]}
shift || true
here=$(cd "$(dirname "$0")/.." && pwd)
build=${VESS_FUZZ_BUILD_DIR:-$here/build-fuzz}
jobs=${VESS_FUZZ_JOBS:-2}

CC=clang CXX=clang++ cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DVESS_BUILD_FUZZ=ON -DVESS_BUILD_GUI=OFF -DVESS_BUILD_TESTS=OFF -DVESS_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j"$jobs" --target fuzz_all vess

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for src in "$here"/fuzz/*.cpp; do targets+=("$(basename "$src" .cpp)"); done
fi

# Whole small files made from the real ABF 1 recordings: the header, the
# first blocks of samples and the tags, with the length and tag pointer
# rewritten, so that the fuzzer starts from files that reach every section.
seed_abf() {  # $1 = corpus folder, $2 = extra option of small_abf.py
  local corpus=$1 shared="$here/../shared/data" f
  if [ -d "$shared" ]; then
    while IFS= read -r -d '' f; do
      if [ "$(head -c 4 "$f")" = "ABF2" ]; then
        # ABF 2: the first 32 KiB reach every section (strings up to block
        # 35, samples from block 38); the header target only.
        if [ -z "${2:-}" ]; then head -c 32768 "$f" >"$corpus/real-$(basename "$f").head"; fi
      else
        python3 "$here/scripts/small_abf.py" "$f" "$corpus/real-$(basename "$f")" ${2:-} || true
      fi
    done < <(find "$shared" -name '*.abf' -print0)
  fi
  local tmp
  tmp=$(mktemp -d)
  "$build/vess" synth "$tmp/one.abf" --seconds 0.05 --rate 10000 --seed 1 >/dev/null
  "$build/vess" synth "$tmp/two.abf" --seconds 0.02 --rate 5000 --seed 2 --direction 1 >/dev/null
  cp "$tmp/one.abf" "$corpus/writer-one.abf"
  cp "$tmp/two.abf" "$corpus/writer-two.abf"
  rm -rf "$tmp"
}

status=0
for t in "${targets[@]}"; do
  corpus="$build/corpus/$t"
  artifacts="$build/artifacts/$t"
  mkdir -p "$corpus" "$artifacts"
  case "$t" in
    fuzz_abf_header | fuzz_tachogram_template) seed_abf "$corpus" ;;
    fuzz_detect) seed_abf "$corpus" --detect ;;
  esac
  if [ -d "$here/fuzz/seeds/$t" ]; then cp -r "$here/fuzz/seeds/$t/." "$corpus/"; fi
  dict=()
  if [ -f "$here/fuzz/$t.dict" ]; then dict=(-dict="$here/fuzz/$t.dict"); fi
  echo "== $t for ${seconds}s"
  # A run of more than 10 s on one input is a fault here (detection of one
  # screen takes milliseconds).
  if ! "$build/fuzz/$t" -max_total_time="$seconds" -rss_limit_mb=2048 -max_len=65536 -timeout=10 \
      "${dict[@]}" -artifact_prefix="$artifacts/" -print_final_stats=1 "$corpus" 2>"$build/$t.log"; then
    echo "!! $t found a problem; see $build/$t.log and $artifacts/"
    status=1
  fi
  grep -E "stat::number_of_executed_units|Done [0-9]+ runs" "$build/$t.log" | tail -2 || true
done
exit $status
