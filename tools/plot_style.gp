# What every picture of the examples shares. Loaded by the plot_*.gp scripts.
set encoding utf8
set datafile separator ','
set border 3 lw 1.2 lc rgb '#444444'
set tics nomirror out scale 0.6 textcolor rgb '#222222'
set grid back lw 0.6 lc rgb '#dddddd'
set style line 1 lw 2 lc rgb '#1f5fa8'
set style line 2 lw 2 lc rgb '#c8501e'
set style line 3 lw 2 lc rgb '#3a8a4d'
set lmargin 10
set rmargin 3
