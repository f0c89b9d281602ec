#!/bin/sh
# SPDX-License-Identifier: MIT
# Power cuts in trial, apply --system (a boot) and bless: each run is killed
# at each of its rename, write and fsync calls in turn, and must leave the
# trial's state as before or as after, never between; a boot never applies
# the trial without its try counted, nor more often than its tries.
# Usage: trial-power-cut.sh SOURCE_DIR PADKIT_TUNE_SIM [EMULATOR ...]; exit 77: skipped.
set -u
src=$1 tune=$2
shift 2
if [ $# -gt 0 ]; then
    echo "skipped: strace cannot trace a program run by $1"
    exit 77
fi
"$src/scripts/need-packages" strace || exit 1
tmp=$(mktemp -d) && trap 'rm -rf "$tmp"' EXIT
export PADKIT_SIM_DIR="$tmp/board"
board=$PADKIT_SIM_DIR fails=0
"$tune" --version >/dev/null && cp -a "$board" "$tmp/fresh" || exit 1
printf 'mmc::rdqs = 9\n' >"$tmp/t"
fail() { echo "FAIL $*"; fails=1; }

# The trial's state as trial --status tells it from the listing; "torn" for
# a trial file that is not the whole profile.
state() {
    "$tune" trial --status 2>/dev/null | xargs
    for f in "$board"/var/lib/padkit/trial-* "$board"/etc/padkit.d/~trial-*; do
        [ ! -e "$f" ] || cmp -s "$f" "$tmp/t" || echo "torn $f"
    done
}
# A board with fresh values and the known-good profile; the trial installed and booted N times.
reset() {
    rm -rf "$board" && cp -a "$tmp/fresh" "$board" && mkdir -p "$board/etc/padkit.d" &&
        echo 'mac-tx::delay = 1' >"$board/etc/padkit.d/50-board.conf"
    [ "$1" -lt 0 ] || "$tune" trial --tries 2 "$tmp/t" || fail "install"
    for _ in $(seq "$1"); do boot; done
}
boot() {
    rm -rf "$board/regs" "$board/sys" && cp -a "$tmp/fresh/regs" "$tmp/fresh/sys" "$board" &&
        "$@" "$tune" apply --system 2>/dev/null
}
applied() { [ "$(cat "$board/sys/kernel/debug/mmc0/rdqs")" = 9 ]; }

# cut NAME BOOTS COMMAND...: COMMAND killed at each call in turn, on a board
# set up by reset BOOTS each time.
cut() {
    name=$1 boots=$2
    shift 2
    reset "$boots" && before=$(state) && "$@" >/dev/null 2>&1 && after=$(state)
    for call in rename renameat renameat2 write fsync; do
        strace -o /dev/null -e trace="$call" true 2>/dev/null || continue
        n=1 status=137
        while [ $status = 137 ]; do
            reset "$boots"
            strace -f -o /dev/null --inject="$call:signal=KILL:when=$n" "$@" >/dev/null 2>&1
            status=$? now=$(state)
            [ "$now" = "$before" ] || [ "$now" = "$after" ] ||
                fail "$name killed at $call $n: $now; before: $before; after: $after"
            [ "$name" != boot ] || ! applied || [ "$now" = "$after" ] ||
                fail "boot killed at $call $n: the trial applied, its try not counted"
            n=$((n + 1))
        done
        [ "$status $now" = "0 $after" ] || fail "$name at its end: status $status, $now"
    done
}
cut trial -1 "$tune" trial --tries 2 "$tmp/t"
cut replace 2 "$tune" trial --tries 2 "$tmp/t"
cut remove 0 "$tune" trial --remove
cut boot 0 "$tune" apply --system
cut boot-last-try 1 "$tune" apply --system
cut boot-bad 2 "$tune" apply --system
cut bless 1 "$tune" bless

# Boots cut ever earlier, then whole ones: the trial applied at most twice, then bad.
reset 0
times=0
for n in $(seq 8 -1 1) 99 99; do
    boot strace -f -o /dev/null --inject="write:signal=KILL:when=$n"
    ! applied || times=$((times + 1))
done
[ "$times" -le 2 ] || fail "boots cut at each write: the trial applied $times times"
[ "$(state)" = "state: bad file: $board/var/lib/padkit/trial-0001+0-2.bad tries left: 0 tries done: 2" ] || fail "boots cut at each write: left $(state)"
exit $fails
