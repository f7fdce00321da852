#!/usr/bin/env bash
# How often the idle unit wakes up: a page open, the inspector shut, nothing plays.
#
#     bench/headunit/wakeups.sh [folder of headunit]      default: build/release/bin
#
# Counted for 10 s, from 10 s after the page was painted: how often each thread of the unit gave up the processor by itself.
# Without a sound output, and linked to a device of a PipeWire of its own, where pipewire, wireplumber, pw-cli and
# dbus-run-session are installed. The status bar's clock wakes the unit once a minute. Asserts nothing.
set -euo pipefail
root=$(dirname "$(dirname "$(dirname "$(readlink -f "$0")")")")
headunit=${1:-$root/build/release/bin}/headunit
[ -x "$headunit" ] || { echo "$headunit is not built" >&2; exit 1; }
if [ "${2:-}" != "--in-session" ]; then
    scratch=$(mktemp -d)
    trap 'rm -rf "$scratch"' EXIT
    chmod 0700 "$scratch"
    export scratch QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR="$scratch" HOME="$scratch" LC_ALL=C
fi

sleeps() { cat /proc/"$1"/task/*/status | awk '/^voluntary_ctxt/ { s += $2 } END { print s }'; }

# idle NAME OUTPUT COMMAND: the unit with that output; the command, run 10 s after the first painted page, says whether it counts.
idle() {
    local unit before
    rm -f "$scratch"/settings.db*
    : >"$scratch/log"
    "$headunit" --settings "$scratch/settings.db" --output "$2" --page 0 --trace-startup >"$scratch/log" 2>&1 &
    unit=$!
    while ! grep -q window-painted "$scratch/log"; do
        kill -0 "$unit" 2>/dev/null || { cat "$scratch/log" >&2; exit 1; }
        sleep 0.1
    done
    sleep 10
    $3 || { echo "$1: the unit isn't linked" >&2; kill -TERM "$unit"; exit 1; }
    before=$(sleeps "$unit")
    sleep 10
    printf '  %-34s %8d in 10 s\n' "$1" $(($(sleeps "$unit") - before))
    kill -TERM "$unit"
    wait "$unit" || true
}

isLinked() { pw-link -l | grep 'headunit-output:' >/dev/null; }

if [ "${2:-}" = "--in-session" ]; then
    manager=
    pipewire 2>"$scratch/pipewire" & daemon=$!
    trap 'kill $daemon $manager' EXIT
    sleep 1
    wireplumber 2>"$scratch/wireplumber" & manager=$!
    sleep 2
    pw-cli create-node adapter '{ factory.name = support.null-audio-sink, node.name = device, media.class = Audio/Sink,
        audio.position = "FL,FR", object.linger = true }' >/dev/null
    idle "linked to a PipeWire device" pipewire isLinked
    exit 0
fi

echo "wake-ups of the idle unit:"
idle "no sound output" none true
for program in pipewire wireplumber pw-cli pw-link dbus-run-session; do
    command -v "$program" >/dev/null || { echo "  $program is not installed: no figure with PipeWire"; exit 0; }
done
dbus-run-session -- "$0" "$(dirname "$headunit")" --in-session
