# gnuplot -e "data='DIRECTORY'; plots='DIRECTORY'" plots.gp: draws what ovik_bench has measured.
set terminal svg size 640,420 font "sans-serif,12" background "white"
set grid
set key outside top center horizontal
set style line 1 lc 3 lw 2 pt 7 ps 0.5
set style line 9 lc "red" lw 2 dt 2 # a goal

set output plots."/window.svg"
set title "Rate of getBrightness by requests under way"
set xlabel "requests under way"
set ylabel "rate / rate of blocking Qt D-Bus calls"
set logscale x 2
set xrange [0.8:80]
set yrange [0:1<*]
plot data."/window.tsv" using 1:2:3:4 with yerrorbars ls 1 title "median and quartiles", \
     "" using 1:2 with lines ls 1 notitle, 0.8 with lines ls 9 title "goal: at least 0.8"
unset logscale x

set output plots."/latency.svg"
set title "Latency of single requests"
set xlabel "latency, ms"
set ylabel "share of requests, %"
set xrange [0:20]
set yrange [0:100]
set parametric
set trange [0:100]
plot data."/latency.tsv" using 1:2 with lines ls 1 title "answered within", \
     10, t with lines lc "gray40" lw 1.5 dt 2 title "idle sleep of the service (10 ms)"
unset parametric

set output plots."/requests.svg"
set title "Memory and time over the number of requests"
set xlabel "requests, thousands"
set ylabel "value / value at the first point"
set xrange [0:*]
set yrange [0:2]
plot data."/requests.tsv" using ($1/1000):4 with lines lc 1 title "time of a batch", \
     "" using ($1/1000):5 with lines lc 2 title "latency of single requests", \
     "" using ($1/1000):2 with lines lc 3 lw 4 title "private memory", \
     "" using ($1/1000):3 with lines lc 4 lw 2 title "resident memory", \
     1.25 with lines ls 9 title "goal for times: at most 1.25", \
     1 with lines ls 9 dt 3 title "goal for memory: at most 1"
