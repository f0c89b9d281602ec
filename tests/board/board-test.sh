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
# The source tree may lie under /tmp, which the fake board covers: take what the cases need first.
case $case in plain | tune) "$(dirname "$0")/../../scripts/need-packages" strace || exit 1 ;; esac
. "$(dirname "$0")/fake-board.sh"
fake_board "$bin" || skip "mounting the fake board refused"
cd / && umask 022
padkit=("${@:3}" "/dev/.${bin##*/}") fails=0
run() { out=$("${padkit[@]}" "$@" 2>/dev/.err); got="$?|$out|$(cat /dev/.err)" what="padkit $*"; }
# With no room for a byte, every write of a kernel file fails; both streams go to a pipe.
run_full() {
    got=$( (trap '' XFSZ; ulimit -f 0; exec "${padkit[@]}" "$@") 2>&1; echo "|$?") what="padkit $* (no room)"
}
expect() { [ "$1" = "${2-$got}" ] || { echo "FAIL $what: expected '$1', got '${2-$got}'"; fails=1; }; }
word() { what="word at $1"; expect "$2" "$(od -An -tx4 -j $(($1)) -N4 /dev/zeb_mem | tr -d ' ')"; }
case $case in
plain)
    perl -e 'open F, "+<", "/dev/zeb_mem" or die; seek F, 0x540008, 0; print F pack "L", 0x12345678'
    run ehci0-phy::tx-vref; expect "0|8|PADKIT: get ehci0-phy::tx-vref := 8"
    run ehci0-phy::tx-vref 9; expect "0||PADKIT: set ehci0-phy::tx-vref := 9"
    word 0x540008 1234d678
    strace -f -qq -e trace=openat -o /dev/.trace "${padkit[@]}" ehci0-phy::tx-vref 9 2>/dev/null
    what="device open flags"
    expect 'O_RDWR|O_SYNC' "$(sed -n 's/.*"\/dev\/zeb_mem", \([^,)]*\).*/\1/p' /dev/.trace | sort -u)"
    what="lock file type and mode"; expect "regular empty file 644" "$(stat -c '%F %a' /tmp/padkit.lock)" ;;
files)
    for set in "cpu_regulator::microvolts 1000000 /sys/class/regulator/regulator.1/microvolts" \
        "mmc::rdqs 100 /sys/kernel/debug/mmc0/rdqs"; do
        set -- $set; run_full "$1" "$2"
        expect "write $3 failed: File too large"$'\n'"PADKIT: set $1 := $2 failed."$'\n''|245'
    done ;;
streams)  # a closed output must not become the lock file; a full one fails the run
    "${padkit[@]}" mmc::rdqs >&- 2>/dev/.err; got="$?|$(cat /dev/.err)" what="padkit mmc::rdqs >&-"
    expect "0|PADKIT: get mmc::rdqs := 37"; what="lock file"; expect "" "$(cat /tmp/padkit.lock)"
    "${padkit[@]}" mmc::rdqs >/dev/full 2>/dev/.err; got="$?|$(cat /dev/.err)" what="padkit mmc::rdqs >/dev/full"
    expect "244|PADKIT: get mmc::rdqs := 37"$'\n'"write standard output failed." ;;
