#!/bin/sh
# SPDX-License-Identifier: MIT
# Deskews the read lanes of a tarnm board with padkit-tune and reports each DQ
# line's window width and smaller margin as LAVA test cases.
#
# A delay far outside a line's eye can hang the board, and the farm's reset
# ends the job: the campaign keeps its journal on persistent storage, and the
# next job carries it on, reporting the value that hung the board.
#
# Settings, from the environment (the test definition's parameters):
#   JOURNAL       the campaign's journal, on storage that survives a reset
#   CONTROLLERS   the controllers whose read lanes are deskewed
#   TEST_COMMAND  the memory test; each controller's run gets --bus-width
#   MIN_MARGIN    the least margin, in delay steps, of a line that passes
set -uf
JOURNAL=${JOURNAL:-/var/lib/padkit/lava-deskew.journal}
CONTROLLERS=${CONTROLLERS:-tarnm-ddra tarnm-ddrb}
TEST_COMMAND=${TEST_COMMAND:-padkit-memtest --size 256M}
MIN_MARGIN=${MIN_MARGIN:-8}

say() { echo "padkit-deskew: $*" >&2; }

# fail CASE MESSAGE: the test case fails, saying why, and nothing more runs.
fail() {
    say "$2"
    lava-test-case "$1" --result fail
    exit 1
}

# journalled JOURNAL COMMAND...: carries the campaign of JOURNAL to its end:
# started by COMMAND when there is no journal, resumed when one is unfinished
# (a reset cut the last job short), left as it is when it has ended.
journals=
journalled() {
    journal=$1
    shift
    journals="$journals $journal"
    if [ ! -e "$journal" ]; then
        "$@"
    elif [ "$(tail -n 1 "$journal")" != end ]; then
        resume "$journal"
    fi
    status=$?
    # 1 is a line without a window, which its test case reports.
    [ "$status" -le 1 ] || fail deskew-campaign "padkit-tune stopped with status $status ($journal)"
}

# The campaign: the read lanes of each controller swept together, delay by
# delay over the whole axis, each line judged by its own failing bit.
campaign() {
    for controller in $CONTROLLERS; do
        case $controller in
        tarnm-ddra) count=4 width=32 ;;
        tarnm-ddrb) count=8 width=64 ;;
        *) fail deskew-campaign "$controller: no such controller (tarnm-ddra, tarnm-ddrb)" ;;
        esac
        lanes=
        lane=0
        while [ "$lane" -lt "$count" ]; do
            lanes="$lanes $controller-read$lane::dq"
            lane=$((lane + 1))
        done
        journal=${JOURNAL%.journal}.$controller.journal
        # shellcheck disable=SC2086 # the lanes and the test command are lists of words
        journalled "$journal" padkit-tune sweep -y --parallel --journal "$journal" --csv "${journal%.journal}.csv" \
            $lanes -63 63 -- $TEST_COMMAND --bus-width "$width"
    done
}

# resume JOURNAL: the campaign carried on; the value in flight when the board
# was reset, counted as a hang, is a failed test case of its controller. A
# journal that resume refuses (another version wrote it, a reset cut its first
# record) would refuse every job after: it is put aside.
resume() {
    padkit-tune resume "$1" 2>"$errors"
    status=$?
    cat "$errors" >&2
    if [ "$status" = 2 ]; then
        mv "$1" "$1.refused" && say "$1 put aside as $1.refused: the next job starts anew"
        return 2
    fi
    sed -n 's/^[^:]*: \(.*\): \([-+0-9]*\) counted as a hang (in flight when the run stopped)$/\2 \1/p' "$errors" |
        while read -r value name; do
            controller=${name%%-read*}
            lava-test-case "${controller%%::*}-hang" --result fail --measurement "${value#+}" --units steps
        done
    return $status
}

# report JOURNAL: each DQ line's window width and smaller margin as test cases;
# a line fails without a window, or with its original closer than MIN_MARGIN
# to an edge (or outside its window).
report() {
    json=$(padkit-tune report --json "$1") || fail deskew-report "padkit-tune cannot report $1"
    printf '%s\n' "$json" | report_lines | while read -r line width margin; do
        name=${line%%::*}-${line#*::}
        if [ "$width" = null ]; then
            lava-test-case "$name-width" --result fail --measurement 0 --units steps
        else
            lava-test-case "$name-width" --result pass --measurement "$width" --units steps
        fi
        if [ "$margin" = null ]; then
            lava-test-case "$name-margin" --result fail
        elif [ "$margin" -lt "$MIN_MARGIN" ]; then
            lava-test-case "$name-margin" --result fail --measurement "$margin" --units steps
        else
            lava-test-case "$name-margin" --result pass --measurement "$margin" --units steps
        fi
    done
}

# report_lines: "line width margin" for each line of the report's JSON, the
# smaller margin, null where there is none. Boards often have no python3, so
# awk reads the objects of the lines, which hold no object, wherever the
# JSON breaks its lines.
report_lines() {
    awk '
        function field(object, key, value) {
            if (!match(object, "\"" key "\"[ \t]*:[^,}]*"))
                return "null"
            value = substr(object, RSTART, RLENGTH)
            sub(/^"[^"]*"[ \t]*:/, "", value)
            gsub(/[" \t]/, "", value)
            return value
        }
        { text = text " " $0 }
        END {
            while (match(text, /[{][^{}]*"line"[^{}]*[}]/)) {
                object = substr(text, RSTART, RLENGTH)
                text = substr(text, RSTART + RLENGTH)
                below = field(object, "margin_below")
                above = field(object, "margin_above")
                smaller = below == "null" || above == "null" ? "null" : below + 0 < above + 0 ? below : above
                print field(object, "line"), field(object, "width"), smaller
            }
        }'
}

case $MIN_MARGIN in
'' | *[!0-9]*) fail deskew-campaign "MIN_MARGIN: a number of delay steps, not '$MIN_MARGIN'" ;;
esac
for program in padkit-tune "${TEST_COMMAND%% *}"; do
    command -v "$program" >/dev/null ||
        fail "$program" "$program: not found on this board; its image needs padkit-tune and padkit-memtest"
done
# resume runs the test command where the campaign started: a directory that
# outlives the job's own.
directory=$(dirname "$JOURNAL")
{ mkdir -p "$directory" && cd "$directory"; } || fail deskew-campaign "$directory: cannot hold the journal"
errors=$(mktemp) || fail deskew-campaign "no temporary file"
trap 'rm -f "$errors"' EXIT
campaign
for journal in $journals; do
    report "$journal"
done
# The next job starts a new campaign; the CSV files stay.
# shellcheck disable=SC2086 # a list of paths
rm -f $journals
