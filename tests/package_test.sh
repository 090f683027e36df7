#!/bin/bash
# package_test.sh SOURCE_DIR CACHE_DIR: makes the Debian packages, installs them into a clean Debian with
# systemd and a system bus, runs the service there against the simulated panel, and removes the packages.
# Needs root. Exit status 77: skipped. CACHE_DIR keeps the clean Debian and the packages that ours depend
# on for the next run.
set -euo pipefail
source_dir=$1
cache=$2

skip() {
    echo "skipped: $*"
    exit 77
}
[ "$(id -u)" -eq 0 ] || skip "only root can run a system in a folder"
unshare --mount --pid --fork --uts --ipc --cgroup sh -c \
    'mount -t tmpfs tmpfs /mnt && mount -t proc proc /mnt && mount -t cgroup2 cgroup2 /mnt' ||
    skip "no namespaces here, or nothing may be mounted in them"

cd "$source_dir"
# shellcheck source=scripts/setup.sh
. scripts/setup.sh
patience=60
failures=0

# --- A separate system ---

# The machine's sources of Debian packages: "URI RELEASE COMPONENT" in each line.
sources() {
    # shellcheck disable=SC2016 # apt's own variables
    apt-get indextargets --format '$(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' "$@" | sort -u
}

make_clean_root() {
    local release uri
    release=$(. /etc/os-release && echo "$VERSION_CODENAME")
    uri=$(sources "Codename: $release" | cut -d ' ' -f 1 | head -n 1)
    [ -n "$uri" ] || die "this machine has no Debian sources: run apt-get update"
    say "making a clean Debian (once; some minutes)"
    rm -rf "$cache/new"
    mkdir -p "$cache/archives/partial"
    quietly debootstrap --variant=minbase --include=systemd-sysv,dbus --cache-dir="$cache/archives" \
        "$release" "$cache/new" "$uri" || die "cannot make it, see above"
    sources | sed 's/^/deb /' >"$cache/new/etc/apt/sources.list"
    echo 'force-unsafe-io' >"$cache/new/etc/dpkg/dpkg.cfg.d/quick"
    rm -f "$cache/new"/var/cache/apt/archives/*.deb
    cp --dereference /etc/resolv.conf "$cache/new/etc/resolv.conf"
    quietly chroot "$cache/new" apt-get update || die "cannot read the package lists, see above"
    tar -C "$cache/new" -cf "$cache/root.tar.part" .
    mv "$cache/root.tar.part" "$cache/root.tar"
    rm -rf "$cache/new"
}

# become_system ROOT PACKAGES ARCHIVES: becomes systemd in that folder, in namespaces of its own.
become_system() {
    set -e
    local root=$1 device
    mount --make-rprivate /
    mount --bind "$root" "$root"
    mount --bind "$2" "$root/mnt"
    mount --bind "$3" "$root/var/cache/apt/archives"
    mount -t proc proc "$root/proc"
    mount -t sysfs -o ro sysfs "$root/sys"
    mount -t cgroup2 cgroup2 "$root/sys/fs/cgroup"
    mount -t tmpfs -o mode=755 tmpfs "$root/run"
    mount -t tmpfs -o mode=1777 tmpfs "$root/tmp"
    mount -t tmpfs -o mode=755 tmpfs "$root/dev"
    for device in null zero full random urandom tty; do
        touch "$root/dev/$device"
        mount --bind "/dev/$device" "$root/dev/$device"
    done
    mkdir "$root/dev/shm"
    ln -s pts/ptmx "$root/dev/ptmx"
    cd "$root"
    pivot_root . media
    umount -l /media
    exec env -i container=test PATH=/usr/sbin:/usr/bin:/sbin:/bin /sbin/init
}

within() {
    nsenter --target "$init" --all env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin \
        DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 "$@"
}

boot_root() {
    unshare --mount --pid --fork --uts --ipc --cgroup --kill-child \
        bash -c "$(declare -f become_system)"'; become_system "$@"' - \
        "$root" "$PWD/dist" "$cache/archives" </dev/null >"$root.console" 2>&1 &
    unshare=$!
    # The first child of unshare, once it exists and has become systemd.
    await is_booting || give_up "the system does not start"
    await booted || give_up "the system does not come up"
}
is_booting() {
    init=$(cat "/proc/$unshare/task/$unshare/children" 2>/dev/null) && init=${init%% *} &&
        [ -n "$init" ] && [ "$(cat "/proc/$init/comm" 2>/dev/null)" = systemd ]
}
# Some units may fail, because this system is not a full machine.
booted() { within systemctl is-system-running 2>/dev/null | grep -q -e running -e degraded; }
give_up() {
    cat "$root.console"
    die "$1"
}

unshare=''
root=''
clean_up() {
    [ -z "$unshare" ] || kill -KILL "$unshare" 2>/dev/null || true
    [ -z "$unshare" ] || wait "$unshare" 2>/dev/null || true
    [ -z "$root" ] || rm -rf "$root" "$root".{log,console,found}
}
trap clean_up EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# --- Checks ---

await() {
    local deadline=$((SECONDS + patience))
    until "$@"; do
        [ $SECONDS -le $deadline ] || return 1
        sleep 0.2
        : >"$root.log" # keep the output of the last attempt only
    done
}

# check WHAT COMMAND...: reports WHAT as failed when the command fails.
check() {
    local what=$1
    shift
    : >"$root.log"
    "$@" >>"$root.log" 2>&1 || {
        printf 'FAILED: %s: %s\n' "$situation" "$what"
        sed 's/^/    /' "$root.log"
        within systemctl --no-pager status ovik_server 2>&1 | sed 's/^/    /' || true
        failures=$((failures + 1))
    }
}

# answers REQUEST PATTERN: the response matches.
answers() { { within timeout 30 ovikctl raw "$1" || true; } | grep -x -e "$1 -> $2"; }
is() { [ "$(within systemctl "is-$1" ovik_server)" = "$2" ]; }
has_property() { within systemctl show --property="$1" --value ovik_server | grep -qx -e "$2"; }
has_logged() { within journalctl --no-pager --unit=ovik_server | grep -F "$1"; }
main_pid() { within systemctl show --property=MainPID --value ovik_server; }
is_another_than() { [ "$(main_pid)" != 0 ] && [ "$(main_pid)" != "$1" ]; }
# as_nobody GROUP COMMAND...
as_nobody() { within setpriv --reuid=nobody --regid="$1" --clear-groups "${@:2}"; }
asks_as() { as_nobody "$1" ovikctl getBrightness; }
is_refused() { { asks_as "$1" 2>&1 || true; } | grep "may not use"; }
fails() { ! "$@"; }

path=/tmp/ovik_server.socket
is_linked() {
    within ls -l "$path"
    [ "$(within stat --format='%U %N' "$path")" = \
        "root '$path' -> '/run/ovik_server/ovik_server.socket'" ]
}
dangles() { is_linked && ! within test -e "$path"; }
is_reached() { is_linked && answers getBrightness '0 77'; }
nothing_is_there() { ! within test -e "$path" && ! within test -L "$path"; }

# finds_nothing COMMAND...: the command succeeds and prints nothing.
finds_nothing() { "$@" >"$root.found" && cat "$root.found" && [ ! -s "$root.found" ]; }
# Processes come and go during the search.
nothing_runs() {
    finds_nothing within sh -c '{ cat /proc/[0-9]*/comm 2>/dev/null || true; } | sed /ovik/!d'
}
nothing_is_left() {
    finds_nothing within find / /run /tmp -xdev -path /mnt -prune -o -iname '*ovik*' -print
}

