#!/bin/bash
# Generates files from the sources. The table of commands gives the lists in docs/protocol.md, with
# examples that the service really answered, and in the manual page ovik_protocol(7). The headers of the
# contracts give tests/golden/contracts.txt. Run it after a change of the table or of a contract, and
# read the difference.
#
#   scripts/generate.sh           writes the files that have changed
#   scripts/generate.sh --check   fails when a file generated from the table would change
#
# OVIK_BUILD_DIR names a build to use without building.
set -euo pipefail
[ -z "${OVIK_BUILD_DIR:-}" ] || OVIK_BUILD_DIR=$(realpath "$OVIK_BUILD_DIR")
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. scripts/setup.sh

[ $# -eq 0 ] || [ "$*" = --check ] || die "usage: scripts/generate.sh [--check]"
if [ -z "${OVIK_BUILD_DIR:-}" ]; then
    ensure_build_packages
    build dev ovik_generate ovik_server ovik_panel_sim ovikctl contracts_test
    OVIK_BUILD_DIR=$PWD/build
fi
export OVIK_BUILD_DIR
generate=$OVIK_BUILD_DIR/bin/ovik_generate

made=$(mktemp -d -t ovik_generate.XXXXXX)
trap 'rm -rf "$made"' EXIT

mapfile -t requests < <("$generate" requests)
./run.sh "${requests[@]}" >"$made/responses"
"$generate" files . "$made/files" <"$made/responses"

# The counters change while the examples run.
steady() { sed -E 's/(Counter  ->  0 )[0-9]+/\1.../' "$1"; }

status=0
while IFS= read -r -d '' file; do
    file=${file#"$made/files/"}
    ! diff -u --label "$file" --label "$file, generated" <(steady "$file") \
        <(steady "$made/files/$file") >"$made/diff" || continue
    if [ $# -eq 0 ]; then
        cp "$made/files/$file" "$file"
        say "written: $file"
    else
        cat "$made/diff"
        status=1
    fi
done < <(find "$made/files" -type f -print0)
[ $# -gt 0 ] || OVIK_WRITE_GOLDEN=yes quietly "$OVIK_BUILD_DIR/bin/contracts_test" ||
    die "cannot write tests/golden/contracts.txt, see above"
[ $status -eq 0 ] || die "out of date: run scripts/generate.sh"
