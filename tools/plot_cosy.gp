# Magnitude map of a two-dimensional spectrum, high shift at the left and at the bottom of the axes:
#   gnuplot -c plot_cosy.gp SPECTRUM.csv OUTPUT.png TITLE CARRIER_PPM FIELD_MHZ EVOLUTION_OFFSET_HZ HIGH_PPM LOW_PPM
load ARG0[1:strlen(ARG0)-strlen('plot_cosy.gp')].'plot_style.gp'
stats ARG1 using 3 nooutput
carrier = ARG4 + 0
field = ARG5 + 0
evolution = ARG6 + 0
set terminal pngcairo size 620,560 font 'DejaVu Sans,11'
set output ARG2
set title ARG3
set xrange [ARG7:ARG8]
set yrange [ARG7:ARG8]
set xlabel 'F2 chemical shift (ppm)'
set ylabel 'F1 chemical shift (ppm)'
set size square
set rmargin 6
set cbrange [0:0.7 * STATS_max]
set palette defined (0 '#ffffff', 0.05 '#cfe0f3', 0.3 '#4f8acb', 1 '#0d2f5c')
unset colorbox
unset grid
plot ARG1 using (carrier + $2 / field):(carrier + ($1 - evolution) / field):3 with image pixels notitle
