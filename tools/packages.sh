# shellcheck shell=bash
# Sourced by ./run and ./test: sees to it that the Debian packages of a list are installed.
# Only apt is asked, and only when something is missing; then it is said what, and why it takes a moment.

# packages_listed FILE: the names in it, one a line, without comments.
packages_listed() {
    sed -e 's/#.*//' -e 's/[[:space:]]//g' -e '/^$/d' "$1"
}

# packages_missing FILE: those of them that are not installed, one a line.
packages_missing() {
    packages_listed "$1" | sort >"$packages_tmp/wanted"
    # shellcheck disable=SC2016  # dpkg-query expands the format
    packages_listed "$1" | xargs -r dpkg-query -W -f '${db:Status-Status} ${Package}\n' 2>/dev/null |
        sed -n 's/^installed //p' | sort -u >"$packages_tmp/installed"
    comm -23 "$packages_tmp/wanted" "$packages_tmp/installed"
}

# packages_install FILE: installs what is missing. Silent when nothing is. Returns 1 when that failed; on a system
# without apt it names the packages and returns 0, for the names may differ there and the build tells what it lacks.
packages_install() {
    local list=$1 missing as_root=() packages_tmp
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        echo "no apt here; the build needs what these Debian packages hold: $(packages_listed "$list" | xargs)" >&2
        return 0
    fi
    packages_tmp=$(mktemp -d) || return 1
    missing=$(packages_missing "$list" | xargs)
    rm -rf "$packages_tmp"
    [ -n "$missing" ] || return 0

    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "missing packages and no sudo; as root: apt-get install $missing" >&2
            return 1
        fi
        as_root=(sudo)
    fi
    echo "installing with apt-get: $missing" >&2
    # stdout stays free for the program's own output.
    # shellcheck disable=SC2086  # one word a package
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive sh -c '
        apt-get -qq update && apt-get -qq install -y --no-install-recommends "$@"' sh $missing >&2 && return 0
    echo "apt-get could not install: $missing" >&2
    return 1
}
