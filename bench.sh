#!/bin/bash
# Measures the costs of the service in comparison with its alternatives: ./bench.sh [--quick]. It takes
# about ten minutes, or two with --quick, whose figures only show that every measurement runs. Installs
# missing packages on Debian. Writes the table and the plots to build-bench/results; without --quick also
# to docs/performance.md and docs/plots. A missed goal is reported; it is no failure.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"
. scripts/setup.sh

[ $# -eq 0 ] || [ "$*" = --quick ] || die "usage: $0 [--quick]"
results=build-bench/results
plots=$results
[ $# -gt 0 ] || plots=docs/plots

ensure_build_packages
ensure_packages gnuplot-nox systemd
# On systems other than Debian, ensure_packages installs nothing.
for tool in gnuplot busctl; do
    command -v "$tool" >/dev/null || die "$tool is missing: install it"
done
build bench ovik_bench
sync # the pages of a program that is not yet on the disk count as its private memory

say "measuring; other load on this machine widens the quartiles"
mkdir -p "$results" "$plots"
load() { cut -d ' ' -f 1 /proc/loadavg; }
before=$(load)
build-bench/bin/ovik_bench "$@" "$results"
after=$(load)
gnuplot -e "data='$results'; plots='$plots'" bench/plots.gp

if [ $# -eq 0 ]; then
    {
        echo
        echo "On $(nproc) processors of type $(uname -m), $(date +%F); load $before before, $after after."
        echo
        cat "$results/table.md"
        echo
    } >"$results/page.md"
    begin='<!-- begin: written by bench.sh -->'
    sed -i -e "/^$begin\$/,/^<!-- end -->\$/{//!d}" -e "/^$begin\$/r $results/page.md" \
        docs/performance.md
fi
say "the table and the points are in $results, the plots in $plots"
