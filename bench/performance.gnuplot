# Draws the rows of build/bench.csv: for each one a bar for the library, and a point for each
# peer, each at a height of its own so that none hides another. The fastest peer is at 1.
set datafile separator comma
set terminal svg size 1050,1000 font "Helvetica,14" background "#ffffff"
set output "docs/performance.svg"

file = "< grep '^rows' build/bench.csv"
stats file using 2 nooutput
rows = int(STATS_max)
left(r) = r < 1 ? r : 1
right(r) = r < 1 ? 1 : r
text(s) = s < 1e-6 ? sprintf("%.0f ns", s * 1e9) : s < 1e-4 ? sprintf("%.1f us", s * 1e6) : \
          s < 1e-3 ? sprintf("%.0f us", s * 1e6) : sprintf("%.1f ms", s * 1e3)
peer(name) = strcol(4) eq name ? column(7) : NaN

set logscale x
set xrange [0.02:250]
set yrange [-rows - 0.7:-0.3]
set xtics ("0.02" 0.02, "0.05" 0.05, "0.1" 0.1, "0.2" 0.2, "0.5" 0.5, "1" 1, "2" 2, "5" 5, "10" 10, "20" 20, "50" 50, "100" 100) tc "#202020"
set xlabel "time, as a multiple of the fastest peer's; further left is faster"
set ytics scale 0 nomirror noenhanced tc "#202020"
set lmargin 30
set link y2
set y2tics scale 0 noenhanced tc "#2f6db5"
set y2label "time of libvrno" tc "#2f6db5"
set grid xtics lc "#e0e0e0" lt 1
set border 1 lc "#808080"
set key outside top center horizontal samplen 1.5 noenhanced
set arrow 1 from 1, graph 0 to 1, graph 1 nohead lc "#404040" lw 1.5 front
set style fill solid 1.0 noborder

plot "< grep '^rows.*,ours,' build/bench.csv" \
         using (1):(-$2):(left($7)):(right($7)):(-$2 - 0.32):(-$2 + 0.32):ytic(3):y2tic(text($5)) \
         with boxxyerror lc "#2f6db5" title "libvrno", \
     file using (peer("OpenSSL bare")):(0.27 - $2) with points pt 7 ps 0.7 lc "#c0392b" title "OpenSSL, bare calls", \
     file using (peer("OpenSSL")):(0.18 - $2) with points pt 6 ps 0.7 lw 2 lc "#c0392b" title "OpenSSL", \
     file using (peer("libgcrypt")):(0.09 - $2) with points pt 9 ps 0.8 lc "#2e8b57" title "libgcrypt", \
     file using (peer("nettle")):(0.00 - $2) with points pt 5 ps 0.6 lc "#e08e0b" title "nettle", \
     file using (peer("mbedTLS")):(-0.09 - $2) with points pt 11 ps 0.8 lc "#7d3c98" title "mbedTLS", \
     file using (peer("Botan")):(-0.18 - $2) with points pt 13 ps 0.9 lc "#5d6d7e" title "Botan", \
     file using (peer("modp_b64")):(-0.27 - $2) with points pt 15 ps 0.8 lc "#b5651d" title "modp_b64"
