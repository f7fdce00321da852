#!/usr/bin/env bash
# Runs clang-tidy over what ships, from the root of the tree: tools/tidy.sh BUILD, where BUILD was built with clang.
# Nearly all of its time goes into Qt's headers, so the files of a folder are looked at together; where two of them use one
# name for two things, in halves.
set -euo pipefail
build=$1
scratch=$PWD/$build/tidy # below the root, or .clang-tidy would not be found
export scratch
rm -rf "$scratch"
mkdir -p "$scratch"

# "file<tab>flags", a line for each file of the product.
sed -n -e 's/^  "command": "[^ ]* \(.*\) -o [^ ]* -c .*",$/\1/p' -e 's/^  "file": "\(.*\)".*$/\1/p' "$build/compile_commands.json" |
    sed -e 's/\\"/"/g' -e 's/\\\\/\\/g' |
    while read -r flags && read -r file; do
        printf '%s\t%s\n' "${file#"$PWD/"}" "$flags"
    done | grep -E '^(M5QX|mainwindow|soundcheck|platform|headunit)/' >"$scratch/files"

# tidy_files FOLDER FILE...: silent when there is nothing to say.
tidy_files() {
    local folder=$1 bundle flags file
    shift
    bundle=$(mktemp "$scratch/bundleXXXXXX.cpp")
    for file in "$@"; do
        echo "#include \"$PWD/$file\""
    done >"$bundle"
    eval "flags=($(sed -n "s,^$1\t,,p" "$scratch/files" | head -n 1))"
    if (($# > 1)) && ! clang++ -fsyntax-only "${flags[@]}" "$bundle" 2>/dev/null; then
        local half=$(($# / 2)) status=0
        tidy_files "$folder" "${@:1:half}" || status=1
        tidy_files "$folder" "${@:half+1}" || status=1
        return $status
    fi
    clang-tidy --quiet --header-filter="^${PWD//[.+]/.}/(M5QX|mainwindow|soundcheck|platform|headunit)/" "$bundle" \
        -- "${flags[@]}" >"$bundle.log" 2>&1 && return 0
    grep -v ' warnings\? generated\|^Suppressed\|^Use -header-filter' "$bundle.log"
    return 1
}

# tidy_folder FOLDER
tidy_folder() {
    local files
    mapfile -t files < <(cut -f 1 "$scratch/files" | grep -E "^$1/[^/]+$" | sort -u)
    tidy_files "$1" "${files[@]}"
}
export -f tidy_files tidy_folder

cut -f 1 "$scratch/files" | sed 's,/[^/]*$,,' | sort -u | xargs -P "$(nproc)" -I{} bash -c 'tidy_folder "$1"' tidy {}
