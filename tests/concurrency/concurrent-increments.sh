#!/bin/sh
# Runs padkit-sim from many processes at once, all stepping one register field,
# two fields of another register and the eMMC file by "+1", and setting a
# regulator. The lock must serialise every read-modify-write: no step is lost,
# no run's accesses interleave and no run sees a file another one is writing.
# Usage: concurrent-increments.sh PADKIT_SIM [EMULATOR ARGS...]
set -u
sim=$1 procs=8 runs=50 steps=3 mmc_steps=20 fails=0
shift
emulator=$*  # a cross-built padkit-sim runs under qemu
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
export PADKIT_SIM_DIR="$work/board" PADKIT_SIM_TRACE="$work/trace"
$emulator "$sim" mmc::rdqs 10 2>/dev/null || exit 1  # the fresh board exists before the race
for p in $(seq 1 $procs); do
    field=i2c0-delay::sda-delay
    [ $((p % 2)) = 0 ] && field=i2c0-delay::scl-delay
    (
        until [ -e "$work/go" ]; do sleep 0.01; done
        for i in $(seq 1 $runs); do
            $emulator "$sim" tarnm-ddra0::scl +1 2>/dev/null || touch "$work/failed"
            [ "$i" -gt $steps ] || $emulator "$sim" "$field" +1 2>/dev/null || touch "$work/failed"
            [ "$i" -gt $mmc_steps ] || $emulator "$sim" mmc::rdqs +1 2>/dev/null || touch "$work/failed"
            [ "$i" -gt $steps ] || $emulator "$sim" cpu_regulator::microvolts $((1000000 + p % 2 * 100000)) 2>/dev/null ||
                touch "$work/failed"
        done
    ) &
done
touch "$work/go"
wait
check() { [ "$2" = "$3" ] || { echo "FAIL $1: got '$2', expected '$3'"; fails=1; }; }
check "failed runs" "$(ls "$work/failed" 2>/dev/null)" ""
# One letter per access; a whole run is "srswsr" (lane) or "iji" (i2c).
runs_seen=$(cut -c1-12 "$work/trace" | sed 's/^W 0x00f3812c/s/; s/^R 0x00f3813c/r/;
    s/^W 0x00f3813c/w/; s/^R 0x00190110/i/; s/^W 0x00190110/j/' | tr -d '\n' |
    sed 's/srswsr/A/g; s/iji/B/g')
check "accesses outside whole runs" "$(printf %s "$runs_seen" | tr -d AB | cut -c1-40)" ""
for field in tarnm-ddra0::scl:$((procs * runs)) i2c0-delay::sda-delay:$((procs / 2 * steps)) \
    i2c0-delay::scl-delay:$((procs / 2 * steps)) mmc::rdqs:$((10 + procs * mmc_steps)); do
    check "${field%:*}" "$($emulator "$sim" "${field%:*}" 2>/dev/null)" "${field##*:}"
done
exit $fails
