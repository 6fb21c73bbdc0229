#!/usr/bin/env bash
# needed_libraries.sh LIBRARY: the engine depends on the standard library and nothing else.
set -euo pipefail
needed=$(readelf --dynamic --wide "$1" | sed -n 's/.*Shared library: \[\(.*\)\]/\1/p')
others=$(echo "$needed" | grep -vE '^(libstdc\+\+|libm|libgcc_s|libc|ld-linux.*)\.so\.[0-9]+$' || true)
[ -n "$needed" ] || { echo "no needed library found in $1" && exit 1; }
[ -z "$others" ] || { echo "needs more than the standard library: $others" && exit 1; }
echo "needs: ${needed//$'\n'/, }"
