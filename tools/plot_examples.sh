#!/usr/bin/env bash
# usage: tools/plot_examples.sh [EXAMPLE...]
# Runs the examples and draws docs/images/EXAMPLE.png; without arguments all of them.
# Needs the programs in build/ (./run-demo builds them) and gnuplot.
set -euo pipefail
if [ "${1:-}" = "--help" ]; then
    sed -n '2,4s/^# //p' "$0"
    exit 0
fi
export LC_ALL=C.UTF-8 # numbers with a decimal point
cd "$(dirname "$0")/.."
root=$PWD
results=$root/build/runtime/results
images=$root/docs/images
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

run() { build/kor --run-model "$root/models/$1.kormodel" >/dev/null; }
plot() { gnuplot -c "tools/$1.gp" "${@:2}"; }

# One spectrum: MODEL BROADENING_HZ TITLE CARRIER_PPM FIELD_MHZ LEFT RIGHT
spectrum() {
    run "$1"
    build/signal-to-spectrum "$results/$1.bin" 1.024 "$2" "$work/$1.csv"
    plot plot_spectrum "$work/$1.csv" "$images/$1.png" "${@:3}"
}

draw_slice() {
    local axis
    run citrate-slice
    for axis in x y z; do
        build/kor --expectation-profile "$root/models/citrate-slice.kormodel" "$results/citrate-slice.bin" \
            "I$axis + S$axis" "$work/$axis.csv" >/dev/null
    done
    plot plot_profile "$work/x.csv" "$work/y.csv" "$work/z.csv" "$images/citrate-slice.png" \
        'Slice profile of citrate: sinc-Gauss 90° pulse, 4 ms, 2 kHz/cm' 1.4142135623730951
}

draw_echoes() {
    local te
    run lactate-fid
    build/signal-to-spectrum "$results/lactate-fid.bin" 1.024 1.5 "$work/fid.csv"
    for te in 72 144; do
        run lactate-echo-$te
        build/kor --voxel-signal "$root/models/lactate-echo-$te.kormodel" "$results/lactate-echo-$te.bin" 8 \
            "$work/echo-$te.bin" >/dev/null
        build/signal-to-spectrum "$work/echo-$te.bin" 1.024 1.5 "$work/echo-$te.csv"
    done
    plot plot_echoes "$work/fid.csv" "$work/echo-72.csv" "$work/echo-144.csv" "$images/lactate-echo.png" \
        'Spin echoes of lactate at 3 T' 3.0 127.7 1.45 1.18
}

draw_press() {
    run lactate-press
    tools/draw_press.sh "$work" "$images/lactate-press.png"
}

draw_cosy() {
    run lactate-cosy
    build/signal-to-spectrum "$results/lactate-cosy.bin" 0.512 0 "$work/cosy.csv" 0.0008
    plot plot_cosy "$work/cosy.csv" "$images/lactate-cosy.png" 'COSY of lactate at 3 T' 3.0 127.7 400 4.7 0.7
}

# A session at the menus in a copy of the examples, which keeps the shipped pulse, and without gnuplot's window; then that
# pulse, 128 samples of its RF along x over 60 ms, beside the optimised one.
# The import menu numbers the model files in the order of their names, whatever the case of the letters.
draw_pulse() {
    local name=optimise-two-spin-order number
    mkdir "$work/build"
    cp build/kor "$work/build"
    cp -r models spin-systems sequences "$work"
    number=$(basename -a models/*.kormodel | sort -f | grep -nx "$name\.kormodel" | cut -d: -f1)
    printf '%s\n' 3 "$number" '' 2 5 1 1 8 1 1 "$work/after.csv" 2 '' 7 6 | PATH= "$work/build/kor" >/dev/null 2>&1
    od -An -v -t f8 -w8 -N $((128 * 8)) "sequences/$name/waveforms/pulse.bin" |
        awk '{ print (NR - 1) * 0.06 / 128 "," $1 }' >"$work/before.csv"
    plot plot_pulse "$work/before.csv" "$work/after.csv" "$images/$name.png" 'Two-spin order from z: the pulse before and after'
}

draw() {
    case $1 in
    lactate-fid) spectrum lactate-fid 1.5 'Lactate at 3 T, 90° pulse and acquisition' 3.0 127.7 4.6 0.8 ;;
    aspartate-fid) spectrum aspartate-fid 1.5 'Aspartate at 3 T, 90° pulse and acquisition' 3.0 127.7 4.2 2.3 ;;
    chloroform-d-fid) spectrum chloroform-d-fid 2 'Chloroform-d, ^{13}C coupled to ^2H: 1:1:1 triplet' 0 1 100 -100 ;;
    valine-fid) spectrum valine-fid 1.5 'Valine at 3 T, eight spins' 3.0 127.7 4.0 0.7 ;;
    citrate-slice) draw_slice ;;
    lactate-echo) draw_echoes ;;
    lactate-press) draw_press ;;
    lactate-cosy) draw_cosy ;;
    optimise-two-spin-order) draw_pulse ;;
    *)
        echo "unknown example: $1" >&2
        exit 1
        ;;
    esac
    echo "docs/images/$1.png"
}

mkdir -p "$images"
[ $# -gt 0 ] || set -- lactate-fid aspartate-fid chloroform-d-fid citrate-slice lactate-echo lactate-press lactate-cosy \
    valine-fid optimise-two-spin-order
for example in "$@"; do draw "$example"; done
