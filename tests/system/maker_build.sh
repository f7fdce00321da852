#!/usr/bin/env bash
# What a vehicle maker does: platform libraries installed under a prefix of his own, the plug-in built against them and nothing
# else of this tree, and a head unit that loads the result.
# maker_build.sh SOURCE BUILD: an empty exit status says that it works.
set -euo pipefail
source=$1 build=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >"$work/log" || { cat "$work/log"; exit 1; }
[ -f "$work/prefix/include/audiosetting/common/appplugin.h" ] || { echo "the interface's headers were not installed"; exit 1; }
rm -r "$work/prefix/lib/headunit"

cmake -S "$source" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0 \
    -DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DAUDIOSETTING_PLATFORM="$work/prefix" >"$work/log" || { cat "$work/log"; exit 1; }
cmake --build "$work/build" --target audiosetting >"$work/log" || { cat "$work/log"; exit 1; }

plugin=$work/build/lib/headunit/libaudiosetting.so
needed=$(readelf -d "$plugin" | sed -n 's/.*NEEDED.*\[\(.*\)\]/\1/p')
for library in libcommon libhvaudioservice libaudiosettingicon; do
    grep -q "^$library\.so" <<<"$needed" || { echo "$library is not needed by the plug-in"; exit 1; }
done
if grep -q '^libhvaudio\.so' <<<"$needed"; then
    echo "the plug-in links the sound processor, which the interface hides"
    exit 1
fi

QT_QPA_PLATFORM=offscreen "$work/prefix/bin/headunit" --plugins "$work/build/lib/headunit" --settings "$work/settings.db" \
    --tour "$work/tour" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
[ -s "$work/tour/launcher.png" ] || { echo "the tour saved no picture"; exit 1; }
