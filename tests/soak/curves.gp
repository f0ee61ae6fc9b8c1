# Draws what a soak measured. Called by scripts/soak with `numbers`, the CSV, and `picture`, the PNG.
set datafile separator comma
set terminal pngcairo size 1500,1200 font "sans,11" background "white"
set output picture

set style line 1 linecolor rgb "#1b6ca8" linewidth 2
set style line 2 linecolor rgb "#d1495b" linewidth 2
set style line 3 linecolor rgb "#2e933c" linewidth 2
set style line 11 linecolor rgb "#e0e0e0" linewidth 1
set grid linestyle 11
set border 3 linecolor rgb "#606060"
set tics nomirror out textcolor rgb "#303030"
set key top left Left reverse samplen 2 opaque box linecolor rgb "#e0e0e0"
set format x "%g"
set xlabel "round"
set xrange [0:*]
# Room above the curves for the legend.
set offsets 0, 0, graph 0.25, 0
set yrange [0:*]
set lmargin 9
set rmargin 3

set multiplot layout 3,2 title "A soak: the process at rest, and what happened, by round" font ",15"

set title "Resident memory"
set ylabel "MiB"
set format y "%g"
plot numbers using 1:($2/1024) with lines linestyle 1 title "VmRSS"

set title "Heap in use"
plot numbers using 1:($3/1024) with lines linestyle 1 title "given out by malloc"

set title "Cache folder"
plot numbers using 1:($7/1048576) with lines linestyle 1 title "space on disk"

set title "Files in the cache folder"
set ylabel "number"
set format y "%g"
plot numbers using 1:6 with lines linestyle 1 title "files and folders"

set title "Descriptors and threads"
plot numbers using 1:4 with lines linestyle 1 title "open descriptors", \
     numbers using 1:5 with lines linestyle 2 title "threads"

# A flat line at nought is the good case, so it must be seen.
set title "What should not have been"
set yrange [-0.5:10<*]
plot numbers using 1:14 with lines linestyle 3 title "everything, in all", \
     numbers using 1:12 with lines linestyle 2 title "reports and rewards lost", \
     numbers using 1:13 with lines linestyle 1 title "reports and rewards doubled"
unset multiplot
