#!/usr/bin/env bash
# exported_names.sh LIBRARY LIST: the dynamic symbol table of the library defines exactly the names
# of the list, all of them functions.
set -euo pipefail
export LC_ALL=C
defined=$(nm --dynamic --defined-only "$1" | awk '{print $3 ($2 == "T" ? "" : " (not a function: " $2 ")")}' | sort)
if ! diff <(sort "$2") <(echo "$defined"); then
    echo "the exported names (>) differ from the list (<)"
    exit 1
fi
echo "$(wc -l <"$2") names exported, none more"
