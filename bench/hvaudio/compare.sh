#!/bin/bash
# Times the sound processor beside ffmpeg, sox, the LSP LADSPA plug-ins, GStreamer, a plain double chain and the bare
# kernel (barekernel.h), all running the same chain over the same sound: user + system time of whole processes, one
# thread, interleaved, medians; the same tool's run without the chain is taken off, which leaves the chain. A tool that
# isn't installed is left out. Four sounds: pink noise, and pink noise with a bass line of 45 Hz; each as it is, which no
# limiter touches, and once more so loud that all of them work. Instructions are counted with callgrind, if it is there.
#
#   compare.sh BUILD_FOLDER [SECONDS_OF_SOUND] [RUNS]
set -eu
build=${1:?usage: compare.sh BUILD_FOLDER [SECONDS_OF_SOUND] [RUNS]}
seconds=${2:-120}
runs=${3:-5}
tool=$build/bin/hvaudio_chain
avx2=$build/bin/hvaudio_chain_avx2
[ -x "$tool" ] || { echo "$tool isn't built: build the target hvaudio_chain" >&2; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for material in noise bass; do
    for length in "$seconds" 1 2; do "$tool" "$work/$material.$length.wav" $material "$length"; done
done

bands=(32 63 125 250 500 1000 2000 4000 8000 10000 12000 14000 16000)
gains=(6 4 2 -1 -3 -2 1 3 5 -4 2 -6 4)
ffmpeg_equalizer= sox_equalizer= gst_equalizer="equalizer-nbands num-bands=15"
for i in "${!bands[@]}"; do
    ffmpeg_equalizer+="equalizer=f=${bands[i]}:t=q:w=1.41:g=${gains[i]},"
    sox_equalizer+=" equalizer ${bands[i]} 1.41q ${gains[i]}"
    gst_equalizer+=" band$i::freq=${bands[i]} band$i::bandwidth=$((bands[i] * 100 / 141)) band$i::gain=${gains[i]}"
done
gst_equalizer+=" band13::type=low-shelf band13::freq=100 band13::bandwidth=140 band13::gain=6"
gst_equalizer+=" band14::type=high-shelf band14::freq=10000 band14::bandwidth=14000 band14::gain=3"
ffmpeg_chain="${ffmpeg_equalizer}lowshelf=f=100:t=q:w=0.707:g=6,highshelf=f=10000:t=q:w=0.707:g=3,"
ffmpeg_chain+="pan=FL+FR+LFE+BL+BR|FL=0.9*FL|FR=0.8*FR|BL=0.7*FL|BR=0.6*FR|LFE=0.35*FL+0.35*FR,"
for q in 0.5412 1.3066; do ffmpeg_chain+="highpass=f=80:t=q:w=$q:c=FL+FR+BL+BR,"; done
for q in 0.5412 1.3066; do ffmpeg_chain+="lowpass=f=80:t=q:w=$q:c=LFE,"; done
ffmpeg_chain+="adelay=2.1|3.4|10|5.6|7.8,alimiter=limit=0.9:attack=1:release=50:level=0"
# As many channels as the chain encodes, copied.
ffmpeg_pass="pan=FL+FR+LFE+BL+BR|FL=FL|FR=FR|BL=FL|BR=FR|LFE=FL"
sox_chain="$sox_equalizer bass 6 100 0.707q treble 3 10000 0.707q remix 1v0.9 2v0.8 1v0.35,2v0.35 1v0.7 2v0.6"
sox_chain+=" highpass -2 80 0.5412q highpass -2 80 1.3066q delay 0.0021 0.0034 0.010 0.0056 0.0078"
sox_chain+=" compand 0.001,0.05 -3,-3,0,-1"
# GStreamer has no delay for each channel and no limiter: it does less than the others. Its queue-less pipeline runs on
# one thread.
gst_mix="audioconvert mix-matrix=<<(float)0.9,(float)0>,<(float)0,(float)0.8>,<(float)0.35,(float)0.35>,<(float)0.7,(float)0>,<(float)0,(float)0.6>>"
gst_five="audio/x-raw,channels=5,channel-mask=(bitmask)0x3b"

# In dB. sox, whose samples are integers, cuts off what goes above full scale on the way; its compressor works all the same.
loud=30

command_of() { # WAY MATERIAL GAIN LENGTH
    local file=$work/$2.$4.wav gain=$(($3 - 6))
    local ffmpeg=(ffmpeg -nostdin -loglevel error -threads 1 -filter_threads 1 -i "$file")
    local gst=(gst-launch-1.0 -q filesrc "location=$file" ! wavparse ! audioconvert ! audio/x-raw,format=F32LE !)
    case $1 in
    ffmpeg) command=("${ffmpeg[@]}" -af "volume=${gain}dB,$ffmpeg_chain" -threads 1 -c:a pcm_f32le -f null -) ;;
    ffmpeg-pass) command=("${ffmpeg[@]}" -af "$ffmpeg_pass" -threads 1 -c:a pcm_f32le -f null -) ;;
    sox) command=(sox -V1 --single-threaded "$file" -n gain $gain $sox_chain) ;;
    sox-pass) command=(sox -V1 --single-threaded "$file" -n remix 1 2 1 1 2) ;;
    gst) command=("${gst[@]}" $gst_equalizer ! $gst_mix ! $gst_five ! audiocheblimit mode=high-pass cutoff=80 poles=4 ! fakesink) ;;
    gst-pass) command=("${gst[@]}" $gst_mix ! $gst_five ! fakesink) ;;
    *-avx2) command=("$avx2" "$file" "${1%-avx2}" "$3") ;;
    *) command=("$tool" "$file" "$1" "$3") ;;
    esac
}

