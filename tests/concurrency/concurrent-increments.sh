#!/bin/sh
# SPDX-License-Identifier: MIT
# padkit-sim from many processes at once, stepping a register field and the eMMC
# file by "+1" and setting a regulator. The lock must serialise every run: no step
# is lost, no run's accesses interleave, no run sees a file half-written.
# Usage: concurrent-increments.sh PADKIT_SIM [EMULATOR ARGS...]
set -u
sim=$1 procs=8 runs=50 file_runs=20 fails=0
shift
emulator=$*  # a cross-built padkit-sim runs under qemu
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
export PADKIT_SIM_DIR="$work/board" PADKIT_SIM_TRACE="$work/trace"
step() { $emulator "$sim" "$@" 2>/dev/null || touch "$work/failed"; }
step mmc::rdqs 10  # the fresh board exists before the race
for p in $(seq 1 $procs); do
    (
        until [ -e "$work/go" ]; do sleep 0.01; done
        for i in $(seq 1 $runs); do
            step tarnm-ddra0::scl +1
            [ "$i" -gt $file_runs ] && continue
            step mmc::rdqs +1
            step cpu_regulator::microvolts $((1000000 + p % 2 * 100000))
        done
    ) &
done
touch "$work/go"
wait
check() { [ "$2" = "$3" ] || { echo "FAIL $1: got '$2', expected '$3'"; fails=1; }; }
check "failed runs" "$(ls "$work/failed" 2>/dev/null)" ""
# One letter per access; a whole run is "srswsr": select, read, select, write, select, read.
check "accesses outside whole runs" "$(cut -c1-12 "$work/trace" | sed 's/^W 0x00f3812c/s/; s/^R 0x00f3813c/r/;
    s/^W 0x00f3813c/w/' | tr -d '\n' | sed 's/srswsr//g' | cut -c1-40)" ""
check tarnm-ddra0::scl "$($emulator "$sim" tarnm-ddra0::scl 2>/dev/null)" $((procs * runs))
check mmc::rdqs "$($emulator "$sim" mmc::rdqs 2>/dev/null)" $((10 + procs * file_runs))
exit $fails