lintian_is_quiet() {
    lintian --allow-root --pedantic --fail-on error,warning,pedantic \
        dist/*_"$(dpkg --print-architecture)".deb
}

packages_are_made() {
    check "nothing to remark" lintian_is_quiet
}

installed() {
    local packages
    mapfile -t packages < <(cd dist && printf '/mnt/%s\n' *_"$(dpkg --print-architecture)".deb)
    as_nobody nogroup mkdir "$path" # takes the name before the packages are installed
    check "with what they depend on" within apt-get install --yes --no-install-recommends \
        "${packages[@]}"
    within test -e /usr/sbin/ovik_server || exit 1
    check "is enabled" is enabled enabled
    check "runs" is active active
    check "answers that there is no platform" await answers getBrightness -1
    check "runs what was installed" within test "/proc/$(main_pid)/exe" -ef /usr/sbin/ovik_server
    for page in man8/ovik_server.8 man7/ovik_protocol.7 man1/ovikctl.1 man1/ovik_panel_sim.1 \
        man3/ovik_client.3; do
        check "has the page $page" within test -s "/usr/share/man/$page.gz"
    done
    check "names its page" has_property Documentation '.*man:ovik_server(8).*'
    check "has its path linked" is_linked
    check "starts after the bus" has_property After '.*\<dbus.service\>.*'
    check "has the client library where programs look" within sh -c \
        'ldconfig -p | grep -q "libovik_client.so.1 "'
    check "has its header" within test -s /usr/include/ovik/ovik_client.h
    check "has the bus interfaces" within test -s /usr/share/dbus-1/interfaces/com.wenu.OVIK.xml
}

# A platform installs the policy for its own name; the system starts the platform again with the bus.
the_platform_arrives() {
    within tee /etc/dbus-1/system.d/panel.conf >/dev/null <<'END'
<busconfig>
  <policy user="root">
    <allow own="com.wenu.OVIK"/>
    <allow send_destination="com.wenu.OVIK"/>
  </policy>
</busconfig>
END
    check "the bus takes the policy" within systemctl reload dbus
    check "starts" within systemd-run --quiet --unit=panel -p Restart=always -p RestartSec=1 \
        -p StartLimitIntervalSec=0 ovik_panel_sim
    check "is adopted" await answers getBrightness '0 [0-9]*'
    check "carries out a write" answers 'saveBrightness;77' '0 [0-9]*'
    check "returns the written value" answers getBrightness '0 77'
}

killed() {
    local before
    before=$(main_pid)
    within systemctl kill --signal=KILL ovik_server
    check "starts again" await is_another_than "$before"
    check "answers" await answers getBrightness '0 [0-9]*'
}

# The service cannot remove a folder at its path.
the_socket_cannot_be_had() {
    within systemctl stop ovik_server
    within mkdir -p /run/ovik_server/ovik_server.socket
    within systemctl start ovik_server
    check "tries again" await has_property NRestarts '[1-9][0-9]*'
    check "logs the reason" await has_logged 'ovik_server start failed'
    check "fails" await has_logged status=1/FAILURE
    within rmdir /run/ovik_server/ovik_server.socket
    check "answers as soon as it can" await answers getBrightness '0 [0-9]*'
}

# memory FIELD: the service's, in KiB.
memory() { within sed -n "s/^$1:[^0-9]*\([0-9]*\) kB\$/\1/p" "/proc/$(main_pid)/status"; }
has_been_above() { memory VmHWM && [ "$(memory VmHWM)" -gt "$1" ]; }
is_below() { memory VmRSS && [ "$(memory VmRSS)" -lt "$1" ]; }

# Under the bus policy that Debian ships.
the_bus_has_a_hostile_user() {
    local pid before burst
    check "compiles" cc tests/bus_stranger.c -lsystemd -o "$root/opt/bus_stranger"
    pid=$(main_pid)
    for burst in 1 2 3 4; do
        check "burst $burst of descriptors" as_nobody nogroup /opt/bus_stranger "$pid" descriptors 8
        check "answers after burst $burst" answers getBrightness '0 77'
    done
    before=$(memory VmRSS)
    check "sends 32 MB" as_nobody nogroup /opt/bus_stranger "$pid" signal 32000000
    check "the service reads them" await has_been_above $((before + 32000))
    check "gives the memory back" await is_below $((before + 8192))
    check "answers" answers getBrightness '0 77'
    check "was not started again" test "$(main_pid)" = "$pid"
}

# Another user takes the path whenever it is free, and answers every client.
install_stranger() {
    cat >"$root/opt/stranger" <<'END'
use Socket;
my $path = "/tmp/ovik_server.socket";
my %attacks = (
    folder => sub { mkdir $path },
    full_folder => sub { mkdir $path and open my $file, ">", "$path/file" },
    dangling_link => sub { symlink "/nowhere", $path },
    right_link => sub { symlink "/run/ovik_server/ovik_server.socket", $path },
    socket => sub {
        socket my $server, AF_UNIX, SOCK_SEQPACKET, 0;
        return unless bind $server, pack_sockaddr_un $path and listen $server, 9 and not fork;
        while (accept my $client, $server) {
            sysread $client, my $request, 5000;
            syswrite $client, "0 66\0";
        }
    });
$attacks{$ARGV[0]}->() while 1;
END
}
is_taken_by() { [ "$(within stat --format=%U "$path")" = "$1" ] && ! is_linked; }

the_path_is_attacked() {
    local attack
    install_stranger
    for attack in folder full_folder dangling_link right_link socket; do
        within systemctl stop ovik_server
        within rm -rf "$path"
        within systemd-run --quiet --collect --unit=stranger --uid=nobody perl /opt/stranger "$attack"
        check "$attack: comes first" await is_taken_by nobody
        check "$attack: starts" within systemctl start ovik_server
        check "$attack: is reached" await is_reached
        check "$attack: restarts" within systemctl restart ovik_server
        check "$attack: is reached after the restart" await is_reached
        check "$attack: stops" within systemctl stop ovik_server
        check "$attack: no other process answers" fails within ovikctl getBrightness
        check "$attack: the link stays" dangles
        within systemctl stop stranger
    done
    check "directories are moved aside" within sh -c 'rm -r /tmp/ovik_server.*/'
    within sh -c "rm $path && mkdir $path && mount -t tmpfs tmpfs $path"
    check "a mount: starts" within systemctl start ovik_server
    check "a mount: is reached" await is_reached
}

