#!/bin/bash
# Tests run.sh as its user sees it: run_sh_test.sh SOURCE_DIR, with OVIK_BUILD_DIR set to a build.
set -euo pipefail
source_dir=$1
run=$source_dir/run.sh
bin=$OVIK_BUILD_DIR/bin
socket=/tmp/ovik_server.socket
lock=/tmp/ovik_server.test-$(id -u)
patience=20

work=$(mktemp -d -t ovik_run_sh_test.XXXXXX)
mkdir "$work/tmp" "$work/a directory"
# In the environment of all processes that run.sh starts, so that leftovers can be found.
mark=OVIK_RUN_SH_TEST=$$
failures=0

clean_up() {
    # Closes the terminal, if there is one, which ends the programs in it.
    mapfile -t started < <(jobs -p)
    [ ${#started[@]} -eq 0 ] || kill "${started[@]}" 2>/dev/null || true
    rm -rf "$work"
}
trap clean_up EXIT

fail() {
    printf 'FAILED: %s: %s\n' "$situation" "$*"
    sed 's/^/    /' "$work/out" "$work/err"
    failures=$((failures + 1))
}

# check WHAT COMMAND...: reports WHAT as failed when the command fails.
check() {
    local what=$1
    shift
    "$@" || fail "$what"
}

# exits STATUS COMMAND...
exits() {
    local expected=$1 status=0
    shift
    "$@" || status=$?
    [ "$status" -eq "$expected" ] || fail "exit status $status instead of $expected"
}

await() {
    local deadline=$((SECONDS + patience))
    until "$@"; do
        [ $SECONDS -le $deadline ] || return 1
        sleep 0.05
    done
}

# This test holds the lock for run.sh, so that no other test's server starts in between.
as_lock_holder() {
    exec env "$mark" OVIK_LOCK_HELD=1 TMPDIR="$work/tmp" XDG_STATE_HOME="$work/state" \
        "$@" 9>&- >"$work/out" 2>"$work/err"
}

run_sh() { (as_lock_holder "$run" "$@" </dev/null); }
run_sh_that_locks() { (as_lock_holder env -u OVIK_LOCK_HELD "$run" </dev/null); }

same() { [ "$1" = "$2" ]; }
prints() { grep -qF -- "$1" "$work/out"; }
complains() { grep -qF -- "$1" "$work/err"; }
# Before the prompt, the editor does not control the terminal yet, and a Ctrl-D is lost.
prompts_again() { [ "$(tail -c 9 "$work/out")" = 'ovikctl> ' ]; }
nothing_runs() { ! grep -qsz "^$mark\$" /proc/[0-9]*/environ; }

nothing_is_left() {
    check "no process is left" await nothing_runs
    check "no file is left" same "$(ls -A "$work/tmp")" ''
    check "no socket is left" test ! -e "$socket"
}

the_tour() {
    local tour
    tour=$(sed -e '/^#/d' -e '/^$/d' "$source_dir/scripts/tour.txt")
    exits 0 run_sh
    check "sends the tour, and quit" same "$(sed 's/ -> .*//' "$work/out")" "$tour"$'\nquit'
    for step in "starting a bus" "sending the" "ending the server" "all went well"; do
        check "prints: $step" complains "$step"
    done
    check "each response has status 0" same "$(grep -cv -e ' -> 0$' -e ' -> 0 ' "$work/out")" 0
    nothing_is_left
}

requests_of_the_command_line() {
    exits 0 run_sh 'setBuzzerMode;1' getBuzzerMode
    check "sends these instead" same "$(cat "$work/out")" \
        $'setBuzzerMode;1 -> 0 0\ngetBuzzerMode -> 0 1\nquit -> 0'
    nothing_is_left
}

a_quit_among_the_requests() {
    exits 0 run_sh getBuzzerMode quit
    check "needs no other" same "$(cat "$work/out")" $'getBuzzerMode -> 0 0\nquit -> 0'
    nothing_is_left
}

a_request_that_is_refused() {
    exits 1 run_sh 'setHWPluginLedValue;0;0;1' getBuzzerMode
    check "goes on with the next" same "$(cat "$work/out")" \
        $'setHWPluginLedValue;0;0;1 -> -12\ngetBuzzerMode -> 0 0\nquit -> 0'
    check "shows the server's output" complains 'OVIK_SERVER: setHWPluginLedValue error -12'
    nothing_is_left
}

a_link_to_a_place_with_a_blank() {
    cp -R "$source_dir/run.sh" "$source_dir/scripts" "$work/a directory"
    ln -s "a directory/run.sh" "$work/a link"
    run="$work/a link" exits 0 run_sh getBuzzerMode
    check "answers" prints 'getBuzzerMode -> 0 0'
    nothing_is_left
}

another_server_that_lives() {
    local server
    DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent "$bin/ovik_server" >/dev/null 2>&1 9>&- &
    server=$!
    check "the other listens" await "$bin/ovikctl" wait --timeout 1
    exits 1 run_sh
    check "is reported" complains "another server listens at $socket"
    check "nothing is printed" same "$(cat "$work/out")" ''
    check "nothing is started" nothing_runs
    check "the other lives on" same "$("$bin/ovikctl" raw getBuzzerMode 2>/dev/null)" 'getBuzzerMode -> -1'
    "$bin/ovikctl" quit
    exits 0 wait "$server"
    nothing_is_left
}

# Starts run.sh at a terminal whose keys are typed into descriptor 5, and waits for the prompt.
open_terminal() {
    mkfifo "$work/keys"
    # A background process ignores Ctrl-C unless the signal is reset. A shell in between would get
    # Ctrl-C as well, and some shells then return another exit status.
    as_lock_holder env --default-signal=INT script -qefc "exec '$run'" /dev/null <"$work/keys" &
    terminal=$!
    exec 5>"$work/keys"
    rm "$work/keys"
    check "prompts" await prints 'ovikctl> '
    check "the tour comes first" prints 'serviceCommand;wifi;scan;... -> 0 0;wifi;scan;'
}

close_terminal() {
    exits "$1" wait "$terminal"
    exec 5>&-
    nothing_is_left
}

a_terminal() {
    open_terminal
    echo 'setBuzzerMode;3' >&5
    check "answers" await prints 'setBuzzerMode;3 -> 0 0'
    echo 'getBuzzerMode;' >&5
    check "remembers" await prints 'getBuzzerMode; -> 0 3'
    check "lets others be served meanwhile" same \
        "$("$bin/ovikctl" --timeout 5 getBuzzerMode)" 3
    echo 'nonsense' >&5
    check "reports an unknown command" await prints 'not expected: nonsense'
    echo 'quit' >&5
    close_terminal 0
}

ctrl_d_at_a_terminal() {
    open_terminal
    printf '\004' >&5
    close_terminal 0
}

ctrl_c_at_a_terminal() {
    open_terminal
    printf 'setBuzzerMode;7\003' >&5
    echo 'getBuzzerMode;' >&5
    check "clears the line" await prints 'getBuzzerMode; -> 0 1'
    check "prompts again" await prompts_again
    printf '\004' >&5
    close_terminal 0
}

# ends_while_a_request_waits SIGNAL STATUS
ends_while_a_request_waits() {
    local requests=(getBuzzerMode)
    # Each scan takes half a second.
    for _ in {1..40}; do requests+=('serviceCommand;wifi;scan;{}'); done
    as_lock_holder env --default-signal=INT "$run" "${requests[@]}" </dev/null &
    check "is under way" await prints 'getBuzzerMode -> 0 0'
    kill "-$1" $!
    exits "$2" wait $!
    check "does not wait for the rest" test "$(grep -c scan "$work/out")" -lt 10
    nothing_is_left
}
a_termination_while_a_request_waits() { ends_while_a_request_waits TERM 143; }
an_interrupt_while_a_request_waits() { ends_while_a_request_waits INT 130; }

a_lock_that_a_test_holds() {
    as_lock_holder env -u OVIK_LOCK_HELD "$run" </dev/null &
    check "is waited for" await complains "waiting for tests that use $socket"
    kill -TERM $!
    exits 143 wait $!
    nothing_is_left
}

a_lock_that_another_run_sh_holds() {
    echo $$ >"$lock/run.sh.pid"
    exits 1 run_sh_that_locks
    rm "$lock/run.sh.pid"
    check "is not waited for" complains "another run.sh, process $$, is running"
    nothing_is_left
}

a_lock_folder_that_others_can_replace_or_write_to() {
    local make before place=$work/lock
    local makes=("ln -s $work/kept/file" "ln -s $work/kept" "cp $work/kept/file" "mkdir -m 720"
        "mkdir -m 702")
    [ "$(id -u)" -ne 0 ] || makes+=("install -d -m 700 -o nobody")
    cp -R "$source_dir/run.sh" "$source_dir/scripts" "$work/a directory"
    sed -i "s|^lock=.*|lock='$place'|" "$work/a directory/run.sh"
    for make in "${makes[@]}"; do
        mkdir "$work/kept"
        echo content >"$work/kept/file"
        $make "$place"
        before=$(files_of_the_lock)
        run="$work/a directory/run.sh" exits 1 run_sh_that_locks
        check "$make: is refused" complains "$place is not a folder that only you can write to"
        check "$make: nothing is written" same "$(files_of_the_lock)" "$before"
        rm -r "$place" "$work/kept"
    done
    nothing_is_left
}
files_of_the_lock() { find -L "$work/lock" "$work/kept" -printf '%p %s %t\n'; }

# As in run.sh: another user could have created the folder, or a link in its place.
mkdir -m 700 "$lock" 2>/dev/null || true
if [ -L "$lock" ] || [ ! -O "$lock" ] || [ -n "$(find "$lock" -maxdepth 0 -perm /022)" ]; then
    echo "$lock is not a folder that only you can write to: remove it, or have root remove it"
    exit 1
fi
exec 9<"$lock"
flock --nonblock 9 || {
    printf 'waiting for another test that holds %s\n' "$lock"
    flock 9
}
for situation in the_tour requests_of_the_command_line a_quit_among_the_requests \
    a_request_that_is_refused a_link_to_a_place_with_a_blank another_server_that_lives \
    a_terminal ctrl_d_at_a_terminal ctrl_c_at_a_terminal a_termination_while_a_request_waits \
    an_interrupt_while_a_request_waits \
    a_lock_that_a_test_holds a_lock_that_another_run_sh_holds \
    a_lock_folder_that_others_can_replace_or_write_to; do
    printf '%s\n' "$situation"
    # Output of the last situation must not count for this one.
    : >"$work/out"
    : >"$work/err"
    "$situation"
done
[ "$failures" -eq 0 ]
