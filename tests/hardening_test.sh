#!/bin/bash
# hardening_test.sh READELF PROGRAM...: each program is hardened, as it was linked.
set -euo pipefail
export LC_ALL=C
readelf=$1
shift
failures=0

# expect PROGRAM WHAT FILE PATTERN / refuse ...: a line of FILE matches the pattern, or none does.
expect() {
    grep -Eq -- "$4" "$3" || failed "$1" "$2"
}
refuse() {
    ! grep -E -- "$4" "$3" || failed "$1" "$2"
}
failed() {
    echo "FAILED: $1: $2"
    failures=$((failures + 1))
}

dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
for program; do
    for table in file-header program-headers dynamic dyn-syms; do
        "$readelf" --wide "--$table" "$program" >"$dir/$table"
    done
    # Symbols defined here that are neither local nor hidden, except the standard library's templates,
    # whose headers make them visible.
    "$readelf" --wide --syms "$program" |
        awk '$5 != "LOCAL" && $6 == "DEFAULT" && $7 != "UND" &&
            $8 !~ /^_Z(T[A-Z]|Z)?(P?F)?N?K?(S[tabdios]|9__gnu_cxx)/ { print $8 }' >"$dir/visible"

    expect "$program" "is position independent" "$dir/file-header" 'Type: +DYN'
    expect "$program" "is an executable of that kind" "$dir/dynamic" 'FLAGS_1.*PIE'
    expect "$program" "has data that is read-only after relocation" "$dir/program-headers" GNU_RELRO
    expect "$program" "binds every symbol at its start" "$dir/dynamic" 'FLAGS_1.*NOW'
    expect "$program" "has a stack" "$dir/program-headers" GNU_STACK
    refuse "$program" "does not execute its stack" "$dir/program-headers" 'GNU_STACK.*RWE'
    refuse "$program" "has no page that can be written and executed" "$dir/program-headers" \
        'LOAD.*RWE'
    expect "$program" "protects its stack" "$dir/dyn-syms" '__stack_chk_fail'
    expect "$program" "checks libc calls" "$dir/dyn-syms" '__[a-z]+_chk(@|$)'
    refuse "$program" "hides its own symbols" "$dir/visible" \
        '^(_Z|main$|ovik_|logOVIK|onCommandResult)'
done
[ "$failures" -eq 0 ] && echo "all hardened: $*"
