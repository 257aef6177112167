#!/usr/bin/env bash
# Makes the pictures of the user guide again with the program itself, on the
# offscreen platform, from a real recording beside the checkout, and checks
# that each stays under 300 KB. Look at each picture before committing it.
#
#   scripts/screenshots.sh [BUILD_DIR] [DATA_DIR]
#
# docs/screenshot-main.png: the main window after detecting the first screens
# of 171116sh_0020_saved.abf (spontaneous currents, voltage clamp) with a new
# installation's settings, its first event selected.
# docs/screenshot-group.png: the group analysis window with the average of
# the typical events of screens 2 to 20 (0.5 to 10 s: between the test
# pulses that open each sweep) and its fitted decay.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$here/build}
data=${2:-$here/../shared/data/abf1}
recording="$data/171116sh_0020_saved.abf"
[ -x "$build/vessantorium" ] || { echo "no $build/vessantorium: build it first" >&2; exit 1; }
[ -f "$recording" ] || { echo "no $recording: the real recordings are not beside the checkout" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# The program keeps its settings in its own folder: a copy in an empty folder
# runs as a new installation, whatever settings the build folder holds.
cp "$build/vessantorium" "$work/"

shoot() {  # shoot OUT.png [program options...]
    local out=$1
    shift
    QT_QPA_PLATFORM=offscreen "$work/vessantorium" --screenshot "$work/$out" "$@"
    local size
    size=$(stat -c %s "$work/$out")
    if [ "$size" -ge 300000 ]; then
        echo "$out is $size bytes, over 300 KB" >&2
        exit 1
    fi
    cp "$work/$out" "$here/docs/$out"
    echo "docs/$out: $size bytes"
}

shoot screenshot-main.png --screens 3 "$recording"
shoot screenshot-group.png --screens 19 --window group "$recording"
