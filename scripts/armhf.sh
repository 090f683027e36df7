#!/bin/bash
# Cross-builds everything for an ARMv7 hard-float panel on a Debian machine, and runs the tests under
# emulation: scripts/armhf.sh [CTEST-OPTION...]. Installs the compiler and the emulator when missing.
# The libraries to link with are Debian's, unpacked to build-armhf/sysroot.
#
#   scripts/armhf.sh --sysroot-only            only installs the tools and makes the sysroot
#   scripts/armhf.sh --apt-get ARGUMENT...     only runs apt-get for the sysroot's packages
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. scripts/setup.sh

build_dir=build-armhf
sysroot=$PWD/$build_dir/sysroot
# The packages that the build needs; apt adds their dependencies.
packages=(qtbase5-dev libstdc++-12-dev libgtest-dev libsystemd-dev libcli11-dev libedit-dev
    nlohmann-json3-dev)

# Uses the machine's own sources of Debian packages, for the other architecture. A separate apt, as
# packages of two architectures side by side must have equal versions, and no root is needed.
apt_armhf() {
    local state=$build_dir/apt
    apt-get \
        -o APT::Architecture=armhf -o APT::Architectures=armhf \
        -o Dir::State="$PWD/$state" -o Dir::State::status="$PWD/$state/status" \
        -o Dir::Cache="$PWD/$state/cache" -o Dir::Etc::SourceList="$PWD/$state/sources.list" \
        -o Dir::Etc::SourceParts=- -o APT::Sandbox::User='' -o Debug::NoLocking=1 "$@"
}

list_sources() {
    # shellcheck disable=SC2016 # apt expands these
    apt-get indextargets --format 'deb [arch=armhf] $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' | sort -u >"$build_dir/apt/sources.list"
    [ -s "$build_dir/apt/sources.list" ]
}

make_sysroot() {
    local archive update
    say "making a sysroot of armhf packages"
    rm -rf "$build_dir/apt/cache" # packages of other versions
    mkdir -p "$build_dir"/apt/{lists,cache}/partial
    touch "$build_dir/apt/status"
    # apt lists only sources whose package lists it has downloaded.
    list_sources || { apt update && list_sources; } || die "this machine has no Debian sources"
    # A partly failed update can still be good enough to download from.
    update=$(apt_armhf update 2>&1 </dev/null) || true
    quietly apt_armhf install --yes --download-only --no-install-recommends "${packages[@]}" || {
        printf '%s\n' "$update" >&2
        die "cannot download, see above"
    }
    rm -rf "$sysroot"
    mkdir -p "$sysroot"
    for archive in "$build_dir"/apt/cache/archives/*.deb; do
        dpkg -x "$archive" "$sysroot"
    done
    # Absolute links point to this machine's own files.
    find "$sysroot" -type l -lname '/*' -print0 | while IFS= read -r -d '' link; do
        ln -snfr "$sysroot$(readlink "$link")" "$link"
    done
    # Qt's tools run on this machine.
    rm -rf "$sysroot/usr/lib/qt5/bin"
    ln -s /usr/lib/qt5/bin "$sysroot/usr/lib/qt5/bin"
    made_by >"$sysroot/.made_by"
}

# The generators that run on this machine must have the libraries' version.
made_by() { cksum <scripts/armhf.sh && dpkg-query -W -f='${Version}\n' qtbase5-dev; }
is_current() { made_by | cmp -s - "$sysroot/.made_by"; }

if [ "${1:-}" = --apt-get ]; then
    shift
    apt_armhf "$@"
    exit
fi
# Packages of this machine: for the build's tools, such as moc, and for the tests' bus.
ensure_build_packages
ensure_test_packages
ensure_packages g++-arm-linux-gnueabihf qemu-user
is_current || make_sysroot
[ "${1:-}" != --sysroot-only ] || exit 0
build armhf
say "testing under emulation"
exec ctest --preset armhf "$@"
