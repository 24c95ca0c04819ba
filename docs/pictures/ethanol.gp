# SPDX-License-Identifier: MIT
# Draws spectra under each other: each line of a result file as a Lorentzian of its intensity.
# Usage: gnuplot -c ethanol.gp RESULT MHZ RESULT MHZ
set terminal svg size 760,420 enhanced background rgb "white" font "sans-serif,13"
width = 0.4          # Hz, half of the width at half height
threshold = 0.02     # of the height of a line of intensity 1
set samples 8000
set yrange [0:*]
set xtics 1
set mxtics 5
unset ytics
set border 1
set xtics nomirror
set key at graph 0.02,0.95 left Left reverse samplen -1 spacing 1.2
set multiplot layout 2,1 margins 0.03,0.97,0.15,0.97 spacing 0.11

do for [panel = 0:1] {
    result = panel == 0 ? ARG1 : ARG3
    megahertz = (panel == 0 ? ARG2 : ARG4) + 0
    set xrange [*:*]
    stats result skip 3 using 1 nooutput
    count = int(STATS_records)
    array frequency[count]
    array intensity[count]
    stats result skip 3 using (frequency[$0 + 1] = $1, intensity[$0 + 1] = $2, 0) nooutput
    set xrange [6:0.5]  # ppm, as chemists draw it
    signal(x) = sum [i = 1:count] intensity[i] * width**2 / ((x * megahertz - frequency[i])**2 + width**2)
    if (panel == 1) {
        set xlabel "chemical shift / ppm"
    }
    # what lies near the axis isn't drawn, which keeps the picture small
    plot (signal(x) > threshold ? signal(x) : NaN) with lines linecolor rgb "#204080" \
        title sprintf("%d MHz", megahertz)
}
unset multiplot
