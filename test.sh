#!/bin/bash
# Builds everything and runs the tests: ./test.sh [PRESET] [CTEST-OPTION...], by default preset dev.
# Installs missing packages on Debian.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"
. scripts/setup.sh

preset=dev
if [[ ${1:-} == [!-]* ]]; then
    preset=$1
    shift
fi

ensure_build_packages
ensure_test_packages
ensure_packages valgrind
build "$preset"
say "testing, preset $preset (some minutes: the longest waits are among what is tested)"
# One after the other: only one server can run on a machine, and some tests measure time.
exec ctest --preset "$preset" "$@"
