#!/bin/bash
# Measures what the service costs, compared with its alternatives: ./bench.sh [--quick], which
# takes ten to fifteen minutes, or two for figures that only show that all is measured. Installs what
# is missing on Debian. Leaves tables and plots in build-bench/results; without --quick it puts them
# into docs/performance.md and docs/plots too. Whether a goal is met is told, and no failure.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"
. scripts/setup.sh

[ $# -eq 0 ] || [ "$*" = --quick ] || die "usage: $0 [--quick]"
results=build-bench/results
plots=$results
[ $# -gt 0 ] || plots=docs/plots

ensure_build_packages
ensure_packages libbenchmark-dev gnuplot-nox strace systemd binutils
# Where there are other packages than Debian's.
for tool in gnuplot busctl addr2line strip; do
    command -v "$tool" >/dev/null || die "$tool is missing: install it"
done
command -v strace >/dev/null || say "strace is missing: the start is not split"
build bench ovik_bench
[ ! -d build-armhf/sysroot ] || build armhf ovik_server
sync # what is not on the disk yet counts as written by the program that it is part of

say "measuring; what else runs on this machine widens the quartiles"
mkdir -p "$results" "$plots"
load() { cut -d ' ' -f 1 /proc/loadavg; }
before=$(load)
build-bench/bin/ovik_bench "$@" "$results" | tee "$results/output.txt"
after=$(load)
gnuplot -e "data='$results'; plots='$plots'" bench/plots.gp

{
    echo
    echo "On $(nproc) processors of type $(uname -m), $(date +%F); load $before before, $after after."
    echo
    cat "$results/table.md"
    echo
} >"$results/page.md"
if [ $# -eq 0 ]; then
    begin='<!-- begin: written by bench.sh -->'
    sed -i -e "/^$begin\$/,/^<!-- end -->\$/{//!d}" -e "/^$begin\$/r $results/page.md" \
        docs/performance.md
fi
say "tables and points are in $results, plots in $plots"
