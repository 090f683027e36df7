#!/bin/bash
# Makes the parts of docs/protocol.md and of the manual page ovik_protocol(7) that come from the table
# of commands, with examples that the service really answered. Run it after a change of the table.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. scripts/setup.sh

ensure_build_packages
build dev reference_test
say "writing the reference"
OVIK_WRITE_REFERENCE=yes quietly build/bin/reference_test || die "cannot make it, see above"
git diff --stat -- docs packaging/man >&2
