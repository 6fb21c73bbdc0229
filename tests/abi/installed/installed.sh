#!/usr/bin/env bash
# installed.sh BUILD_DIR CMAKE CC CXX VERSION TAPE [FILE...]: installs the build into an empty folder
# and uses nothing but that folder. The example solve_tape is built against it as C and as C++,
# through CMake's find_package and through pkg-config, and all four solve the session of TAPE. If
# the command is installed too, it solves the same session from its FILEs, the base's and the
# rover's first: its vector must be theirs, to the bit.
set -euo pipefail
build=$1 cmake=$2 cc=$3 cxx=$4 version=$5 tape=$6
shift 6
here=$(cd "$(dirname "$0")" && pwd)
examples=$(cd "$here/../../../examples" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
"$cmake" --install "$build" --prefix "$prefix" >"$work/install.log"

echo "== find_package"
"$cmake" -S "$here" -B "$work/found" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DEXAMPLES="$examples" \
    -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" -DEXPECTED_VERSION="$version" >"$work/configure.log"
"$cmake" --build "$work/found" >"$work/build.log" || { cat "$work/build.log" && exit 1; }

echo "== pkg-config"
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name VornelBlCore.pc)")
export PKG_CONFIG_PATH
[ "$(pkg-config --modversion VornelBlCore)" = "$version" ]
read -ra flags <<<"$(pkg-config --cflags --libs VornelBlCore)"
libdir=$(pkg-config --variable=libdir VornelBlCore)
mkdir "$work/configured"
"$cc" -std=c99 "$examples/solve_tape.c" "$examples/tape.c" -o "$work/configured/solve_c" "${flags[@]}" -lm
"$cxx" -std=c++11 -x c++ "$examples/solve_tape.c" "$examples/tape.c" -x none \
    -o "$work/configured/solve_cxx" "${flags[@]}"

echo "== the vector"
"$work/found/solve_c" "$tape"
for program in found/solve_c found/solve_cxx configured/solve_c configured/solve_cxx; do
    # What find_package linked must know its way; what pkg-config linked is told.
    path=
    [[ $program = found/* ]] || path=$libdir
    LD_LIBRARY_PATH=$path "$work/$program" "$tape" --exact >"$work/$program.vector" 2>"$work/errors" ||
        { cat "$work/errors" && exit 1; }
    cmp "$work/found/solve_c.vector" "$work/$program.vector"
done
if [ -x "$prefix/bin/vornel" ]; then
    "$prefix/bin/vornel" solve --base "$1" --rover "$2" "${@:3}" --json "$work/solution.json" >"$work/solution"
    python3 "$here/same_vector.py" "$work/solution.json" "$work/found/solve_c.vector"
fi

echo "== the folder"
[ -e "$libdir/VornelBlCore.so" ] || { echo "no plain name VornelBlCore.so" && exit 1; }
if [ -x "$prefix/bin/vornel" ]; then
    for file in man/man1/vornel.1 bash-completion/completions/vornel; do
        [ -s "$prefix/share/$file" ] || { echo "no share/$file" && exit 1; }
    done
fi
# What stands outside the prefix must not be written into it.
if grep -rlI -e "$build" "$prefix"; then
    echo "these installed files name the build directory"
    exit 1
fi
