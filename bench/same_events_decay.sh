#!/usr/bin/env bash
# Whether two builds of vess detect the same events, byte for byte: every
# recording of ../shared/data/abf1/ and a 60-minute 20 kHz synthetic one,
# methods threshold, template and deconvolution, peaks in either direction.
# The event files (.EVT) of the two builds are compared with cmp; a line per
# run says "same" or "DIFFERENT", and the exit status is the count of
# different runs (0 when all are the same).
# Usage: bash bench/same_events_decay.sh BEFORE_VESS AFTER_VESS [SYNTHETIC.abf]
#   (the synthetic recording is made with `vess synth --seed 5` when not given)
set -uo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
before=${1:?usage: same_events_decay.sh BEFORE_VESS AFTER_VESS [SYNTHETIC.abf]}
after=${2:?usage: same_events_decay.sh BEFORE_VESS AFTER_VESS [SYNTHETIC.abf]}
tmp=$(mktemp -d /tmp/vess-same-events.XXXXXX)
trap 'rm -rf "$tmp"' EXIT
mkdir "$tmp/home"
export HOME=$tmp/home XDG_CONFIG_HOME=
synthetic=${3:-$tmp/synthetic-60min.abf}
[[ -f $synthetic ]] || "$after" synth "$synthetic" --seconds 3600 --rate 20000 --seed 5 > /dev/null
# Saved settings that suggest nothing from the recording: the parameters are
# the defaults on every file.
printf '[Analysis]\nDetectionMethod=threshold\nSuggestFromRecording=0\n' > "$tmp/fixed.ini"

different=0
for file in "$here"/../shared/data/abf1/*.abf "$synthetic"; do
  for method in threshold template deconvolution; do
    for direction in -1 1; do
      for build in before after; do
        vess=$before; [[ $build == after ]] && vess=$after
        "$vess" detect "$file" --quiet --settings "$tmp/fixed.ini" --method "$method" \
          --set "PeakDirection=$direction" --out "$tmp/$build.EVT" > /dev/null 2> "$tmp/$build.err"
        echo "exit $?" >> "$tmp/$build.err"
      done
      name="$(basename "$file") $method $direction"
      if cmp -s "$tmp/before.err" "$tmp/after.err" &&
        { [[ ! -f $tmp/before.EVT && ! -f $tmp/after.EVT ]] || cmp -s "$tmp/before.EVT" "$tmp/after.EVT"; }; then
        echo "same      $name ($(stat -c %s "$tmp/after.EVT" 2> /dev/null || echo no) bytes)"
      else
        echo "DIFFERENT $name"
        different=$((different + 1))
      fi
      rm -f "$tmp/before.EVT" "$tmp/after.EVT"
    done
  done
done
echo "$different different"
exit "$different"
