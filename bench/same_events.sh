#!/usr/bin/env bash
# Checks that two vess builds write the same event files, byte for byte:
# every recording of the folders or files given, both peak directions, each
# method asked for ("default" is the run with no method and no saved
# settings, which suggests its settings from the recording first), and the
# event-free copy ("eventfree", written by the default run; the time of
# writing stamped in its header is not compared) when asked for.
# Saved settings without a suggestion are used for the named methods, as
# bench/speed_table.py does. Prints one line per difference and a count;
# exits 1 when any file differs or one build fails where the other does not.
# Usage: bash bench/same_events.sh BEFORE_VESS AFTER_VESS
#          [--method M]... [--set NAME=VALUE]... [--ini KEY=VALUE]... FILE_OR_FOLDER...
#   M: threshold, deconvolution, template, default, eventfree
#   (default: deconvolution default eventfree)
#   --ini adds a line to the [Analysis] section of the saved settings the
#   named methods run with, e.g. a short kernel and low thresholds, which find
#   events on the recordings where the defaults find none:
#   --ini KernelRiseMs=0.3 --ini KernelDecayMs=3 --ini DeconvolutionThreshold=2.5 --ini TemplateThreshold=2.5
# e.g. bash bench/same_events.sh /tmp/vess-main build/vess ../shared/data/abf1 /tmp/synthetic-60min.abf
set -uo pipefail
before=$1 after=$2
shift 2
methods=() sets=() ini=() inputs=()
while (($#)); do
  case $1 in
    --method) methods+=("$2"); shift 2 ;;
    --set) sets+=(--set "$2"); shift 2 ;;
    --ini) ini+=("$2"); shift 2 ;;
    *) inputs+=("$1"); shift ;;
  esac
done
((${#methods[@]})) || methods=(deconvolution default eventfree)
files=()
for i in "${inputs[@]}"; do
  if [[ -d $i ]]; then files+=("$i"/*.abf); else files+=("$i"); fi
done
tmp=$(mktemp -d /tmp/vess-same-events.XXXXXX)
trap 'rm -rf "$tmp"' EXIT
mkdir -p "$tmp/home"
export HOME=$tmp/home XDG_CONFIG_HOME=
printf '[Analysis]\nDetectionMethod=threshold\nSuggestFromRecording=0\n' > "$tmp/fixed.ini"
((${#ini[@]})) && printf '%s\n' "${ini[@]}" >> "$tmp/fixed.ini"

# Runs one build's command; its written file goes to $tmp/<build>.<ext>.
# Prints "failed" when the command failed.
written() {
  local build=$1 vess=$2 method=$3 file=$4 direction=$5
  local common=(--quiet "${sets[@]}" --set "PeakDirection=$direction")
  rm -f "$tmp/$build".*
  case $method in
    default) "$vess" detect "$file" "${common[@]}" --out "$tmp/$build.EVT" ;;
    eventfree) "$vess" eventfree "$file" "${sets[@]}" --set "PeakDirection=$direction" --out "$tmp/$build.abf" ;;
    *) "$vess" detect "$file" "${common[@]}" --settings "$tmp/fixed.ini" --method "$method" --out "$tmp/$build.EVT" ;;
  esac > /dev/null 2> "$tmp/$build.err" || echo failed
}

# The same bytes, but for the time of writing an event-free copy stamps in
# its header (bytes 21 to 28, counted from 1, in both ABF versions).
same() {
  [[ -f $1 && -f $2 ]] || return 1
  (($(stat -c %s "$1") == $(stat -c %s "$2"))) || return 1
  [[ -z $(cmp -l "$1" "$2" | awk '$1 < 21 || $1 > 28') ]]
}

checked=0 differ=0
for file in "${files[@]}"; do
  for direction in -1 1; do
    for method in "${methods[@]}"; do
      ext=EVT
      [[ $method == eventfree ]] && ext=abf
      a=$(written before "$before" "$method" "$file" "$direction")
      mv "$tmp/before.$ext" "$tmp/kept.$ext" 2> /dev/null
      b=$(written after "$after" "$method" "$file" "$direction")
      checked=$((checked + 1))
      if [[ $a != "$b" ]]; then
        echo "DIFFERS (one build failed): $method direction $direction $file"
        differ=$((differ + 1))
      elif [[ -z $a ]] && ! same "$tmp/kept.$ext" "$tmp/after.$ext"; then
        echo "DIFFERS: $method direction $direction $file"
        differ=$((differ + 1))
      fi
      rm -f "$tmp/kept.$ext"
    done
  done
done
echo "$checked runs compared, $differ differ"
((differ == 0))