tune)  # padkit-tune (the binary given): nothing half-applied, nothing read as zero, nothing blessed unapplied
    rounds=50 signals=100; [ $# -gt 2 ] && rounds=10 signals=20  # an emulator is slow
    t=("${padkit[@]}") groups=(ehci i2c mac mmc regulator)
    "${t[@]}" dump "${groups[@]}" >/dev/.old
    sed -e 's/= 0$/= 1/' -e 's/= 37$/= 38/' -e 's/00000$/10000/' /dev/.old >/dev/.new
    what="every value changes"; expect "$(grep -c = /dev/.new)" "$("${t[@]}" apply -n /dev/.new | wc -l)"
    # The DDR PHY settings (aliased here, so unchecked) first: -v fills a pipe's buffer before the others.
    { "${t[@]}" dump tarnm-ddr | sed '/odt/!s/\b0\b/1/g'; cat /dev/.new; } >/dev/.loud
    board_is() { "${t[@]}" diff "/dev/.$1" >/dev/null 2>&1; }
    for ((i = 0; i < rounds; ++i)); do
        "${t[@]}" apply -v /dev/.loud 2>/dev/null | head -1 >/dev/null
        board_is new || { what="apply -v | head -1, round $i"; expect new mixed; break; }
        "${t[@]}" apply /dev/.old
    done
    # Job control: a background run starts with SIGQUIT not ignored. pause MIN SPAN: random milliseconds.
    set -m; mkfifo /dev/.pause; exec 9<>/dev/.pause
    pause() { read -rt "0.$(printf %03d $(($1 + RANDOM % $2)))" -u 9; }
    # Natively every driver file open takes 1.5 ms longer so a random moment often falls into the writes.
    slow=() window=(0 10); [ $# -le 2 ] && slow=(strace -qq -o /dev/null -e trace=openat
        -e inject=openat:delay_enter=1500) window=(20 80)
    for sig in QUIT USR1 ALRM; do
        for ((i = 0; i < signals; ++i)); do
            from=old to=new; ((i % 2)) && from=new to=old
            "${slow[@]}" "${t[@]}" apply -v "/dev/.$to" >/dev/null 2>&1 & job=$!
            pause "${window[@]}"; target=$(cat "/proc/$job/task/$job/children" 2>/dev/null)
            kill -s "$sig" "${target:-$job}" 2>/dev/null; { wait $job; } 2>/dev/null
            board_is "$from" || board_is "$to" || { what="apply, SIG$sig, round $i"; expect whole mixed; break 2; }
            "${t[@]}" apply "/dev/.$from"; rdqs=$(cat /sys/kernel/debug/mmc0/rdqs)
            "${t[@]}" sweep -y mmc::rdqs 30 60 -- true >/dev/null 2>&1 & job=$!
            pause 0 20; kill -s "$sig" $job 2>/dev/null; { wait $job; } 2>/dev/null
            what="sweep, SIG$sig, round $i"; expect "$rdqs" "$(cat /sys/kernel/debug/mmc0/rdqs)"
            [ $fails = 0 ] || break 2
        done
    done
    # A rollback into a reader that goes away: with no room for the eMMC delay, every register is put back.
    grep -v -e mmc -e regulator /dev/.old >/dev/.registers
    "${t[@]}" apply /dev/.old; (trap '' XFSZ; ulimit -f 0; exec "${t[@]}" apply /dev/.new) 2>&1 | head -1 >/dev/null
    what="rollback into head -1"; board_is registers || expect old mixed
    umount /dev/zeb_mem && rm /dev/zeb_mem
    out=$("${t[@]}" dump ehci0-phy::tx-vref 2>&1); got="$?|$out" what="dump without the device"
    expect "1|.${bin##*/}: ehci0-phy::tx-vref: open /dev/zeb_mem failed."$'\n''# ehci0-phy::tx-vref: unreadable'
    "${t[@]}" apply /dev/.new >/dev/null 2>&1; got=$? what="apply without the device"; expect 1
    # A result file that names a device is written through: the device stays one.
    rdqs=/sys/kernel/debug/mmc0/rdqs && echo 37 >$rdqs && mknod /dev/.device c 1 3
    "${t[@]}" sweep -y --profile /dev/.device mmc::rdqs 30 31 -- true >/dev/null 2>&1
    got="$?|$(stat -c %F /dev/.device)" what="--profile naming a device"; expect "0|character special file"
    [ $# -gt 2 ] && exit $fails  # strace cannot trace what qemu-user runs
    # A sweep that gets SIGTERM at each fsync in turn closes the watchdog: a pseudo-terminal, whose master reads what
    # the sweep wrote. watched N: the sweep's status and the last byte, "-" for none.
    mkdir /dev/pts && mount -t devpts -o newinstance,ptmxmode=0666 devpts /dev/pts && ln -s pts/ptmx /dev/ptmx || exit 1
    watched() {
        python3 -c 'import os, subprocess, sys, tty
m, s = os.openpty(); tty.setraw(s)
status = subprocess.call([w.replace("@pty", os.ttyname(s)) for w in sys.argv[1:]], stdout=subprocess.DEVNULL,
                         stderr=subprocess.DEVNULL)
os.close(s); got = b""
try:
    while True: got += os.read(m, 1024)
except OSError: print(status if status >= 0 else 128 - status, (got[-1:] or b"-").decode())' \
            strace -f -o /dev/null --inject="fsync:signal=TERM:when=$1" "${t[@]}" sweep -y --journal /dev/.journal \
            --watchdog @pty mmc::rdqs 30 31 -- true
    }
    for ((n = 1, status = 143; status == 143; ++n)); do
        rm -f /dev/.journal && read -r status last <<<"$(watched $n)"
        what="sweep, SIGTERM at fsync $n: status $status, last byte to the watchdog"; expect V "$last"
    done
    what="sweep past the last fsync"; expect 0 "$status"
    # apply --system killed at each call in turn: bless refuses a trial that is not applied. bless renames from
    # /var/lib/padkit to /etc/padkit.d: both on one private file system, a copy of /etc.
    mkdir /dev/.etc /dev/.lib && cp -a /etc/. /dev/.etc && mkdir /dev/.etc/padkit.d /dev/.etc/.lib &&
        ln -s /etc/.lib /dev/.lib/padkit && mount --bind /dev/.etc /etc && mount --bind /dev/.lib /var/lib || exit 1
    echo 'mmc::rdqs = 9' >/dev/.trial
    for call in rename renameat renameat2 write fsync; do
        strace -o /dev/null -e trace="$call" true 2>/dev/null || continue
        for ((n = 1, status = 137; status == 137; ++n)); do
            rm -f /var/lib/padkit/* /etc/padkit.d/* && echo 37 >$rdqs && "${t[@]}" trial /dev/.trial
            kill_at="$call:signal=KILL:when=$n"
            { strace -f -o /dev/null --inject="$kill_at" "${t[@]}" apply --system >/dev/null; } 2>/dev/null
            status=$? what="apply --system killed at $call $n, then bless"
            "${t[@]}" bless >/dev/null 2>&1 && [ "$(cat $rdqs)" != 9 ] && expect "not blessed" blessed
        done
    done ;;
budget)  # instructions of a whole run, deterministic unlike its wall time
    command -v valgrind >/dev/null || skip "valgrind is not installed"
    for args in "-h" "ehci0-phy::tx-vref" "ehci0-phy::tx-vref 9"; do
        # shellcheck disable=SC2086
        n=$(valgrind --tool=callgrind --callgrind-out-file=/dev/null "${padkit[@]}" $args 2>&1 >/dev/null |
            sed -n 's/.*Collected : //p')
        what="instructions of padkit $args: ${n:-none}"
        expect ok "$([ "${n:-0}" -gt 0 ] && [ "$n" -le 300000 ] && echo ok)"
    done ;;
*) echo "unknown case $case"; exit 2 ;;
esac
exit $fails