ways=(pass vector2 vector2+ plain)
if "$tool" "$work/noise.1.wav" vector4 2>/dev/null; then
    ways+=(vector4 vector4+ bare-avx2 plain-avx2)
else
    echo "no AVX2 here: vector4 and what goes with it left out"
fi
if "$tool" "$work/noise.1.wav" vector8 2>/dev/null; then ways+=(vector8); else echo "no AVX-512 here: vector8 left out"; fi
for peer in ffmpeg sox; do
    if command -v $peer >/dev/null; then ways+=($peer-pass $peer); else echo "$peer isn't installed: left out"; fi
done
if command -v gst-launch-1.0 >/dev/null && gst-inspect-1.0 equalizer-nbands >/dev/null 2>&1; then
    ways+=(gst-pass gst)
else
    echo "GStreamer isn't installed: left out"
fi
if "$tool" "$work/noise.1.wav" lsp 2>"$work/said"; then ways+=(lsp); else echo "LSP left out: $(cat "$work/said")"; fi

sounds=("noise 0" "noise $loud" "bass 0" "bass $loud")
TIMEFORMAT='%U %S'
for ((r = 0; r < runs; ++r)); do
    for sound in "${sounds[@]}"; do
        for way in "${ways[@]}"; do
            command_of "$way" $sound "$seconds"
            { time "${command[@]}" >/dev/null 2>"$work/error"; } 2>"$work/time" || { cat "$work/error"; exit 1; }
            awk '{print $1 + $2}' "$work/time" >>"$work/$way.${sound/ /.}.times"
        done
    done
done

median() { sort -n "$work/$1.times" | awk '{v[NR] = $1} END {print v[int((NR + 1) / 2)]}'; }
without() { case $1 in ffmpeg | sox | gst) echo "$1-pass" ;; *) echo pass ;; esac; }
cost() { # WAY SOUND: ns per frame of the chain alone
    awk -v with="$(median "$1.${2/ /.}")" -v without="$(median "$(without "$1").${2/ /.}")" -v s="$seconds" \
        'BEGIN {printf "%.2f", (with - without) / (s * 48000) * 1e9}'
}
counted() { # WAY SOUND LENGTH
    command_of "$1" $2 "$3"
    valgrind --tool=callgrind --callgrind-out-file=/dev/null "${command[@]}" >/dev/null 2>"$work/counted" || return 0
    sed -n 's/.*Collected : //p' "$work/counted"
}
instructions() { # WAY SOUND: of the chain alone in the second second; "-" where callgrind can't run it
    local count=0 way
    for way in "$1" "$(without "$1")"; do
        local one two
        one=$(counted "$way" "$2" 1) two=$(counted "$way" "$2" 2)
        [ "$two" ] || { echo -; return; }
        count=$((two - one - count))
    done
    echo $((-count / 48000))
}

printf '%-11s' "ns a frame"
for sound in "${sounds[@]}"; do printf ' %9s' "${sound% 0}"; done
command -v valgrind >/dev/null && printf '   %s' "instructions a frame, ${sounds[0]% 0} and ${sounds[3]}"
echo
for way in vector2 vector2+ vector4 vector4+ vector8 bare-avx2 plain plain-avx2 lsp ffmpeg sox gst; do
    [ -f "$work/$way.noise.0.times" ] || continue
    printf '%-11s' "$way"
    for sound in "${sounds[@]}"; do
        cost $way "$sound" | tee "$work/$way.${sound/ /.}.cost" | xargs printf ' %9s'
    done
    if command -v valgrind >/dev/null; then
        for sound in "${sounds[0]}" "${sounds[3]}"; do
            printf ' %7s' "$(instructions "$way" "$sound")"
        done
    fi
    echo
done
echo
echo "Times ours, the least of the four sounds (bare-avx2: ours times it, the most):"
for way in bare-avx2 plain plain-avx2 lsp ffmpeg sox gst; do
    [ -f "$work/$way.noise.0.times" ] || continue
    printf '%-11s' "$way"
    for ours in vector2 vector4 vector8; do
        [ -f "$work/$ours.noise.0.times" ] || continue
        printf ' %s ' "$ours"
        for sound in "${sounds[@]}"; do
            paste "$work/$way.${sound/ /.}.cost" "$work/$ours.${sound/ /.}.cost"
        done | awk -v bare="$way" '{r = bare == "bare-avx2" ? $2 / $1 : $1 / $2
             if (NR == 1 || (bare == "bare-avx2" ? r > w : r < w)) w = r} END {printf "%5.2f", w}'
    done
    echo
done
