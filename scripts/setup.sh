# shellcheck shell=bash
# Shared by the scripts: messages, packages, the build.

# On standard error: standard output has only the output of the programs themselves.
say() { printf '== %s\n' "$*" >&2; }

die() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# quietly COMMAND...: prints the command's output only when it fails.
quietly() {
    local output status=0
    output=$("$@" 2>&1 </dev/null) || status=$?
    [ "$status" -eq 0 ] || printf '%s\n' "$output" >&2
    return "$status"
}

is_installed() { [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

# As root; sudo asks for a password at the terminal.
apt() {
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || return 1
        as_root=(sudo)
    fi
    quietly "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get -o DPkg::Lock::Timeout=300 "$@"
}

# ensure_packages PACKAGE...: installs missing packages. Systems other than Debian and its derivatives
# must have them.
ensure_packages() {
    local package update missing=()
    command -v dpkg-query >/dev/null || return 0
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    say "installing ${missing[*]}"
    # A partly failed update can still be good enough to install from.
    update=$(apt update 2>&1) || true
    apt install --yes --no-install-recommends "${missing[@]}" || {
        printf '%s\n' "$update" >&2
        die "cannot install; do it as root: apt-get install ${missing[*]}"
    }
}

# For every build: a preset with the tests configures their libraries, whatever the target.
ensure_build_packages() {
    ensure_packages g++ cmake ninja-build pkg-config qtbase5-dev dbus-daemon \
        libgtest-dev libsystemd-dev libcli11-dev libedit-dev nlohmann-json3-dev
}

# Programs that the tests start, apart from the built ones.
ensure_test_packages() { ensure_packages python3 socat zsh bash-completion; }

# build PRESET [TARGET...]: configures and builds, in the source directory.
build() {
    local preset=$1
    shift
    say "building, preset $preset (a few minutes when it is the first time)"
    quietly cmake --preset "$preset" || die "cannot configure, see above"
    quietly cmake --build --preset "$preset" ${1:+--target "$@"} || die "cannot build, see above"
}
