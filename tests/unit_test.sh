#!/bin/bash
# unit_test.sh PACKAGING_DIR PROGRAM: systemd accepts the unit, alone and with each of the example
# drop-ins, and rates the shipped unit as hardened. Exit status 77: skipped.
set -euo pipefail
packaging=$1
program=$2
command -v systemd-analyze >/dev/null || {
    echo "skipped: no systemd-analyze on this machine (package systemd)"
    exit 77
}

dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
failures=0

# unit NAME [DROP-IN]: makes a copy of the unit that runs the built program; prints its path.
unit() {
    local copy=$dir/$1/ovik_server.service file
    mkdir -p "$copy.d"
    cp "$packaging/ovik_server.service" "$copy"
    [ $# -eq 1 ] || cp "$2" "$copy.d/"
    for file in "$copy" "$copy.d"/*.conf; do
        [ ! -e "$file" ] || sed -i -e "s%^ExecStart=..*%ExecStart=$program%" \
            -e "s%^ExecStartPre=+%&${program%/*}/%" "$file"
    done
    echo "$copy"
}

# holds WHAT COMMAND...: reports WHAT as failed when the command fails.
holds() {
    local what=$1
    shift
    "$@" >"$dir/output" 2>&1 || {
        echo "FAILED: $what"
        cat "$dir/output"
        failures=$((failures + 1))
    }
}

# The manual page is not installed here, and faults of other units do not matter.
understood() { systemd-analyze verify --man=no --recursive-errors=no "$1"; }
# The exposure is at most 1.1 of 10, by the scale of systemd 252.
hardened() { systemd-analyze security --offline=yes --threshold=11 "$1"; }

shipped=$(unit shipped)
holds "the unit is understood" understood "$shipped"
holds "the unit is hardened" hardened "$shipped"
for example in "$packaging"/examples/*.conf; do
    name=$(basename "$example")
    holds "$name is understood" understood "$(unit "$name" "$example")"
done
holds "group access leaves the unit hardened" hardened "$dir/group-access.conf/ovik_server.service"
[ "$failures" -eq 0 ]
