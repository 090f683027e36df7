#!/bin/bash
# Makes the Debian packages: scripts/package.sh [PRESET], by default "package" for this machine, or
# "package-armhf" for an ARMv7 hard-float panel. The packages are in dist/. Installs missing packages on
# Debian.
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
. scripts/setup.sh

preset=${1:-package}
case $preset in
package) build_dir=build-release ;;
package-armhf) build_dir=build-armhf ;;
*) die "usage: $0 [package|package-armhf]" ;;
esac
sysroot=$PWD/build-armhf/sysroot
archives=build-armhf/apt/cache/archives

# dpkg-shlibdeps asks dpkg for the package of a library. The sysroot does not belong to this machine, so
# this function records the packages that the sysroot was unpacked from, with the paths there.
record_sysroot() {
    local archive name
    local records=$PWD/$build_dir/dpkg
    rm -rf "$records"
    mkdir -p "$records"/{info,control}
    for archive in "$archives"/*.deb; do
        dpkg-deb --control "$archive" "$records/control"
        if [ -e "$records/control/shlibs" ]; then
            name=$(dpkg-deb --field "$archive" Package)
            cp "$records/control/shlibs" "$records/info/$name.shlibs"
            [ ! -e "$records/control/symbols" ] ||
                cp "$records/control/symbols" "$records/info/$name.symbols"
            dpkg-deb --fsys-tarfile "$archive" | tar -t |
                awk -v root="$sysroot" '{ sub(/^\./, ""); sub(/\/$/, ""); print root $0 }' \
                    >"$records/info/$name.list"
            printf '%s\nStatus: install ok installed\n\n' \
                "$(dpkg-deb --field "$archive" Package Version Architecture Multi-Arch Maintainer \
                    Description | grep -v '^ ')" >>"$records/status"
        fi
        rm -rf "$records/control"
    done
    export DPKG_ADMINDIR=$records DEB_HOST_ARCH=armhf
}

ensure_build_packages
ensure_packages dpkg-dev file gzip scdoc
[ "$preset" != package-armhf ] || scripts/armhf.sh --sysroot-only
build "$preset"
[ "$preset" != package-armhf ] || record_sysroot

say "packaging into dist"
quietly cpack --config "$build_dir/CPackConfig.cmake" -B "$build_dir/packages" ||
    die "cannot package, see above"
mkdir -p dist
# Removes earlier packages of this architecture and keeps those of others.
made=("$build_dir"/packages/*.deb)
rm -f dist/*_"${made[0]##*_}"
mv "$build_dir"/packages/*.deb dist/
ls dist/*.deb
