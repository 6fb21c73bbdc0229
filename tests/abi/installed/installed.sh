#!/usr/bin/env bash
# installed.sh BUILD_DIR CMAKE CC CXX VERSION: installs the build into an empty folder and uses
# nothing but that folder: a C and a C++ host are built against it through CMake's find_package and
# through pkg-config, and run; the installed command starts, if there is one.
set -euo pipefail
build=$1 cmake=$2 cc=$3 cxx=$4 version=$5
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
"$cmake" --install "$build" --prefix "$prefix" >"$work/install.log"

echo "== find_package"
"$cmake" -S "$here" -B "$work/found" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" -DEXPECTED_VERSION="$version" >"$work/configure.log"
"$cmake" --build "$work/found" >"$work/build.log" || { cat "$work/build.log" && exit 1; }
"$work/found/host_c"
"$work/found/host_cxx"

echo "== pkg-config"
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name VornelBlCore.pc)")
export PKG_CONFIG_PATH
[ "$(pkg-config --modversion VornelBlCore)" = "$version" ]
read -ra flags <<<"$(pkg-config --cflags --libs VornelBlCore)"
libdir=$(pkg-config --variable=libdir VornelBlCore)
cp "$here/host.c" "$work/host.cpp"
"$cc" -std=c99 "$here/host.c" -o "$work/host_c" "${flags[@]}"
"$cxx" -std=c++11 "$work/host.cpp" -o "$work/host_cxx" "${flags[@]}"
LD_LIBRARY_PATH=$libdir "$work/host_c"
LD_LIBRARY_PATH=$libdir "$work/host_cxx"

echo "== the folder"
[ -e "$libdir/VornelBlCore.so" ] || { echo "no plain name VornelBlCore.so" && exit 1; }
if [ -x "$prefix/bin/vornel" ]; then
    "$prefix/bin/vornel" --help >/dev/null && echo "vornel starts"
    for file in man/man1/vornel.1 bash-completion/completions/vornel; do
        [ -s "$prefix/share/$file" ] || { echo "no share/$file" && exit 1; }
    done
fi
# What stands outside the prefix must not be written into it.
if grep -rlI -e "$build" "$prefix"; then
    echo "these installed files name the build directory"
    exit 1
fi
