#!/usr/bin/env bash
# dump.sh LIBRARY [--accept]: the functions that the library exports have the names, arguments and
# results that are on record in VornelBlCore.abi, as abidiff sees it. LIBRARY has debug information of
# the exports. With --accept what the library has is put on record instead: a break with every host
# that was built before, or an addition.
set -euo pipefail
library=$1
record=$(dirname "$0")/VornelBlCore.abi
if [ "${2-}" = --accept ]; then
    abidw --exported-interfaces-only --no-architecture --no-elf-needed --no-corpus-path --no-comp-dir-path \
        --no-show-locs --type-id-style hash --out-file "$record" "$library"
    echo "on record now: $(grep -c '<function-decl' "$record") functions"
    exit
fi
if ! abidiff --exported-interfaces-only --no-architecture --no-show-locs "$record" "$library"; then
    echo "The exports are not those on record. If that is meant, put them on record with"
    echo "    cmake --build BUILD --target accept-abi"
    exit 1
fi
echo "$(grep -c '<function-decl' "$record") functions as on record"
