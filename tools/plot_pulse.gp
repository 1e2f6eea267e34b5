# A pulse before and after optimisation, from two tables of the optimiser.
# gnuplot -c tools/plot_pulse.gp BEFORE.csv AFTER.csv OUT.png TITLE
set datafile separator ","
set terminal pngcairo size 820,420 font "sans,10"
set output ARG3
set title ARG4
set xlabel "Time (ms)"
set ylabel "RF field (Hz)"
set border 3
set tics nomirror
set key outside right
hz(x) = x / (2 * pi)
plot ARG1 using ($1*1000):(hz($2)) with lines lc rgb "#9aa7b5" lw 2 title "start, x", \
     ARG2 using ($1*1000):(hz($2)) with lines lc rgb "#1f5fa8" lw 2 title "optimised, x", \
     ARG2 using ($1*1000):(hz($3)) with lines lc rgb "#c8561d" lw 2 title "optimised, y"
