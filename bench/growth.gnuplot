# Draws docs/growth.svg from what bench/growth has printed. Usage: gnuplot -c bench/growth.gnuplot BILL LEDGER SVG
set terminal svg size 800,320 font "sans-serif,12" background "white"
set output ARG3
set multiplot layout 1,2
set logscale x
set format x "10^{%L}"
set grid y
set ylabel "µs a line"
set key left top

set xlabel "lines in the bill"
plot [][0:40] ARG1 using 1:2 with linespoints pointtype 7 title "ledger of 2000 rows"

set xlabel "rows in the ledger"
plot [500:2e6][0:140] ARG2 using 1:7 with linespoints pointtype 10 dashtype 2 title "baseline, any rows", \
     ARG2 using 1:6 with linespoints pointtype 11 dashtype 2 title "baseline, the same 500 rows", \
     ARG2 using 1:3 with linespoints pointtype 6 title "any rows", \
     ARG2 using 1:2 with linespoints pointtype 7 title "the same 500 rows"
