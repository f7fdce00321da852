#!/usr/bin/env bash
# What starting the unit and opening its pages cost, in instructions: times on a shared machine mean little.
#
#     bench/instructions.sh [folder of headunit]      default: build/release/bin
#
# Release build, fresh settings file, no sound output, no display server (offscreen), English. Counted by valgrind's
# callgrind in all threads, from exec to the step named. Memory (RSS) is read without it. Asserts nothing.
set -euo pipefail
root=$(dirname "$(dirname "$(readlink -f "$0")")")
bin=${1:-$root/build/release/bin}
for program in headunit page_steps smallest_start; do
    [ -x "$bin/$program" ] || { echo "$bin/$program is not built" >&2; exit 1; }
done
command -v valgrind >/dev/null || { echo "valgrind is not installed" >&2; exit 1; }
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
chmod 0700 "$scratch"
export QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR="$scratch" HOME="$scratch" LC_ALL=C

# wait_for LINE FILE PID: until the program has written the line.
wait_for() {
    while ! grep -q -- "$1" "$2"; do
        kill -0 "$3" 2>/dev/null || { echo "\"$1\" was not reached:" >&2; cat "$2" >&2; exit 1; }
        sleep 0.1
    done
}

# count FUNCTION PROGRAM...: counts dumped before each call of the function, in files $scratch/counts.N.
count() {
    local function=$1
    shift
    rm -f "$scratch"/counts.* "$scratch"/settings.db*
    valgrind --tool=callgrind --callgrind-out-file="$scratch/counts" --dump-before="$function" "$@"
}

# The counts of dumps made so far, one a line, in their order; what came after the last mark isn't among them.
counts() {
    local n
    for ((n = 1; ; n++)); do
        [ -e "$scratch/counts.$n" ] || return 0
        grep -q 'Trigger: --dump-before' "$scratch/counts.$n" || return 0
        awk '/^(totals|summary):/ { print $2; exit }' "$scratch/counts.$n"
    done
}

row() { awk -v name="$1" -v n="$2" 'BEGIN { printf "  %-34s %8.1f million\n", name, n / 1e6 }'; }
sum() { awk '{ s += $1 } END { printf "%.0f\n", s }'; }

echo "start, exec to first painted frame:"
count 'instructionsMark' "$bin/smallest_start" >"$scratch/log" 2>&1
smallest=$(counts | sum)
count 'headunit::StartupTrace::reached*' "$bin/headunit" --settings "$scratch/settings.db" --output none --page 0 \
    --trace-startup >"$scratch/log" 2>&1 &
unit=$!
wait_for 'window-painted' "$scratch/log" "$unit"
kill -TERM "$unit"
wait "$unit" || true
start=$(counts | sum)
row "one text and one picture" "$smallest"
row "unit at page 0" "$start"
awk -v a="$start" -v b="$smallest" 'BEGIN { printf "  %-34s %8.2f\n", "ratio", a / b }'

echo "opening a page by its tab:"
count 'instructionsMark' "$bin/page_steps" "$bin/../lib/headunit" "$scratch/settings.db" \
    >"$scratch/steps" 2>"$scratch/log" || { cat "$scratch/log" >&2; exit 1; }
counts >"$scratch/all"
paste -d' ' "$scratch/steps" "$scratch/all" >"$scratch/named"
while read -r step n; do
    case $step in
        *-first) row "${step%-first}, first time" "$n" ;;
        *-again) row "${step%-again}, again" "$n" ;;
        finger-steps-*) row "one finger step on the equalizer" $((n / ${step##*-})) ;;
    esac
done <"$scratch/named"

echo "memory with a page open (RSS):"
for page in 0 1 2 3 4 5; do
    rm -f "$scratch"/settings.db*
    : >"$scratch/log"
    "$bin/headunit" --settings "$scratch/settings.db" --output none --page "$page" --trace-startup \
        >"$scratch/log" 2>&1 &
    unit=$!
    wait_for 'window-painted' "$scratch/log" "$unit"
    awk -v page="$page" '/^VmRSS:/ { printf "  %-34s %8.1f MB\n", "page " page, $2 / 1000 }' "/proc/$unit/status"
    kill -TERM "$unit"
    wait "$unit" || true
done
