#!/bin/bash
# size_test.sh STRIP PROGRAM KIB: the stripped program is smaller than KIB KiB.
set -euo pipefail
stripped=$(mktemp)
trap 'rm -f "$stripped"' EXIT
"$1" -o "$stripped" "$2"
size=$(stat -c %s "$stripped")
echo "$size bytes, $3 KiB are allowed"
[ "$size" -lt $(($3 * 1024)) ]
