#!/usr/bin/env bash
# Draws what bench/spares wrote with --tsv: bench/plot-spares.sh COLUMNS.tsv PICTURE.png
set -euo pipefail
. "$(dirname "$0")/plotting.sh"
plot "$@" <<'GNUPLOT'
set grid linecolor '#dddddd' linetype 1
set key top right Right noreverse samplen 1.5 textcolor '#333333' font ',12' title 'a room starts in'
array colours[4] = ['#2368b5', '#2a9d6f', '#d98e04', '#c0392b']
array starts[4] = ['2 s', '5 s', '15 s', '60 s']

set multiplot layout 1,2 margins 0.085,0.965,0.12,0.9 spacing 0.09
set xlabel 'spare rooms'
set xrange [0:140]
set title 'Groups who wait, one coming a second' font ',15'
set logscale y
set yrange [0.0001:1]
set ytics ('all' 1, '1 in 10' 0.1, '1 in 100' 0.01, '1 in 1000' 0.001, '1 in 10 000' 0.0001)
plot for [i=1:4] columns index 0 skip 1 using 1:(column(i+1) > 0 ? column(i+1) : NaN) with lines \
     title starts[i] linecolor rgb colours[i] linewidth 2.5

unset logscale y
set title 'A rush: five a second for three minutes' font ',15'
set ylabel 'groups who wait at the worst moment'
set yrange [0:*]
set xrange [0:200]
set ytics auto
plot for [i=1:4] columns index 1 skip 1 using 1:i+1 with lines title starts[i] \
     linecolor rgb colours[i] linewidth 2.5
GNUPLOT
