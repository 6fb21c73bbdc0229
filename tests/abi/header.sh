#!/usr/bin/env bash
# header.sh INCLUDE_DIR LIBRARY_DIR BUILD_DIR COMPILER FLAG...: all_exports.c compiles against the
# public header without a warning, links with the library and runs. BUILD_DIR holds exports.inc.
set -euo pipefail
include=$1 library=$2 build=$3 compiler=$4
shift 4
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
"$compiler" "$@" -pedantic-errors -Wall -Wextra -Wconversion -Werror -I"$include" -I"$build" \
    "$(dirname "$0")/all_exports.c" -x none -o "$out/all_exports" -L"$library" -lVornelBlCore
LD_LIBRARY_PATH=$library "$out/all_exports"
