#!/usr/bin/env bash
# Builds everything with AddressSanitizer and UndefinedBehaviorSanitizer in
# build-sanitize/ (or $VESS_SANITIZE_BUILD_DIR) and runs the test suite there.
# Arguments are passed to ctest, e.g. scripts/sanitize.sh -R 'test_recording'
# to run only the core tests (the whole suite is slow on two cores).
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${VESS_SANITIZE_BUILD_DIR:-$here/build-sanitize}
flags="-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer"
launcher=()
if command -v ccache >/dev/null; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DVESS_BUILD_BENCH=OFF \
  -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined" \
  "${launcher[@]}" >/dev/null
cmake --build "$build" --parallel "$(nproc)"
cd "$build"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1
QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j"$(nproc)" "$@"
