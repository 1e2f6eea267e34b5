# A localised volume: map, profiles and spectrum.
#   gnuplot -c plot_press.gp MAP.csv X.csv Y.csv Z.csv SPECTRUM.csv OUTPUT.png TITLE CARRIER_PPM FIELD_MHZ
# MAP.csv has lines x,y,value; X.csv, Y.csv and Z.csv lines position,value; values are parts of the full
# magnetisation of a cube of 1.5 cm.
load ARG0[1:strlen(ARG0)-strlen('plot_press.gp')].'plot_style.gp'
carrier = ARG8 + 0
field = ARG9 + 0
set terminal pngcairo size 900,720 font 'DejaVu Sans,11'
set output ARG6
set multiplot title ARG7 font ',13'

set origin 0.0, 0.44
set size 0.46, 0.50
set lmargin 8
set rmargin 8
set title 'Methyl signal, summed along z'
set xlabel 'x (cm)'
set ylabel 'y (cm)' offset 1
set size ratio -1
set xrange [-1.5:1.5]
set yrange [-1.5:1.5]
set xtics 0.75
set ytics 0.75
set cbrange [-1:1]
set cbtics 1
set palette defined (-1 '#1f5fa8', 0 '#ffffff', 1 '#c8501e')
unset grid
set object 1 rectangle from -0.75,-0.75 to 0.75,0.75 front fs empty border lc rgb '#444444' lw 1.2 dt 2
plot ARG1 using 1:2:3 with image pixels notitle
unset object 1

set origin 0.46, 0.44
set size noratio
set size 0.54, 0.50
set lmargin 8
set rmargin 3
set title 'Methyl signal, summed over the other two axes'
set xlabel 'Position (cm)'
set ylabel 'M_y / equilibrium'
set yrange [-1.05:0.55]
set ytics 0.5
set grid back lw 0.6 lc rgb '#dddddd'
set key bottom left samplen 1 Left reverse
set object 2 rectangle from -0.75, graph 0 to 0.75, graph 1 behind fs solid 0.35 noborder fc rgb '#dddddd'
plot ARG2 using 1:2 with linespoints ls 1 pt 7 ps 0.4 title 'x, 180°', \
     ARG3 using 1:2 with linespoints ls 2 pt 7 ps 0.4 title 'y, 180°', \
     ARG4 using 1:2 with linespoints ls 3 pt 7 ps 0.4 title 'z, 90°'
unset object 2

set origin 0.0, 0.0
set size 1.0, 0.44
set title 'Spectrum of the whole volume'
set xlabel 'Chemical shift (ppm)'
set ylabel 'Intensity'
set xrange [4.6:0.8]
set yrange [*:*]
set offsets 0, 0, graph 0.1, graph 0.08
set xtics 0.5
unset ytics
unset key
plot ARG5 using (carrier + $1 / field):2 with lines ls 1
unset multiplot
