#!/usr/bin/env bash
# A project in a folder whose name means something to every tool of the build is built by the path that ./run and ./test
# take. First argument: the source tree.
set -euo pipefail
source "$1/tools/plainpath.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CACHE_HOME=$work/cache

fail() {
    echo "$1" >&2
    exit 1
}

for plain in /home/somebody/audiosetting '/home/some body/audio (1)' "/home/O'Brien/ä"; do
    [ "$(plain_path "$plain")" = "$plain" ] || fail "'$plain' needs no link"
done
for sign in '$' ';' '"' '#' '\' ':' '*' '?' '[' ']'; do
    [ "$(plain_path "/home/a${sign}b")" != "/home/a${sign}b" ] || fail "'$sign' needs a link"
done
if XDG_CACHE_HOME="$work/a;b" plain_path '/home/a;b' 2>/dev/null; then
    fail "a link in a place as bad is none"
fi

folder=$work/'a $HOME;b"c#d'
mkdir "$folder"
cat >"$folder/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(plain LANGUAGES CXX)
file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/*.cpp)
add_executable(plain ${sources})
target_compile_definitions(plain PRIVATE WHERE="${CMAKE_SOURCE_DIR}")
END
echo 'int main() { return sizeof(WHERE) > 1 ? 0 : 1; }' >"$folder/main.cpp"
path=$(plain_path "$folder")
[ "$(readlink -f "$path")" = "$folder" ] || fail "the link leads elsewhere"
[ "$(plain_path "$folder")" = "$path" ] || fail "the link changes"
cmake -G Ninja -S "$path" -B "$path/build" >"$work/log" 2>&1 || fail "$(cat "$work/log")"
cmake --build "$path/build" >"$work/log" 2>&1 || fail "$(cat "$work/log")"
"$folder/build/plain"
