# shellcheck shell=bash
# Sourced by the scripts that draw what a bench wrote with --tsv. They need gnuplot.

# plot COLUMNS.tsv PICTURE.png: draws by the gnuplot commands on standard input.
plot() {
  if [ $# -ne 2 ] || [ ! -r "$1" ]; then
    echo "usage: $0 COLUMNS.tsv PICTURE.png" >&2
    exit 2
  fi
  # Beside the picture, so that a failure leaves the old one.
  unfinished=$2.unfinished
  trap 'rm -f "$unfinished"' EXIT
  cat - /dev/fd/3 3<&0 <<'GNUPLOT' | gnuplot -e "columns='$1'; picture='$unfinished'" -
set terminal pngcairo size 1400,600 font 'sans,13' background '#ffffff'
set output picture
set datafile separator tab
set border 3 linecolor '#666666'
set tics nomirror textcolor '#333333'
GNUPLOT
  mv "$unfinished" "$2"
}
