#!/bin/bash
# Fuzzes: scripts/fuzz.sh SECONDS [TARGET...], each target for that time, by default all targets.
# Installs missing packages on Debian. Each target's corpus stays in build-fuzz/fuzz/, and the next run
# starts from it. Exit status 1 when something was found.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. scripts/setup.sh
exec </dev/null

seconds=${1:-}
[[ $seconds =~ ^[1-9][0-9]*$ ]] || die "usage: $0 SECONDS [TARGET...]"
shift
targets=("$@")
[ $# -gt 0 ] || targets=(fuzz_request fuzz_bridge fuzz_replies fuzz_client)

place=build-fuzz/fuzz
sockets=$(mktemp -d)
trap 'rm -rf "$sockets"' EXIT
export TMPDIR=$sockets
export ASAN_OPTIONS=strict_string_checks=1:detect_leaks=1
export UBSAN_OPTIONS=print_stacktrace=1

# fuzz TARGET: fails when something was found.
fuzz() {
    local target=$1
    local options=(-max_total_time="$seconds" -timeout=25 -rss_limit_mb=2048
        -close_fd_mask=1 -print_final_stats=1 -artifact_prefix="$place/$target/findings/")
    local corpora=("$place/$target/corpus")
    # The first two read requests, and the longest request exceeds the buffer.
    case $target in
    fuzz_request | fuzz_bridge)
        options+=(-max_len=8192 -dict="$place/requests.dict")
        corpora+=("$place/seeds")
        ;;
    *) options+=(-max_len=256 -len_control=0) ;;
    esac
    # A leak check after each input needs a program that does one thing at a time; the others are
    # checked at their end.
    case $target in
    fuzz_bridge | fuzz_replies) options+=(-detect_leaks=0) ;;
    esac
    mkdir -p "$place/$target"/{corpus,findings}
    "build-fuzz/bin/$target" "${options[@]}" "${corpora[@]}" >"$place/$target/log" 2>&1
}

# last PATTERN TARGET: the last match of the pattern's \(\) in the target's log, or "-".
last() {
    local found
    found=$(sed -n "s%.*$1.*%\1%p" "$place/$2/log" | tail -n 1)
    echo "${found:--}"
}

# is_enough TARGET: at least ten executions a second, a tenth of the rate on a busy machine.
is_enough() { [ "$(last 'number_of_executed_units: \([0-9]*\)' "$1")" -ge $((10 * seconds)) ]; }

# report TARGET STATUS: prints one line; fails when the target has failed or made too few executions.
report() {
    local target=$1 artifact
    printf '%s: %s executions, %s/s, coverage %s (%s features), corpus %s, ' "$target" \
        "$(last 'number_of_executed_units: \([0-9]*\)' "$target")" \
        "$(last 'average_exec_per_sec: *\([0-9]*\)' "$target")" \
        "$(last ' cov: \([0-9]*\) ' "$target")" "$(last ' ft: \([0-9]*\) ' "$target")" \
        "$(last ' corp: \([0-9]*\)/' "$target")"
    if [ "$2" -eq 0 ] && is_enough "$target"; then
        echo "no findings"
        return
    elif [ "$2" -eq 0 ]; then
        echo "TOO FEW to have found anything"
        return 1
    fi
    artifact=$(last 'Test unit written to \([^ ]*\)' "$target")
    echo "FOUND, see $place/$target/log; again: build-fuzz/bin/$target $artifact"
    return 1
}

ensure_build_packages
ensure_packages clang libclang-rt-14-dev llvm # llvm names the functions in a finding
build fuzz "${targets[@]}" fuzz_seeds

say "fuzzing ${targets[*]}, $seconds s each, $(nproc) at a time"
pids=()
for target in "${targets[@]}"; do
    while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do
        sleep 1
    done
    fuzz "$target" &
    pids+=("$!")
done

found=0
for i in "${!targets[@]}"; do
    status=0
    wait "${pids[i]}" || status=$?
    report "${targets[i]}" "$status" || found=1
done
exit "$found"
