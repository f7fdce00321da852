#!/bin/bash
# Times the sound processor beside ffmpeg, sox, the LSP LADSPA plug-ins and a plain double chain, all running the same
# chain over the same pink noise: user + system time of whole processes, one thread, interleaved, medians; the same
# tool's run without the chain is taken off, which leaves the chain. A tool that isn't installed is left out. The noise
# comes as it is, which no limiter touches, and once more so loud that all of them work.
#
#   compare.sh BUILD_FOLDER [SECONDS_OF_SOUND] [RUNS]
set -eu
tool=${1:?usage: compare.sh BUILD_FOLDER [SECONDS_OF_SOUND] [RUNS]}/bin/hvaudio_chain
seconds=${2:-600}
runs=${3:-5}
[ -x "$tool" ] || { echo "$tool isn't built: build the target hvaudio_chain" >&2; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
pink=$work/pink.wav
"$tool" "$pink" noise "$seconds"

bands=(32 63 125 250 500 1000 2000 4000 8000 10000 12000 14000 16000)
gains=(6 4 2 -1 -3 -2 1 3 5 -4 2 -6 4)
ffmpeg_equalizer= sox_equalizer=
for i in "${!bands[@]}"; do
    ffmpeg_equalizer+="equalizer=f=${bands[i]}:t=q:w=1.41:g=${gains[i]},"
    sox_equalizer+=" equalizer ${bands[i]} 1.41q ${gains[i]}"
done
ffmpeg_chain="${ffmpeg_equalizer}lowshelf=f=100:t=q:w=0.707:g=6,highshelf=f=10000:t=q:w=0.707:g=3,"
ffmpeg_chain+="pan=FL+FR+LFE+BL+BR|FL=0.9*FL|FR=0.8*FR|BL=0.7*FL|BR=0.6*FR|LFE=0.35*FL+0.35*FR,"
for q in 0.5412 1.3066; do ffmpeg_chain+="highpass=f=80:t=q:w=$q:c=FL+FR+BL+BR,"; done
for q in 0.5412 1.3066; do ffmpeg_chain+="lowpass=f=80:t=q:w=$q:c=LFE,"; done
ffmpeg_chain+="adelay=2.1|3.4|10|5.6|7.8,alimiter=limit=0.9:attack=1:release=50:level=0"
sox_chain="$sox_equalizer bass 6 100 0.707q treble 3 10000 0.707q remix 1v0.9 2v0.8 1v0.35,2v0.35 1v0.7 2v0.6"
sox_chain+=" highpass -2 80 0.5412q highpass -2 80 1.3066q delay 0.0021 0.0034 0.010 0.0056 0.0078"
sox_chain+=" compand 0.001,0.05 -3,-3,0,-1"

# In dB. sox, whose samples are integers, cuts off what goes above full scale on the way; its compressor works all the same.
loud=30

run() { # WAY GAIN
    local gain=$(($2 - 6))
    case $1 in
    ffmpeg) ffmpeg -nostdin -loglevel error -threads 1 -filter_threads 1 -i "$pink" -af "volume=${gain}dB,$ffmpeg_chain" -threads 1 -c:a pcm_f32le -f null - ;;
    ffmpeg-pass) ffmpeg -nostdin -loglevel error -threads 1 -filter_threads 1 -i "$pink" -threads 1 -c:a pcm_f32le -f null - ;;
    sox) sox -V1 --single-threaded "$pink" -n gain $gain $sox_chain ;;
    sox-pass) sox -V1 --single-threaded "$pink" -n ;;
    *) "$tool" "$pink" "$1" "$2" 2>"$work/said" ;;
    esac
}

ways=(pass vector4 plain)
"$tool" "$pink" vector8 2>/dev/null && ways+=(vector8) || echo "no AVX2 here: vector8 left out"
for peer in ffmpeg sox; do
    if command -v $peer >/dev/null; then ways+=($peer-pass $peer); else echo "$peer isn't installed: left out"; fi
done
if "$tool" "$pink" lsp 2>"$work/said"; then ways+=(lsp); else echo "LSP left out: $(cat "$work/said")"; fi

TIMEFORMAT='%U %S'
for ((r = 0; r < runs; ++r)); do
    for way in "${ways[@]}"; do
        for gain in 0 $loud; do
            { time run "$way" $gain >/dev/null 2>"$work/error"; } 2>"$work/time" || { cat "$work/error"; exit 1; }
            awk '{print $1 + $2}' "$work/time" >>"$work/$way.$gain.times"
        done
    done
done

median() { sort -n "$work/$1.times" | awk '{v[NR] = $1} END {print v[int((NR + 1) / 2)]}'; }
cost() { # WAY GAIN: ns per frame of the chain alone
    case $1 in ffmpeg | sox) without=$1-pass ;; *) without=pass ;; esac
    awk -v with="$(median "$1.$2")" -v without="$(median "$without.$2")" -v s="$seconds" \
        'BEGIN {printf "%.2f", (with - without) / (s * 48000) * 1e9}'
}
table() { # GAIN
    printf '%-10s %12s' "" "ns per frame"
    for ours in vector4 vector8; do [ -f "$work/$ours.$1.times" ] && printf ' %18s' "times $ours"; done
    echo
    for way in vector4 vector8 plain lsp ffmpeg sox; do
        [ -f "$work/$way.$1.times" ] || continue
        printf '%-10s %12s' "$way" "$(cost $way "$1")"
        for ours in vector4 vector8; do
            [ -f "$work/$ours.$1.times" ] && printf ' %18s' \
                "$(awk -v a="$(cost $way "$1")" -v b="$(cost $ours "$1")" 'BEGIN {printf "%.1f", a / b}')"
        done
        echo
    done
}
echo "Limiters at rest:"
table 0
echo "Limiters at work, $loud dB more:"
table $loud
