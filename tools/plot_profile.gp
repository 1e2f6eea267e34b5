# Slice profile along z from three expectation profiles (x, y and z magnetisation):
#   gnuplot -c plot_profile.gp X.csv Y.csv Z.csv OUTPUT.png TITLE FULL
# FULL is the expectation value of the full magnetisation; the profiles are shown as parts of it.
load ARG0[1:strlen(ARG0)-strlen('plot_profile.gp')].'plot_style.gp'
full = ARG6 + 0
set terminal pngcairo size 820,400 font 'DejaVu Sans,11'
set output ARG4
set title ARG5
set xlabel 'Position z (cm)'
set ylabel 'Magnetisation / equilibrium'
set yrange [-0.25:1.15]
set xrange [-1.25:1.25]
set key right center
plot ARG2 using 4:($5 / full) with lines ls 1 title 'M_y', \
     ARG1 using 4:($5 / full) with lines ls 2 title 'M_x', \
     ARG3 using 4:($5 / full) with lines ls 3 title 'M_z'
