#!/usr/bin/env bash
# Applies the style of .clang-format to every C and C++ source; with --check, changes nothing and
# fails when a file departs from it.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

mapfile -d '' sources < <(find src include host tests examples -name '*.[ch]' -print0 -o -name '*.cpp' -print0)
case ${1:-} in
    --check) clang-format-14 --dry-run --Werror "${sources[@]}" && echo "format: ${#sources[@]} files in style" ;;
    '') clang-format-14 -i "${sources[@]}" ;;
    *) echo "usage: tools/format.sh [--check]" >&2 && exit 2 ;;
esac
