#!/usr/bin/env bash
# second_baseline.sh PLAYER FOLDER: a baseline that is solved after another one in the same process
# gives the answers of a fresh process, to the bit, if it brings its ephemerides and its ionosphere.
set -euo pipefail
player=$1
cd "$2"

answers() {
    "$player" "${@/%/.tape}" 2>/dev/null
}
# equal EARLIER SESSION
equal() {
    cmp <(answers "$2") <(answers "$1" "$2") || { echo "$2 after $1 differs from $2 alone" && exit 1; }
    echo "$2 after $1 is as in a fresh process"
}

equal mode-1 slips-gaps-bias
equal slips-gaps-bias mode-5
equal three-periods 47-km
if [ -f demo.tape ]; then
    equal demo demo
    equal mode-6 demo
    # The ionosphere of the demo stays for a session that brings none: the comparison can tell.
    if cmp -s <(answers mode-1) <(answers demo mode-1); then
        echo "mode-1 after demo does not show the ionosphere of the demo"
        exit 1
    fi
fi
