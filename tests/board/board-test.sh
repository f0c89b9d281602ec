#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The real padkit on a fake board (fake-board.sh) in a private mount namespace.
# Usage: board-test.sh CASE PADKIT [EMULATOR ARGS...]. Exit 77 means skipped,
# unless PADKIT_BOARD_REQUIRED is set (CI as root): then a skip fails.
set -u
case=$1 bin=$2
[ -x "$bin" ] || { echo "no padkit at $bin"; exit 1; }
skip() { echo "skipped: $1"; [ -n "${PADKIT_BOARD_REQUIRED:-}" ] && exit 1; exit 77; }
if [ -z "${PADKIT_BOARD_NS:-}" ]; then
    [ "$(id -u)" = 0 ] || skip "needs root to build the fake board"
    unshare -m --propagation private true 2>/dev/null || skip "unshare -m refused here"
    PADKIT_BOARD_NS=1 exec unshare -m --propagation private bash "$0" "$@"
fi
# The source tree may lie under /tmp, which the fake board covers: what the
# cases need from it is taken first.
[ "$case" = plain ] && { "$(dirname "$0")/../../scripts/need-packages" strace || exit 1; }
. "$(dirname "$0")/fake-board.sh"
fake_board "$bin" || skip "mounting the fake board refused"
cd / && umask 022
padkit=("${@:3}" "/dev/.${bin##*/}") fails=0
run() { out=$("${padkit[@]}" "$@" 2>/dev/.err); got="$?|$out|$(cat /dev/.err)" what="padkit $*"; }
# With no room for a byte, every write of a kernel file fails; both streams go to a pipe.
run_full() { got=$( (trap '' XFSZ; ulimit -f 0; exec "${padkit[@]}" "$@") 2>&1; echo "|$?"); what="padkit $* (no room)"; }
expect() { [ "$1" = "${2-$got}" ] || { echo "FAIL $what: expected '$1', got '${2-$got}'"; fails=1; }; }
word() { what="word at $1"; expect "$2" "$(od -An -tx4 -j $(($1)) -N4 /dev/zeb_mem | tr -d ' ')"; }
case $case in
plain)
    perl -e 'open F, "+<", "/dev/zeb_mem" or die; seek F, 0x540008, 0; print F pack "L", 0x12345678'
    run ehci0-phy::tx-vref; expect "0|8|PADKIT: get ehci0-phy::tx-vref := 8"
    run ehci0-phy::tx-vref 9; expect "0||PADKIT: set ehci0-phy::tx-vref := 9"
    word 0x540008 1234d678
    # The device is opened for reading and writing, uncached.
    strace -f -qq -e trace=openat -o /dev/.trace "${padkit[@]}" ehci0-phy::tx-vref 9 2>/dev/null
    what="device open flags"; expect 'O_RDWR|O_SYNC' "$(sed -n 's/.*"\/dev\/zeb_mem", \([^,)]*\).*/\1/p' /dev/.trace | sort -u)"
    what="lock file type and mode"; expect "regular empty file 644" "$(stat -c '%F %a' /tmp/padkit.lock)" ;;
files)
    for set in "cpu_regulator::microvolts 1000000 /sys/class/regulator/regulator.1/microvolts" "mmc::rdqs 100 /sys/kernel/debug/mmc0/rdqs"; do
        set -- $set; run_full "$1" "$2"; expect "write $3 failed: File too large"$'\n'"PADKIT: set $1 := $2 failed."$'\n''|245'
    done ;;
streams)  # a closed output must not become the lock file; a full one fails the run
    "${padkit[@]}" mmc::rdqs >&- 2>/dev/.err; got="$?|$(cat /dev/.err)" what="padkit mmc::rdqs >&-"
    expect "0|PADKIT: get mmc::rdqs := 37"; what="lock file"; expect "" "$(cat /tmp/padkit.lock)"
    "${padkit[@]}" mmc::rdqs >/dev/full 2>/dev/.err; got="$?|$(cat /dev/.err)" what="padkit mmc::rdqs >/dev/full"
    expect "244|PADKIT: get mmc::rdqs := 37"$'\n'"write standard output failed." ;;
budget)  # instructions of a whole run, deterministic unlike its wall time
    command -v valgrind >/dev/null || skip "valgrind is not installed"
    for args in "-h" "ehci0-phy::tx-vref" "ehci0-phy::tx-vref 9"; do
        # shellcheck disable=SC2086
        n=$(valgrind --tool=callgrind --callgrind-out-file=/dev/null "${padkit[@]}" $args 2>&1 >/dev/null |
            sed -n 's/.*Collected : //p')
        what="instructions of padkit $args: ${n:-none}"; expect ok "$([ "${n:-0}" -gt 0 ] && [ "$n" -le 300000 ] && echo ok)"
    done ;;
*) echo "unknown case $case"; exit 2 ;;
esac
exit $fails
