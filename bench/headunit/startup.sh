#!/usr/bin/env bash
# Start-up time of the shell and of the plug-in, to the first painted frame, and memory after the start.
#
#     bench/headunit/startup.sh [runs] [folder of headunit]      default: 20 build/release/bin
#
# Each run is a fresh process on a fresh settings file, without a display server's part in it (offscreen), files
# warm. Times are medians with the fastest and the slowest run, in milliseconds since exec. Memory is read when the
# last frame has been painted: what the process holds (RSS), and that with shared pages divided among their users
# (PSS).
set -euo pipefail
root=$(dirname "$(dirname "$(dirname "$(readlink -f "$0")")")")
runs=${1:-20}
headunit=${2:-$root/build/release/bin}/headunit
[ -x "$headunit" ] || { echo "$headunit is not built; ./run builds it" >&2; exit 1; }
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR="$scratch" LC_ALL=C
chmod 0700 "$scratch"

# measure LAST-STEP OPTIONS...: one run until that step; adds "step ms" lines to times, "name kB" lines to memory.
measure() {
    local last=$1 started line at unit
    shift
    rm -f "$scratch/settings.db"
    started=${EPOCHREALTIME/./}
    coproc UNIT { exec "$headunit" --settings "$scratch/settings.db" --trace-startup "$@" 2>>"$scratch/errors"; }
    unit=$UNIT_PID
    at=
    while read -r -t 20 line <&"${UNIT[0]}"; do
        case $line in
            startup-main-at-us*) at=$((${line#* } - started)) ;;
            startup\ *)
                read -r _ ms step <<<"$line"
                awk -v ms="$ms" -v at="$at" -v step="$step" 'BEGIN { printf "%s %.1f\n", step, ms + at / 1000 }' \
                    >>"$scratch/times"
                [ "$step" != "$last" ] || break
                ;;
        esac
    done
    [ "${step:-}" = "$last" ] || { echo "\"$last\" was not reached:" >&2; cat "$scratch/errors" >&2; exit 1; }
    awk '/^(Rss|Pss):/ { print $1, $2 }' "/proc/$unit/smaps_rollup" >>"$scratch/memory"
    kill -TERM "$unit"
    wait "$unit" || { echo "the unit ended with $?" >&2; exit 1; }
}

# report UNIT FILE: median, least and most of each name in the file, in the order of its first lines.
report() {
    awk '!seen[$1]++ { print $1 }' "$2" | while read -r name; do
        awk -v name="$name" '$1 == name { print $2 }' "$2" | sort -n |
            awk -v name="$name" -v unit="$1" '{ v[NR] = $1 }
                END { printf "  %-20s %9.1f %s   (%.1f ... %.1f)\n", name, v[int((NR + 1) / 2)], unit, v[1], v[NR] }'
    done
}

run_all() { # title, last step, options...
    local title=$1 i
    shift
    : >"$scratch/times"
    : >"$scratch/memory"
    for ((i = 0; i < runs; i++)); do measure "$@"; done
    echo "$title, $runs runs:"
    report ms "$scratch/times"
    report kB "$scratch/memory"
}

measure launcher-painted # warms the files
run_all "launcher" launcher-painted
for page in 0 1 2 3 4 5; do
    run_all "page $page opened at the start" window-painted --page "$page" >"$scratch/page"
    if [ "$page" = 1 ]; then cat "$scratch/page"; else
        echo "page $page:"
        grep -E '^  (window-|Rss|Pss)' "$scratch/page"
    fi
done
