#!/usr/bin/env bash
# Installs what is missing, builds, and starts the workbench on the bundled
# sample recording (extra arguments are passed to the program).
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
bash "$here/scripts/setup.sh"
bash "$here/scripts/build.sh"
build=${VESS_BUILD_DIR:-$here/build}
if [[ $# -eq 0 ]]; then set -- "$build/sample/sample.abf"; fi
exec "$build/vessantorium" "$@"
