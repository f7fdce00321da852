#!/usr/bin/env bash
# Measures the sound from outside: renders test signals through `headunit --render` with settings as the pages store
# them, and analyses the files with python3-scipy (measure.py), which shares no code with what it measures. Prints one
# table; docs/sound.md has its figures from here. Asserts nothing.
#
#     bench/hvaudio/measure.sh [BUILD_FOLDER [NAME...]]      default: build/release, every row
#
# NAME is the first word of the rows that are wanted.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
build=${1:-$here/../../build/release}
[ $# -eq 0 ] || shift
[ -x "$build/bin/headunit" ] || { echo "$build/bin/headunit is not built" >&2; exit 1; }
for python in python3 /usr/bin/python3; do
    if "$python" -c 'import scipy.signal' 2>/dev/null; then
        export QT_QPA_PLATFORM=offscreen LC_ALL=C PYTHONDONTWRITEBYTECODE=1
        exec "$python" "$here/measure.py" "$build/bin/headunit" "$@"
    fi
done
echo "python3-scipy, which analyses, isn't installed" >&2
exit 1
