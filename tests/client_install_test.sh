#!/bin/bash
# client_install_test.sh SOURCE_DIR BUILD_DIR CC CXX: installs the client library and builds the
# README's program against the installed copy, in an empty folder.
set -euo pipefail
source_dir=$1
build_dir=$2
export CC=$3 CXX=$4 # with CFLAGS and CXXFLAGS, for CMake too

work=$(mktemp -d -t ovik_client_install_test.XXXXXX)
trap 'rm -rf "$work"' EXIT
failures=0

fail() {
    printf 'FAILED: %s\n' "$*"
    failures=$((failures + 1))
}

for component in client client_dev; do
    DESTDIR=$work/root cmake --install "$build_dir" --prefix /usr --component "$component" >"$work/log"
done
root=$work/root/usr
pc=$(find "$root" -name ovik_client.pc)
libdir=$(dirname "$(dirname "$pc")")
export PKG_CONFIG_PATH=$libdir/pkgconfig CMAKE_PREFIX_PATH=$root LD_LIBRARY_PATH=$libdir

# The first C program of the README, run without a service.
mkdir "$work/empty"
cd "$work/empty"
awk '/^```c$/ { inside = 1; next } /^```$/ && inside { exit } inside' \
    "$source_dir/README.md" >hello.c
cp hello.c hello_cxx.cpp
# says WHAT PROGRAM: the program runs and reports that it finds no service, or prints an answer.
says() {
    local output
    output=$("$2" 2>&1) || true # a failure prints a message too
    grep -qx -e 'no service listens at the socket' -e 'brightness [0-9]*' -e 'refused: .*' \
        -e 'no answer in time: .*' -e 'the service closed the connection' \
        -e 'this user may not use the socket' <<<"$output" || fail "$1 says: $output"
}

# shellcheck disable=SC2046,SC2086 # several words
build_by_hand() {
    $CC ${CFLAGS:-} -std=c99 -Wall -Wextra -Werror hello.c \
        $(pkg-config --cflags --libs ovik_client) -o by_hand
    $CXX ${CXXFLAGS:-} -Wall -Wextra -Werror hello_cxx.cpp \
        $(pkg-config --cflags --libs ovik_client) -o by_hand_cxx
    $CC ${CFLAGS:-} "$root/share/doc/libovik-client-dev/examples/control_loop.c" \
        $(pkg-config --cflags --libs ovik_client) -o control_loop
}

build_by_cmake() {
    cat >CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.16)
project(hello LANGUAGES C CXX)
find_package(ovik_client 1.0 REQUIRED)
foreach(library client client_static)
    add_executable(c_${library} hello.c)
    add_executable(cxx_${library} hello_cxx.cpp)
    target_link_libraries(c_${library} PRIVATE ovik::${library})
    target_link_libraries(cxx_${library} PRIVATE ovik::${library})
endforeach()
END
    {
        cmake -S . -B built && cmake --build built
    } >"$work/log" 2>&1 || {
        cat "$work/log"
        exit 1
    }
}

exported() { nm --dynamic --defined-only "$libdir/libovik_client.so" | awk '$2 != "A" { print $3 }'; }

build_by_hand
build_by_cmake
for program in by_hand by_hand_cxx built/c_client built/cxx_client built/c_client_static \
    built/cxx_client_static; do
    says "$program" "./$program"
done
[ "$(pkg-config --modversion ovik_client)" ] || fail "no version"
LD_LIBRARY_PATH='' says "the static one, without the shared one," built/c_client_static
objdump -p "$libdir/libovik_client.so" | grep -q 'SONAME *libovik_client.so.1$' ||
    fail "the soname is not libovik_client.so.1"
! exported | grep -v '^ovik_client_' || fail "it exports more than its interface"
[ "$(exported | wc -l)" -ge 14 ] || fail "it does not export its interface"
[ "$failures" -eq 0 ]
