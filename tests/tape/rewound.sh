#!/usr/bin/env bash
# rewound.sh REWINDER FOLDER: what the player reads of a tape is what was written on it; what is no
# tape ends it with a message.
set -euo pipefail
copy=$(mktemp)
trap 'rm -f "$copy"' EXIT
for tape in "$2"/*.tape "$(dirname "$0")"/*.tape; do
    "$1" "$tape" "$copy"
    cmp "$tape" "$copy"
    echo "$(basename "$tape"): $(wc -l <"$tape") lines, read and written again"
done
for wrong in StartProcess "AddOneDelSat 1 x" "AddOneDelSat 1" "MarkDelSatList -1" \
    "InputEpochObsData 2111 345600 65"; do
    if message=$("$1" <(echo "CreateBLProcess $wrong") "$copy" 2>&1); then
        echo "played without a word: $wrong"
        exit 1
    fi
    echo "$wrong -> $message"
done
