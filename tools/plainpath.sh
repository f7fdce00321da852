# shellcheck shell=bash
# Sourced by ./run and ./test: a path to the checkout that CMake, Ninja and the compilers can take, wherever it lies.

# plain_path FOLDER: prints the folder, or a link to it where its path has signs that mean something else in a build:
# to CMake a list or a string, to Ninja or make a variable or a comment, to the loader the end of a path, to a glob a
# pattern. CMake alone fails on some of these with any project. The link stays, since what is built names it.
# Returns 1 with a message when there is no place for the link.
plain_path() {
    local special='[][;"$#\\:*?]' links link
    if [[ ! $1 =~ $special ]]; then
        printf '%s\n' "$1"
        return 0
    fi
    links=${XDG_CACHE_HOME:-${HOME:-}/.cache}/audiosetting/checkouts
    link=$links/$(printf '%s' "$1" | sha256sum | cut -c 1-16)
    if [[ $links =~ $special ]] || ! (umask 077 && mkdir -p "$links" && ln -sfn "$1" "$link"); then
        echo "the path of this checkout can't be built in, and no link to it can be made in $links: $1" >&2
        return 1
    fi
    printf '%s\n' "$link"
}
