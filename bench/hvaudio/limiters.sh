#!/bin/bash
# Plays the same far too loud programme, and tones 12 dB over full scale, through our limiter, ffmpeg's alimiter and
# the LSP project's limiter, and tells what comes out: loudness and true peak as ffmpeg's ebur128 measures them, crest
# factor, and what isn't the tone beside the tone (THD+N). All have the same ceiling, -0.1 dBFS, and else their own
# defaults. A tool that isn't installed is left out.
#
#   limiters.sh BUILD_FOLDER [SECONDS_OF_SOUND]
set -eu
tool=${1:?usage: limiters.sh BUILD_FOLDER [SECONDS_OF_SOUND]}/bin/limiters
seconds=${2:-60}
[ -x "$tool" ] || { echo "$tool isn't built: build the target limiters" >&2; exit 1; }
command -v ffmpeg >/dev/null || { echo "ffmpeg, which measures, isn't installed" >&2; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

limit() { # WAY IN OUT
    case $1 in
    none) cp "$2" "$3" ;;
    alimiter) ffmpeg -nostdin -loglevel error -y -i "$2" -af alimiter=limit=0.988553:level=0 -c:a pcm_f32le "$3" ;;
    *) "$tool" "$1" "$2" "$3" ;;
    esac
}
loudness() { # FILE: integrated loudness in LUFS, true peak in dBTP
    ffmpeg -nostdin -hide_banner -i "$1" -af ebur128=peak=true -f null - 2>&1 |
        awk '/Summary/ {s = 1} s && /I:/ {i = $2} s && /Peak:/ {p = $2} END {print i, p}'
}

ways=(none ours)
"$tool" programme "$work/hot.wav" "$seconds"
for way in lsp alimiter; do
    if limit $way "$work/hot.wav" "$work/try.wav" 2>"$work/said"; then ways+=($way); else echo "$way left out: $(cat "$work/said")"; fi
done
tones=(20 30 50 100 1000)
for hz in "${tones[@]}"; do "$tool" tone "$work/$hz.wav" 6 "$hz"; done

printf '%-10s %10s %12s %10s' "" LUFS "true peak" crest
for hz in "${tones[@]}"; do printf ' %12s' "THD+N $hz Hz"; done
echo
for way in "${ways[@]}"; do
    limit "$way" "$work/hot.wav" "$work/out.wav"
    printf '%-10s %10s %12s %10s' "$way" $(loudness "$work/out.wav") "$("$tool" crest "$work/out.wav")"
    for hz in "${tones[@]}"; do
        limit "$way" "$work/$hz.wav" "$work/out.wav"
        printf ' %10s %%' "$("$tool" thdn "$work/out.wav" "$hz")"
    done
    echo
done
