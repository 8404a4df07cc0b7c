# The picture of a run, from results.dat to results.svg: a panel for a row of the table, a bar for a
# contestant. Lines of results.dat: contestant, its place, value, its text, title of the panel.
set terminal svg size 1040,1130 font "DejaVu Sans,Helvetica,sans-serif,13" background "#ffffff"
set output "results.svg"

file = "results.dat"
stats file using 3 nooutput
panels = STATS_blocks

ours = 0xC2410C
others = 0x94A3B8
color(place) = int(place) == 0 ? ours : others

unset key
unset xtics
unset border
set ytics nomirror scale 0 textcolor rgb "#334155"
set style fill solid
set lmargin 19
set rmargin 5
set tmargin 0.6
set bmargin 0.6
set multiplot layout (panels + 1) / 2, 2
do for [panel = 0:panels - 1] {
  set autoscale  # the ranges of the last panel would be the statistics' too
  stats file index panel using 3 nooutput
  set xrange [0:STATS_max * 1.22]
  set yrange [5.6:-1.7]
  plot file index panel using (0.0):2:(0.0):3:($2 - 0.36):($2 + 0.36):(color($2)):ytic(1) \
         with boxxyerror linecolor rgb variable, \
       file index panel using 3:2:4 with labels left offset 0.5,0 textcolor rgb "#0f172a", \
       file index panel every ::0::0 using (0.0):(-1.15):5 with labels left \
         font "DejaVu Sans:Bold,14" textcolor rgb "#0f172a"
}
unset multiplot
