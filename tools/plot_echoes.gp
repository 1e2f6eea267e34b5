# Three spectra above one another over a chemical-shift axis, high shift on the left:
#   gnuplot -c plot_echoes.gp FID.csv ECHO-72.csv ECHO-144.csv OUTPUT.png TITLE CARRIER_PPM FIELD_MHZ LEFT_PPM RIGHT_PPM
load ARG0[1:strlen(ARG0)-strlen('plot_echoes.gp')].'plot_style.gp'
stats ARG1 using 2 nooutput
shift = 1.15 * STATS_max
carrier = ARG6 + 0
field = ARG7 + 0
set terminal pngcairo size 820,520 font 'DejaVu Sans,11'
set output ARG4
set title ARG5
set xrange [ARG8:ARG9]
set xlabel 'Chemical shift (ppm)'
set ylabel 'Intensity'
unset ytics
set lmargin 6
set label 1 '90° pulse' at graph 0.03, first 2.15 * shift
set label 2 'echo, TE 72 ms' at graph 0.03, first 1.15 * shift
set label 3 'echo, TE 144 ms' at graph 0.03, first 0.15 * shift
set yrange [-1.1 * shift:3 * shift]
plot ARG1 using (carrier + $1 / field):($2 + 2 * shift) with lines ls 1 notitle, \
     ARG2 using (carrier + $1 / field):($2 + shift) with lines ls 3 notitle, \
     ARG3 using (carrier + $1 / field):2 with lines ls 2 notitle
