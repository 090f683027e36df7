#!/bin/bash
# Builds the service and the simulated panel, starts both on a private bus, sends the service some
# requests, and ends all that it started. Installs missing packages on Debian.
#
#   ./run.sh                                  sends scripts/tour.txt; at a terminal, then the lines
#                                             typed there, until quit or Ctrl-D
#   ./run.sh 'setBuzzerMode;1' getBuzzerMode  sends these requests instead
#
# Exit status 0: all requests were answered with status 0, and the service ended without an error.
# OVIK_BUILD_DIR names a build to use without building. OVIK_SERVER_UNDER is a command, with its
# options, to run the server under, such as valgrind. OVIK_LOCK_HELD means that the caller holds the
# lock of take_lock() already.
set -euo pipefail
[ -z "${OVIK_BUILD_DIR:-}" ] || OVIK_BUILD_DIR=$(realpath "$OVIK_BUILD_DIR")
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"
. scripts/setup.sh

bin=${OVIK_BUILD_DIR:-build}/bin
socket=/tmp/ovik_server.socket
lock=/tmp/ovik_server.test-$(id -u) # a folder that the tests lock too
lock_patience=600
patience=60

dir=''         # of the bus and the programs' output
declare -A pids # of started processes, by name
locked=''

is_running() { kill -0 "$1" 2>/dev/null; }

# start NAME COMMAND...: starts the command, with its output in a file. The command ends with this
# script, even if the script is killed, and does not hold the lock.
start() {
    local name=$1
    shift
    setpriv --pdeathsig TERM "$@" >"$dir/$name.log" 2>&1 </dev/null 3<&- 9>&- &
    pids[$name]=$!
}

stop() {
    local pid=${pids[$1]:-}
    if [ -n "$pid" ]; then
        kill "$pid" 2>/dev/null || true
        wait "$pid" 2>/dev/null || true
    fi
    unset "pids[$1]"
}

# attend COMMAND...: runs the command with this script's input. bash runs a signal's trap at once only
# during wait; a command in the foreground would delay the trap until its end. When the trap only sets
# "interrupted", the loop waits again.
attend() {
    "$@" <&3 &
    pids[attended]=$!
    local status interrupted=yes
    while [ -n "$interrupted" ]; do
        interrupted='' status=0
        wait "${pids[attended]}" || status=$?
    done
    unset "pids[attended]"
    return "$status"
}

# give_up NAME MESSAGE: prints the end of the program's output and fails.
give_up() {
    say "the last lines from the $1:"
    tail -n 20 "$dir/$1.log" >&2
    die "$2"
}

# await NAME CONDITION...: waits until the condition is true; fails if the program dies meanwhile.
await() {
    local name=$1 deadline=$((SECONDS + patience))
    shift
    until "$@"; do
        is_running "${pids[$name]}" || give_up "$name" "the $name has ended"
        [ $SECONDS -le $deadline ] || give_up "$name" "the $name is not ready after $patience s"
        sleep 0.1
    done
}

clean_up() {
    trap '' INT TERM HUP
    local pid
    # A signal can arrive after the start of a process and before its id is recorded.
    for pid in $(jobs -p); do
        [[ " ${pids[*]} " == *" $pid "* ]] || { kill "$pid" && wait "$pid"; } 2>/dev/null || true
    done
    stop attended
    # Only quit makes the server remove its socket.
    if [ -n "${pids[server]:-}" ]; then
        stop server
        rm -f "$socket"
    fi
    stop panel
    stop bus
    rm -rf "$dir"
    [ -z "$locked" ] || rm -f "$lock/run.sh.pid"
}

