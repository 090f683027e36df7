#!/bin/bash
# Makes what comes from the table of commands: its parts of docs/protocol.md and of the manual page
# ovik_protocol(7), with examples that the service really answered, and ovikctl's completion for bash
# and zsh. Run it after a change of the table.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. scripts/setup.sh

ensure_build_packages
build dev reference_test ovikctl
say "writing the reference"
OVIK_WRITE_REFERENCE=yes quietly build/bin/reference_test || die "cannot make it, see above"
build/bin/ovikctl completion bash >client/ovikctl/completion/ovikctl
build/bin/ovikctl completion zsh >client/ovikctl/completion/_ovikctl
git diff --stat -- docs packaging/man client >&2