inode_of_its_folder() { within stat --format=%i /run/ovik_server; }

a_second_is_started_by_hand() {
    local folder
    folder=$(inode_of_its_folder)
    within systemd-run --quiet --collect --unit=second ovik_server
    check "takes the path" await is_taken_by root
    check "the first restarts" within systemctl restart ovik_server
    check "is reached again" await is_reached
    check "its folder is the same" test "$(inode_of_its_folder)" = "$folder"
    within systemctl stop second
}

# As at boot, and as every day on a system that removes old files from /tmp; here it removes all files.
the_system_tidies_up() {
    within tee /etc/tmpfiles.d/tmp.conf >/dev/null <<<'q /tmp 1777 root root 0'
    within systemctl stop ovik_server
    within rm "$path"
    as_nobody nogroup ln -s /run/ovik_server/ovik_server.socket "$path"
    within systemd-tmpfiles --remove --create --boot --exclude-prefix=/dev || true
    check "the link at boot is root's" dangles
    within systemctl start ovik_server
    within touch /tmp/old
    within systemd-tmpfiles --clean
    check "old files go" fails within test -e /tmp/old
    check "the link stays" await is_reached
    within rm /etc/tmpfiles.d/tmp.conf
}

the_bus_restarts() {
    local before
    before=$(main_pid)
    check "restarts" within systemctl restart dbus
    check "restarts with it" await is_another_than "$before"
    check "reaches the platform on the new bus" await answers getBrightness '0 [0-9]*'
}

