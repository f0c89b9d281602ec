#!/bin/sh
# SPDX-License-Identifier: MIT
# The LAVA files against lava-common's schemas, or the definition's steps run as LAVA does on a simulated board.
# Usage: lava-test.sh files|steps SOURCE_DIR PADKIT_TUNE_SIM PADKIT_MEMTEST_SIM [EMULATOR...]; 77 means skipped.
set -u
case=$1 src=$2 tune=$3 memtest=$4 fails=0 python=/usr/bin/python3
shift 4
fail() { echo "FAIL $1"; fails=1; }
tmp=$(mktemp -d) && trap 'rm -rf "$tmp"' EXIT
if [ "$case" = files ]; then
    "$src/scripts/need-packages" lava-common shellcheck || { echo "skipped: no lava-common"; exit 77; }
    "$python" -c 'import sys, yaml, lava_common.schemas as job, lava_common.schemas.test.testdef as definition
job.validate(yaml.safe_load(open(sys.argv[1]))); definition.validate(yaml.safe_load(open(sys.argv[2])))' \
        "$src/lava/sample-job.yaml" "$src/lava/padkit-deskew.yaml" || fail "schemas"
    shellcheck -s sh "$src/lava/padkit-deskew.sh" || fail shellcheck
    exit $fails
fi
"$src/scripts/need-packages" python3-yaml || { echo "skipped: no python3-yaml"; exit 77; }
# Stand-ins: lava-test-case records its arguments; at the delay $HANG of a controller's bus the board "hangs",
# once: the sweep (a process group of its own) and the whole job are killed, as by a reset.
mkdir "$tmp/lava" "$tmp/padkit" && ln -s /bin/sh "$tmp/lava/sh"
printf '#!/bin/sh\necho "$*" >>"%s"\n' "$tmp/cases" >"$tmp/lava/lava-test-case"
printf '#!/bin/sh\nexec %s "%s" "$@"\n' "$*" "$tune" >"$tmp/padkit/padkit-tune"
printf '#!/bin/sh\nexec %s "%s" "$@"\n' "$*" "$memtest" >"$tmp/padkit/padkit-memtest-sim"
printf '#!/bin/sh\n[ "$PADKIT_SWEEP_BUS:$PADKIT_SWEEP_VALUE" = "$HANG" ] && mkdir "$TMPDIR/hung" 2>/dev/null &&
    kill -s KILL -- "$PPID" "-$JOB" && exit 1\nexec "$@"\n' >"$tmp/padkit/hang-once"
chmod +x "$tmp/lava/"* "$tmp/padkit/"*
export PADKIT_SIM_DIR="$tmp/board" PADKIT_SIM_EYE_SEED=7 TMPDIR="$tmp" HANG=
setsid=$(command -v setsid) jobpath=$tmp/lava:$tmp/padkit:$PATH
# job STATUS PARAM=VALUE...: LAVA's run.sh of the definition with the job's parameters, on $jobpath, ends with STATUS;
# each job runs a copy of the definition in a directory of its own, gone after it.
job() {
    status=$1 && shift && rm -f "$tmp/cases" && touch "$tmp/cases" && dir=$(mktemp -d) && cp -R "$src/lava" "$dir"
    "$python" -c 'import sys, yaml; definition = yaml.safe_load(open(sys.argv[1]))
params = {**definition["params"], **dict(arg.split("=", 1) for arg in sys.argv[3:])}
print("".join("%s=\x27%s\x27\n" % item for item in params.items()) + "set -e\ncd " + sys.argv[2])
print("\n".join(definition["run"]["steps"]))' "$src/lava/padkit-deskew.yaml" "$dir" \
        JOURNAL="$tmp/var/lib/padkit/deskew.journal" "TEST_COMMAND=hang-once padkit-memtest-sim --size 64K" "$@" \
        >"$tmp/run.sh"
    PATH=$jobpath "$setsid" -w sh -c 'export JOB=$$ && exec sh "$0"' "$tmp/run.sh" >"$tmp/out" 2>&1
    [ $? = "$status" ] || { fail "$*: not status $status"; tail "$tmp/out"; }
    rm -rf "$dir"
}
# cases [CASE]: the cases recorded are CASE and those the eyes give each line of $lines at the delay 0.
cases() {
    { [ $# = 0 ] || echo "$1"; awk -v lines="$lines" '$1 ~ "^(" lines ")-read" {
        name = $1; sub("::", "-", name); w = $3 < $2 ? 0 : $3 - $2 + 1; m = -$2 < $3 ? -$2 : $3
        width[name] = name "-width --result " (w ? "pass" : "fail") " --measurement " w " --units steps"
        margin[name] = name "-margin --result " (m < 0 ? "fail" : (m < 8 ? "fail" : "pass") \
                       " --measurement " m " --units steps") }
        END { for (name in width) print width[name] "\n" margin[name] }' "$tmp/board/eye"; } | sort >"$tmp/expected"
    sort "$tmp/cases" | diff "$tmp/expected" - || fail "cases of $lines"
}
PADKIT_SWEEP_BUS=tarnm-ddra "$tmp/padkit/padkit-memtest-sim" --size 4K 2>/dev/null
# Margins of 8 and 7 steps, a delay 0 outside its window, a line without any.
printf '%s\n' "tarnm-ddra-read1::dq3 -8 20" "tarnm-ddrb-read2::dq0 -25 7" "tarnm-ddrb-read5::dq1 2 30" \
    "tarnm-ddrb-read7::dq7 5 4" >>"$tmp/board/eye"
# A journal that resume refuses fails the job and is put aside, so that the next job starts anew.
mkdir -p "$tmp/var/lib/padkit" && echo junk >"$tmp/var/lib/padkit/deskew.tarnm-ddra.journal"
job 1
lines=deskew-campaign cases "deskew-campaign --result fail"
lines=tarnm-ddra\|tarnm-ddrb HANG=tarnm-ddrb:40 && job 137
job 0
cases "tarnm-ddrb-hang --result fail --measurement 40 --units steps"
# A finished campaign is not carried on: the next job measures anew.
echo "tarnm-ddra-read2::dq6 -12 7" >>"$tmp/board/eye"
lines=tarnm-ddra && job 0 CONTROLLERS=tarnm-ddra
cases
jobpath=$tmp/lava job 1
lines=none cases "padkit-tune --result fail"
grep -q "padkit-tune: not found" "$tmp/out" || fail "no padkit-tune, not said"
exit $fails
