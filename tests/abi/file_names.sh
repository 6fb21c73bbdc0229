#!/usr/bin/env bash
# file_names.sh DIRECTORY VERSION: the library's SONAME carries the major version, and every name a
# linker, a loader or a host may use leads to the one file.
set -euo pipefail
fail() { echo "$*" && exit 1; }
file=$1/libVornelBlCore.so.$2
soname=libVornelBlCore.so.${2%%.*}
if [ ! -f "$file" ] || [ -L "$file" ]; then fail "no file $file"; fi
found=$(readelf --dynamic --wide "$file" | sed -n 's/.*Library soname: \[\(.*\)\]/\1/p')
[ "$found" = "$soname" ] || fail "SONAME is '$found', expected '$soname'"
for name in "$soname" libVornelBlCore.so VornelBlCore.so; do
    [ "$(readlink -f "$1/$name")" = "$(readlink -f "$file")" ] || fail "$1/$name does not lead to $file"
done
echo "SONAME $soname; all names lead to $file"
