#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
bash "$here/scripts/setup.sh"
bash "$here/scripts/build.sh"
build=${VESS_BUILD_DIR:-$here/build}
export QT_QPA_PLATFORM=offscreen
cd "$build"
ctest --output-on-failure --parallel "$(nproc)" --timeout 600
