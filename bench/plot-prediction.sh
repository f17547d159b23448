#!/usr/bin/env bash
# Draws what bench/prediction wrote with --tsv: bench/plot-prediction.sh COLUMNS.tsv PICTURE.png
set -euo pipefail
. "$(dirname "$0")/plotting.sh"
plot "$@" <<'GNUPLOT'
set grid linecolor '#dddddd' linetype 1
set key top left Left reverse samplen 1.5 textcolor '#333333' font ',12'
set logscale x
set xrange [0.5:0.001]
set xtics ('half' 0.5, '1 in 10' 0.1, '1 in 100' 0.01, '1 in 1000' 0.001)
set yrange [0:30]
array colours[4] = ['#2368b5', '#2a9d6f', '#d98e04', '#c0392b']
array lines[4] = ['loopback', '40 ms', '40 ms, 5 ms jitter, 2 % loss', '100 ms, 20 ms jitter, 5 % loss in threes']

set multiplot layout 1,2 margins 0.055,0.965,0.12,0.9 spacing 0.06
set ylabel 'world units (a step is 6, a body 50)'
set title 'The drawn eye, by the inputs known then' font ',15'
set xlabel 'share of frames that are off by more'
plot for [i=1:4] columns index 2*i-2 skip 1 using 1:2 with lines title lines[i] \
     linecolor rgb colours[i] linewidth 2.5
unset ylabel
set title 'The body at the tick that takes an input' font ',15'
set xlabel 'share of inputs where it is off by more'
plot for [i=1:4] columns index 2*i-1 skip 1 using 1:2 with lines title lines[i] \
     linecolor rgb colours[i] linewidth 2.5
GNUPLOT
