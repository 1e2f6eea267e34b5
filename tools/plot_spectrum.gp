# One spectrum over a chemical-shift axis, high shift on the left:
#   gnuplot -c plot_spectrum.gp SPECTRUM.csv OUTPUT.png TITLE CARRIER_PPM FIELD_MHZ LEFT_PPM RIGHT_PPM
# FIELD_MHZ = 1 and CARRIER_PPM = 0 give an axis in Hz.
load ARG0[1:strlen(ARG0)-strlen('plot_spectrum.gp')].'plot_style.gp'
carrier = ARG4 + 0
field = ARG5 + 0
set terminal pngcairo size 820,400 font 'DejaVu Sans,11'
set output ARG2
set title ARG3
set xrange [ARG6:ARG7]
set xlabel (field == 1 ? 'Offset (Hz)' : 'Chemical shift (ppm)')
set ylabel 'Intensity'
set lmargin 6
unset ytics
set yrange [*:*]
set offsets 0, 0, graph 0.05, 0
unset key
plot ARG1 using (carrier + $1 / field):2 with lines ls 1