# Creates the folder if it is missing. Any user could have created it first, or a link in its place to
# another user's file, so check the folder before opening anything in it.
ensure_lock_folder() {
    local owner mode
    mkdir -m 700 "$lock" 2>/dev/null || true
    read -r owner mode < <(stat -c '%u 0x%f' "$lock") || true
    # A directory, not writable by its group and others.
    if [ "$owner" != "$(id -u)" ] || (((mode & 8#170022) != 8#040000)); then
        die "$lock is not a folder that only you can write to: remove it, or have root remove it"
    fi
}

# Only the holder of the lock may run a server. The tests take the lock as well. run.sh also writes its
# process id: a run.sh at a terminal may stay open for hours, so a second run.sh fails instead of waiting.
take_lock() {
    local holder=''
    [ -z "${OVIK_LOCK_HELD:-}" ] || return 0
    ensure_lock_folder
    exec 9<"$lock"
    if ! flock --nonblock 9; then
        read -r holder 2>/dev/null <"$lock/run.sh.pid" || true
        ! is_running "$holder" || die "another run.sh, process $holder, is running: end it first"
        say "waiting for tests that use $socket to end, $((lock_patience / 60)) minutes at most"
        attend flock --timeout "$lock_patience" 9 ||
            die "$lock is still locked: end the process that uses it"
    fi
    locked=yes
    echo $$ >"$lock/run.sh.pid"
}

# answers SECONDS [--platform]: the server, or the platform through it, answers within that time.
answers() { "$bin/ovikctl" wait --timeout "$@" 2>/dev/null; }

# A second server would take the socket away from the first.
refuse_second_server() {
    local status=0
    answers 0.1 || status=$?
    [ $status -eq 8 ] || # no service listens
        die "another server listens at $socket: end it first, e.g. $bin/ovikctl quit"
}

start_bus() {
    # A bus address cannot contain blanks.
    export DBUS_SYSTEM_BUS_ADDRESS=unix:path=${dir// /%20}/bus
    cat >"$dir/bus.conf" <<END
<busconfig>
  <type>system</type>
  <listen>$DBUS_SYSTEM_BUS_ADDRESS</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
END
    start bus dbus-daemon --nofork --nopidfile --nosyslog --print-address \
        --config-file="$dir/bus.conf"
    await bus grep -qs ^unix: "$dir/bus.log"
}

start_all() {
    say "starting a bus, the simulated panel and the server"
    start_bus
    start panel "$bin/ovik_panel_sim"
    await panel grep -qs '^ovik_panel_sim: ready' "$dir/panel.log"
    # shellcheck disable=SC2086 # several words
    start server ${OVIK_SERVER_UNDER:-} "$bin/ovik_server"
    await server answers 1
    await server answers 5 --platform
}

send_tour() {
    local tour
    mapfile -t tour < <(grep -v -e '^#' -e '^$' scripts/tour.txt)
    say "sending the ${#tour[@]} requests of scripts/tour.txt"
    attend "$bin/ovikctl" raw -- "${tour[@]}"
}

send_typed() {
    say "type requests, such as getBuzzerMode; quit or Ctrl-D ends"
    trap 'interrupted=yes' INT # Ctrl-C clears the line, or ends the request
    attend "$bin/ovikctl"
}

send_all() {
    if [ $# -gt 0 ]; then
        say "sending the requests of the command line"
        attend "$bin/ovikctl" raw -- "$@"
    elif [ -t 0 ] && [ -t 1 ]; then
        send_tour && send_typed
    else
        send_tour
    fi
}

end_server() {
    local status=0 deadline=$((SECONDS + patience))
    say "ending the server with quit"
    # If the requests included quit, no server is left to answer this one.
    "$bin/ovikctl" --timeout "$patience" raw quit 2>/dev/null || true
    while is_running "${pids[server]}"; do
        [ $SECONDS -le $deadline ] || give_up server "the server does not end"
        sleep 0.1
    done
    wait "${pids[server]}" || status=$?
    unset 'pids[server]'
    [ "$status" -eq 0 ] || give_up server "the server has ended with status $status"
}

if [ -z "${OVIK_BUILD_DIR:-}" ]; then
    ensure_build_packages
    build dev ovik_server ovik_panel_sim ovikctl
fi

exec 3<&0
dir=$(mktemp -d -t ovik_run.XXXXXX)
trap clean_up EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

take_lock
refuse_second_server
start_all
outcome=0
send_all "$@" || outcome=1
end_server
[ $outcome -eq 0 ] || give_up server "not each request was answered with status 0"
say "all went well"
