#!/bin/sh
# SPDX-License-Identifier: MIT
# Power cuts: trial, apply --system, bless and trial --remove killed at each rename, write and
# fsync in turn leave the state before or after, untorn, no trial applied with its try uncounted,
# and none that bless takes unless it was applied.
# Usage: trial-power-cut.sh SOURCE_DIR PADKIT_TUNE_SIM [EMULATOR ...]; exit 77: skipped.
set -u
src=$1 tune=$2 && shift 2
[ $# = 0 ] || { echo "skipped: strace cannot trace a program run by $1"; exit 77; }
"$src/scripts/need-packages" strace || exit 1
# LeakSanitizer refuses to run under ptrace; a sanitized build runs here without it.
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0"
tmp=$(mktemp -d) && trap 'rm -rf "$tmp"' EXIT
export PADKIT_SIM_DIR="$tmp/board"
board=$PADKIT_SIM_DIR fails=0
# A run that reads the board creates it; --version needs none.
"$tune" dump mac-tx::delay >/dev/null && cp -a "$board" "$tmp/fresh" && printf 'mmc::rdqs = 9\n' >"$tmp/t" &&
    printf '# trial of %s\nmmc::rdqs = 9\n' "$tmp/t" >"$tmp/installed" || exit 1
fail() { echo "FAIL $*" && fails=1; }

# The state as trial --status reads it from the listing, without the mark of a complete apply, which
# bless checks; "torn" for a trial file that is not the profile under the line naming it.
state() {
    "$tune" trial --status 2>/dev/null | sed -e '/^applied/d' -e 's/@[0-9]*\.conf$/.conf/' | xargs
    for f in "$board"/var/lib/padkit/trial-* "$board"/etc/padkit.d/~trial-*; do
        [ ! -e "$f" ] || cmp -s "$f" "$tmp/installed" || echo "torn $f"
    done
}
fresh_values() { rm -rf "$board/regs" "$board/sys" && cp -a "$tmp/fresh/regs" "$tmp/fresh/sys" "$board"; }
next_boot() {
    fresh_values && booted=$((booted + 1)) && echo $booted >"$board/proc/sys/kernel/random/boot_id"
}
boot() { next_boot && "$@" "$tune" apply --system 2>/dev/null; }
applied() { [ "$(cat "$board/sys/kernel/debug/mmc0/rdqs")" = 9 ]; }
# A fresh board (boot id 1) with a known-good profile and a trial of 2 tries booted N times (-1: none),
# its values fresh again in the last boot.
reset() {
    booted=1
    rm -rf "$board" && cp -a "$tmp/fresh" "$board" && mkdir -p "$board/etc/padkit.d" &&
        echo 'mac-tx::delay = 1' >"$board/etc/padkit.d/50-board.conf"
    [ "$1" -lt 0 ] || "$tune" trial --tries 2 "$tmp/t" || fail "install"
    for _ in $(seq "$1"); do boot; done && fresh_values
}
# The same, then the next boot, which has applied nothing yet.
rebooted() { reset "$1" && next_boot; }
# cut "SETUP N" COMMAND...: COMMAND killed at each call in turn, each time on a board set up by SETUP N.
cut() {
    setup=$1 && shift
    $setup && before=$(state) && "$@" >/dev/null 2>&1 && after=$(state)
    for call in rename renameat renameat2 write fsync; do
        strace -o /dev/null -e trace="$call" true 2>/dev/null || continue
        n=1 status=137
        while [ $status = 137 ]; do
            $setup
            strace -f -o /dev/null --inject="$call:signal=KILL:when=$n" "$@" >/dev/null 2>&1
            status=$? now=$(state) was="$* killed at $call $n"
            [ "$now" = "$before" ] || [ "$now" = "$after" ] || fail "$was: $now; before: $before; after: $after"
            ! applied || [ "$now" = "$after" ] || fail "$was: the trial applied, its try not counted"
            case $* in
            *"apply --system") ! "$tune" bless >/dev/null 2>&1 || applied || fail "$was: blessed, not applied" ;;
            esac
            n=$((n + 1))
        done
        [ "$status $now" = "0 $after" ] || fail "$* at its end: status $status, $now"
    done
}
cut "reset -1" "$tune" trial --tries 2 "$tmp/t"
cut "reset 2" "$tune" trial --tries 2 "$tmp/t"
cut "reset 0" "$tune" trial --remove
for boots in 0 1 2; do cut "rebooted $boots" "$tune" apply --system; done
cut "reset 1" "$tune" bless

# Two tries: a whole boot, one cut at the trial's write, then whole ones: the
# cut try counts, so the trial is applied once, then bad.
reset 0 && times=0
for n in 2 1 2 2; do
    boot strace -f -o /dev/null -P "$board/sys/kernel/debug/mmc0/rdqs" --inject="write:signal=KILL:when=$n"
    ! applied || times=$((times + 1))
done
[ "$times $(state)" = "1 state: bad file: $board/var/lib/padkit/trial-0001+0-2.bad source: $tmp/t tries left: 0 \
tries done: 2" ] ||
    fail "boots, one cut: the trial applied $times times, then $(state)"
exit $fails
