#!/usr/bin/env bash
# Configures and builds into build/ (or $VESS_BUILD_DIR).
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${VESS_BUILD_DIR:-$here/build}
cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
cmake --build "$build" --parallel "$(nproc)"
