#!/bin/sh
# The README's worked TLC example: codeword failure rate of the upper page
# of the built-in TLC model after one year of retention, against P/E cycles,
# for hard reads with the default and the optimal references and for Chase
# decoding (6 positions) with 1 and 3 soft reads, all through the stratified
# estimator. Writes the four CSV files and nand-tlc-example.png into the
# directory given (default: the current one).
#   scripts/nand-tlc-example.sh [OUTDIR] [FLASHBCH]
set -eu
out=${1:-.}
flashbch=${2:-build/apps/flashbch/flashbch}
common="simulate --channel nand --cell tlc --page upper --retention 1y --pe 0:250:3500 --estimator stratified
        --max-fe 100 --max-frames 400 --quiet"
mkdir -p "$out"
$flashbch $common --refs default --csv "$out/hard-default.csv"
$flashbch $common --refs optimal --csv "$out/hard-optimal.csv"
$flashbch $common --refs optimal --soft-reads 1 --soft-step 0.04 --decoder chase --chase-positions 6 \
  --csv "$out/chase1.csv"
$flashbch $common --refs optimal --soft-reads 3 --soft-step 0.03 --decoder chase --chase-positions 6 \
  --csv "$out/chase3.csv"
cd "$out"
gnuplot <<'PLOT'
set terminal pngcairo size 900,560 enhanced font ',10'
set output 'nand-tlc-example.png'
set datafile separator ','
set title 'TLC upper page after 1 year: 4 x 8192 data bits, BCH t = 40, stratified estimates'
set xlabel 'P/E cycles'
set ylabel 'codeword failure rate'
set logscale y
set format y '10^{%L}'
set yrange [1e-20:2]
set grid
set key bottom right box opaque
plot 'hard-default.csv' using 'pe':'fer' with linespoints title 'hard read, default references', \
     'hard-optimal.csv' using 'pe':'fer' with linespoints title 'hard read, optimal references', \
     'chase1.csv' using 'pe':'fer':'fer_low':'fer_high' with yerrorlines title 'Chase (6), 1 soft read, optimal references', \
     'chase3.csv' using 'pe':'fer':'fer_low':'fer_high' with yerrorlines title 'Chase (6), 3 soft reads, optimal references'
PLOT
