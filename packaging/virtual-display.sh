# shellcheck shell=bash
# Sourced by ./run: a display for a machine that has none, to be looked at with a VNC viewer.
#
# The X server and the VNC server get sessions of their own, so that Ctrl-C in the terminal reaches the unit and
# not them: it needs its display until its orderly exit is over.

virtual_display_pids=()

# virtual_display_await FILE PATTERN PID: prints what the sed pattern finds in the file as soon as it does; returns 1
# after 20 s, or when the process has ended without it.
virtual_display_await() {
    local found tries
    for ((tries = 0; tries < 200; tries++)); do
        found=$(sed -n "$2" "$1")
        if [ -n "$found" ]; then
            echo "$found"
            return 0
        fi
        kill -0 "$3" 2>/dev/null || return 1
        sleep 0.1
    done
    return 1
}

# virtual_display_start WIDTHxHEIGHT: sets DISPLAY, and virtual_display_address to where a viewer finds it.
# Returns 1 with a message when one of the servers doesn't come up.
virtual_display_start() {
    local number port scratch
    scratch=$(mktemp -d) || return 1

    setsid Xvfb -displayfd 3 -screen 0 "${1}x24" -nolisten tcp 3>"$scratch/number" 2>"$scratch/xvfb.log" &
    virtual_display_pids+=($!)
    if ! number=$(virtual_display_await "$scratch/number" 's/^\([0-9]\{1,\}\)$/\1/p' $!); then
        echo "the virtual display did not start: $(tail -n 3 "$scratch/xvfb.log")" >&2
        rm -rf "$scratch"
        return 1
    fi
    export DISPLAY=":$number"
    unset WAYLAND_DISPLAY

    # Bound to the loopback address only: there is no password.
    setsid x11vnc -display "$DISPLAY" -localhost -no6 -autoport 5900 -nopw -forever -shared -quiet \
        >"$scratch/port" 2>"$scratch/x11vnc.log" &
    virtual_display_pids+=($!)
    if ! port=$(virtual_display_await "$scratch/port" 's/^PORT=//p' $!); then
        echo "the VNC server did not start: $(tail -n 3 "$scratch/x11vnc.log")" >&2
        rm -rf "$scratch"
        return 1
    fi
    # shellcheck disable=SC2034  # for the caller
    virtual_display_address="127.0.0.1:$port"
    rm -rf "$scratch"
}

# Ends both servers, newest first.
virtual_display_stop() {
    local i
    for ((i = ${#virtual_display_pids[@]} - 1; i >= 0; i--)); do
        kill "${virtual_display_pids[i]}" 2>/dev/null || true
        wait "${virtual_display_pids[i]}" 2>/dev/null || true
    done
    virtual_display_pids=()
}
