#!/usr/bin/env bash
# Draws what bench/rooms wrote with --tsv: bench/plot.sh COLUMNS.tsv PICTURE.png
set -euo pipefail
. "$(dirname "$0")/plotting.sh"
plot "$@" <<'GNUPLOT'
set grid ytics linecolor '#dddddd' linetype 1
set key top left Left reverse samplen 1.5 textcolor '#333333'
floor = '#9aa5b1'
server = '#2368b5'

# The number once for its group of three.
label(firing, inputs) = firing eq 'wall' ? firing."\n".inputs : (firing eq 'nobody' ? 'nothing' : firing)

set multiplot layout 1,2 margins 0.06,0.98,0.17,0.9 spacing 0.08

set title 'Processor time of one room' font ',15'
set ylabel 'ms of a core per second'
set yrange [0:*]
set xrange [-0.6:8.6]
set style data histograms
set style histogram errorbars gap 1 linewidth 1.2
set style fill solid 1.0 noborder
set errorbars 0.6 linecolor '#333333'
set xtics scale 0
set xlabel 'what all four fire at, and inputs of each per second' offset 0,-1
plot columns index 0 skip 1 using 3:4:5:xtic(label(stringcolumn(2), stringcolumn(1))) \
       title 'the bare system calls' linecolor rgb floor, \
     '' index 0 skip 1 using 6:7:8 title 'the server' linecolor rgb server

set key bottom right Left reverse
set title 'Rooms on one core, 120 inputs of each player per second' font ',15'
set ylabel '99th percentile of the gap between states, ms'
set xlabel 'rooms' offset 0,0
set xrange [*:*]
set yrange [15:40]
set xtics scale 0.5 auto
set arrow 1 from graph 0, first 20 to graph 1, first 20 nohead linecolor '#c0392b' dashtype 2
set label 1 'limit' at graph 0.35, first 20.7 right textcolor '#c0392b'
plot columns index 1 skip 1 using 1:2 with linespoints title 'the bare system calls' \
       linecolor rgb floor linewidth 2.5 pointtype 7, \
     '' index 1 skip 1 using 1:3 with linespoints title 'the server' \
       linecolor rgb server linewidth 2.5 pointtype 7
GNUPLOT
