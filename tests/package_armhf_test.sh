#!/bin/bash
# package_armhf_test.sh SOURCE_DIR: makes the Debian packages for an ARMv7 hard-float panel and for this
# machine. They differ only in the architecture. A Debian of the panel's architecture can install the
# former, and their programs run under emulation and answer. Needs no root.
set -euo pipefail
cd "$1"
# shellcheck source=scripts/setup.sh
. scripts/setup.sh
sysroot=$PWD/build-armhf/sysroot

dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
failures=0

# check WHAT COMMAND...: reports WHAT as failed when the command fails.
check() {
    local what=$1
    shift
    printf '%s\n' "$what"
    "$@" >"$dir/log" 2>&1 || {
        printf 'FAILED: %s\n' "$what"
        sed 's/^/    /' "$dir/log"
        failures=$((failures + 1))
    }
}

lintian_is_quiet() {
    lintian --allow-root --pedantic --fail-on error,warning,pedantic dist/*_armhf.deb
}

# describe ARCHITECTURE: prints the fields and files of its packages, except what depends on the
# architecture: sizes, versions of the libraries, and their folder's name.
describe() {
    local package
    for package in dist/*_"$1".deb; do
        dpkg-deb --field "$package" |
            sed -E -e '/^(Architecture|Installed-Size):/d' -e '/^Depends:/s/ \([^)]*\)//g'
        # For each file: mode, owner, name.
        dpkg-deb --ctrl-tarfile "$package" | tar -tv | awk '{ print $1, $2, $6, $7, $8 }'
        dpkg-deb --contents "$package" | awk '{ print $1, $2, $6, $7, $8 }'
    done | sed "s/$(dpkg-architecture -a"$1" -qDEB_HOST_MULTIARCH)/MULTIARCH/g"
}
are_alike() {
    describe "$(dpkg --print-architecture)" >"$dir/here"
    describe armhf >"$dir/armhf"
    [ -s "$dir/armhf" ] && diff "$dir/here" "$dir/armhf"
}

can_be_installed() { scripts/armhf.sh --apt-get --simulate install ./dist/*_armhf.deb; }

is_small_enough() { tests/size_test.sh arm-linux-gnueabihf-strip "$dir/root/usr/sbin/ovik_server" 600; }

unpack() {
    local package program
    mkdir "$dir/root" "$dir/bin"
    for package in dist/*_armhf.deb; do
        dpkg-deb --extract "$package" "$dir/root"
    done
    # run.sh takes its programs from the bin folder of a build.
    for program in "$dir"/root/usr/{sbin,bin}/*; do
        printf '#!/bin/sh\nexec qemu-arm -L %q %q "$@"\n' "$sysroot" "$program" \
            >"$dir/bin/${program##*/}"
        chmod +x "$dir/bin/${program##*/}"
    done
}
answers() { OVIK_BUILD_DIR=$dir ./run.sh; }

ensure_packages lintian
scripts/package.sh >/dev/null
scripts/package.sh package-armhf >/dev/null
unpack
check "lintian has nothing to remark" lintian_is_quiet
check "the packages are those of this machine, for another one" are_alike
check "a Debian for armhf can install them" can_be_installed
check "the program is small enough" is_small_enough
cat "$dir/log"
check "the installed programs answer the whole tour under emulation" answers
[ "$failures" -eq 0 ]
