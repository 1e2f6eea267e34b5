#!/usr/bin/env bash
# usage: tools/draw_press.sh FOLDER PICTURE.png
# Draws the result of models/lactate-press.kormodel; its tables go to FOLDER.
# Run the model before. Needs the programs in build/ and gnuplot.
set -euo pipefail
if [ "${1:-}" = "--help" ]; then
    sed -n '2,4s/^# //p' "$0"
    exit 0
fi
export LC_ALL=C.UTF-8 # numbers with a decimal point
folder=$(cd "$1" && pwd)
picture=$2
cd "$(dirname "$0")/.."
model=$PWD/models/lactate-press.kormodel
result=$PWD/build/runtime/results/lactate-press.bin
table=$folder/lactate-press-methyl.csv

build/kor --expectation-profile "$model" "$result" "Sy + Ty + Uy" "$table" >/dev/null
# Full magnetisation of the methyl group reads sqrt(3); the selected cube is 12 voxels wide.
awk -F, 'NR > 1 { sum[$2 "," $3] += $5 } END { for (at in sum) print at "," sum[at] / (12 * sqrt(3)) }' \
    "$table" | sort -t, -g -k1 -k2 >"$folder/lactate-press-map.csv"
column=2
for axis in x y z; do
    awk -F, -v c=$column 'NR > 1 { sum[$c] += $5 } END { for (at in sum) print at "," sum[at] / (144 * sqrt(3)) }' \
        "$table" | sort -t, -g -k1 >"$folder/lactate-press-$axis.csv"
    column=$((column + 1))
done

build/sum-voxels "$result" "$folder/lactate-press-sum.bin"
build/kor --voxel-signal "$model" "$folder/lactate-press-sum.bin" 1 "$folder/lactate-press-signal.bin" >/dev/null
build/signal-to-spectrum "$folder/lactate-press-signal.bin" 1.024 1.5 "$folder/lactate-press-spectrum.csv"
gnuplot -c tools/plot_press.gp "$folder"/lactate-press-{map,x,y,z,spectrum}.csv "$picture" \
    'PRESS of lactate at 3 T, TE = 144 ms: 1.5 cm cube, 24 x 24 x 24 voxels' 3.0 127.7
