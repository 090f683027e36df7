#!/bin/bash
# Cross-builds everything for an ARMv7 hard-float panel on a Debian machine, and runs the tests under
# emulation: scripts/armhf.sh [CTEST-OPTION...]. Installs the compiler and the emulator when they are
# missing; the libraries to build against are Debian's, unpacked to build-armhf/sysroot.
#
#   scripts/armhf.sh --sysroot-only    only makes the sysroot
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. scripts/setup.sh

build_dir=build-armhf
sysroot=$PWD/$build_dir/sysroot
# The names that the build needs; apt finds what these need in turn.
packages=(qtbase5-dev libstdc++-12-dev libgtest-dev libsystemd-dev)

# The machine's own sources of Debian packages, asked for the other architecture. An apt of our own,
# as packages of two architectures side by side must have equal versions, and no root is needed.
apt_armhf() {
    local state=$build_dir/apt
    mkdir -p "$state"/{lists,cache}/partial
    touch "$state/status"
    apt-get indextargets --format 'deb [arch=armhf] $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' | sort -u >"$state/sources.list"
    [ -s "$state/sources.list" ] || die "this machine has no Debian sources: run apt-get update"
    quietly apt-get \
        -o APT::Architecture=armhf -o APT::Architectures=armhf \
        -o Dir::State="$PWD/$state" -o Dir::State::status="$PWD/$state/status" \
        -o Dir::Cache="$PWD/$state/cache" -o Dir::Etc::SourceList="$PWD/$state/sources.list" \
        -o Dir::Etc::SourceParts=- -o APT::Sandbox::User='' -o Debug::NoLocking=1 "$@"
}

make_sysroot() {
    local archive
    say "making a sysroot of armhf packages"
    # An update of which a part fails can still be good enough to install from.
    apt_armhf update || true
    apt_armhf install --yes --download-only --no-install-recommends "${packages[@]}" ||
        die "cannot download, see above"
    rm -rf "$sysroot"
    mkdir -p "$sysroot"
    for archive in "$build_dir"/apt/cache/archives/*.deb; do
        dpkg -x "$archive" "$sysroot"
    done
    # Absolute links lead to this machine's own files.
    find "$sysroot" -type l -lname '/*' -print0 | while IFS= read -r -d '' link; do
        ln -snfr "$sysroot$(readlink "$link")" "$link"
    done
    # These run here.
    rm -rf "$sysroot/usr/lib/qt5/bin"
    ln -s /usr/lib/qt5/bin "$sysroot/usr/lib/qt5/bin"
    cksum <scripts/armhf.sh >"$sysroot/.made_by"
}

is_current() { cksum <scripts/armhf.sh | cmp -s - "$sysroot/.made_by"; }

is_current || make_sysroot