the_bus_stops_and_starts() {
    check "stops" within systemctl stop dbus.socket dbus.service
    check "stops with it" await is active inactive
    check "without a failure" has_property Result success
    check "starts" within systemctl start dbus.socket dbus.service
    check "starts with it" await is active active
    check "reaches the platform" await answers getBrightness '0 [0-9]*'
}

others_than_root() {
    within systemctl restart ovik_server
    check "are refused" await is_refused nogroup
    within groupadd --system ovik
    within mkdir /etc/systemd/system/ovik_server.service.d
    within cp /usr/share/doc/ovik-server/examples/group-access.conf \
        /etc/systemd/system/ovik_server.service.d/
    within systemctl daemon-reload
    check "with the drop-in, it starts" within systemctl restart ovik_server
    check "a member of the group is served" await asks_as ovik
    check "and others still are not" is_refused nogroup
    check "none of them writes to its folder" fails as_nobody ovik touch /run/ovik_server/file
    check "none of them removes the link" fails as_nobody ovik rm -f "$path"
    within rm -r /etc/systemd/system/ovik_server.service.d
    within groupdel ovik
    within systemctl daemon-reload
}

quit_by_a_client() {
    within systemctl restart ovik_server
    check "answers" await answers quit 0
    check "ends" await is active inactive
    check "without a failure" has_property Result success
    check "leaves the link" dangles
}

stopped() {
    within systemctl start ovik_server
    check "runs" await answers getBrightness '0 [0-9]*'
    check "stops" within systemctl stop ovik_server
    check "without a failure" has_property Result success
    check "leaves the link" dangles
    check "and no folder" fails within test -e /run/ovik_server
}

removed_and_installed_without_a_start() {
    within systemctl start ovik_server
    check "is removed" within apt-get remove --yes ovik-server
    check "the link is gone" nothing_is_there
    within install -m 755 /dev/stdin /usr/sbin/policy-rc.d <<<$'#!/bin/sh\nexit 101'
    check "is installed" within sh -c 'apt-get install --yes --no-install-recommends /mnt/ovik-server_*'
    check "does not run" is active inactive
    check "the link is there" dangles
    within rm /usr/sbin/policy-rc.d
}

removed() {
    within systemctl start ovik_server
    within systemctl stop panel
    check "are removed" within apt-get purge --yes '*ovik-*'
    check "nothing of them runs" nothing_runs
    check "no file is left" nothing_is_left
    check "nor the link" nothing_is_there
}

ensure_packages debootstrap lintian
scripts/package.sh >/dev/null
mkdir -p "$cache/archives/partial"
[ -e "$cache/root.tar" ] || make_clean_root
root=$(mktemp -d "$cache/root.XXXXXX")
tar -C "$root" -xf "$cache/root.tar"
boot_root
for situation in packages_are_made installed the_platform_arrives killed \
    the_bus_has_a_hostile_user the_socket_cannot_be_had the_path_is_attacked \
    a_second_is_started_by_hand the_system_tidies_up the_bus_restarts the_bus_stops_and_starts \
    others_than_root quit_by_a_client stopped removed_and_installed_without_a_start removed; do
    printf '%s\n' "$situation"
    "$situation"
done
[ "$failures" -eq 0 ]
