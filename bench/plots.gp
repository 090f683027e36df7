# gnuplot -e "data='DIRECTORY'; plots='DIRECTORY'" plots.gp: what ovik_bench has measured, as pictures.
set terminal svg size 640,400 font "sans-serif,12" background "white"
set grid
set style data linespoints
set key below

set output plots."/window.svg"
set title "getBrightness over the requests under way at a time"
set xlabel "requests under way"
set ylabel "rate, of blocking Qt D-Bus calls"
set logscale x 2
set yrange [0:1.2<*]
plot data."/window.tsv" using 1:2:3:4 with yerrorbars pt 7 ps 0.5 lc 1 title "quartiles", \
     "" using 1:2 with lines lc 1 title "median", 1 with lines dt 2 lc "gray" title "Qt D-Bus"

set output plots."/size.svg"
set title "Over the size of the answer"
set xlabel "bytes of the answer"
set ylabel "rate, of blocking Qt D-Bus calls"
set logscale x 10
plot data."/size.tsv" using (strcol(5)[1:6] eq "seepro" ? $1 : NaN):2:3:4 with yerrorlines pt 7 ps 0.5 title "seepromRead", \
     "" using (strcol(5)[1:6] eq "getAll" ? $1 : NaN):2:3:4 with yerrorlines pt 7 ps 0.5 title "getAllSystemParametersJson", \
     1 with lines dt 2 lc "gray" title "Qt D-Bus"

set output plots."/latency.svg"
set title "getBrightness, one after the answer of the other"
unset logscale x
set xlabel "time, of the idle sleep (10 ms)"
set ylabel "% of the requests that took less"
set yrange [0:100]
set xrange [0:2]
plot data."/latency.tsv" using ($1/10):2 with lines title "single requests"

set output plots."/requests.svg"
set title "Over the requests served"
set xlabel "requests"
set ylabel "of what it was at the first point"
set xrange [0:*]
set yrange [0:2]
plot data."/requests.tsv" using 1:2 with lines lw 2 title "private memory", \
     "" using 1:3 with lines lw 2 title "resident memory", \
     "" using 1:4 with lines title "pipelined time over a Qt D-Bus call's", \
     "" using 1:5 with lines title "slowest of 5 single ones over an idle sleep + a Qt D-Bus call"
