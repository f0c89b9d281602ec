// SPDX-License-Identifier: MIT
// padkit-tune-sim under pipes, signals, held locks and odd boards: nothing half-applied, nothing read as a
// value, no result lost. Each row is a shell script; t runs padkit-tune-sim, "bg ... &" runs it in the
// background with SIGINT and SIGQUIT not ignored, $B is the board.
#include <gtest/gtest.h>

#include <iostream>
#include <string>

#include "runtime/exit_status.h"
#include "tests/e2e/sim_board.h"

namespace {

// old: the board's settings; new: each changed (a number's lowest bit flipped, a regulator 10 mV up; table
// fields left out). few_old and few_new: the same outside the DDR PHY, quicker to apply. waited "WORDS" 'SCRIPT':
// sweep -y WORDS, whose command at every value but 31 gives another process time to take the lock; that process
// runs SCRIPT once the sweep waits for it ($sweep: the sweep's pid), then lets go. Its status is the sweep's.
const std::string prelude =
    R"sh(T="$*"; t() { $T "$@"; }; bg() { exec env --default-signal=INT,QUIT $T "$@"; }; B=$PADKIT_SIM_DIR
changed() { awk 'function flip(n) { return n % 2 ? n - 1 : n + 1 }
    BEGIN { FS = " = " } /odt|drv/ { next } /regulator/ { print $1 " = " $2 + 10000; next }
    { s = $2; o = ""; while (match(s, /[0-9]+/)) { o = o substr(s, 1, RSTART - 1) flip(substr(s, RSTART, RLENGTH))
      s = substr(s, RSTART + RLENGTH) }; print $1 " = " o s }'; }
t dump | grep -v -e odt -e drv >$B/old; changed <$B/old >$B/new
t dump ehci i2c mac mmc regulator >$B/few_old; changed <$B/few_old >$B/few_new
whole() { t diff $B/$1 >/dev/null 2>&1 || t diff $B/$2 >/dev/null 2>&1 || echo mixed; }
pause() { sleep "$(awk "BEGIN { srand($$ + $1); printf \"%.3f\", rand() * $2 }")"; }
rdqs() { echo $(cat $B/sys/kernel/debug/mmc0/rdqs); }
waited() { bg sweep -y $1 -- sh -c "[ \$PADKIT_SWEEP_VALUE = 31 ] || { touch $B/started; sleep 0.5; }" \
        >/dev/null 2>$B/err &
    export sweep=$! B; until [ -e $B/started ]; do sleep 0.01; done
    flock $B/tmp/padkit.lock sh -c "until grep -q Waiting \$B/err; do sleep 0.01; done; $2"; wait $sweep; }
)sh";

struct script_row {
    const char* name;
    std::string script;
    std::string out, err;  // <B> stands for the board; "..." at the end: what the text begins with
    int status;
    bool needs_subreaper = false;  // qemu-user refuses PR_SET_CHILD_SUBREAPER
};

void check_script(const script_row& row) {
    SCOPED_TRACE(row.name);
    tune_board b;
    b.launcher = {"sh", "-c", prelude + row.script, "sh"};
    check(b, {{}, {}, row.out, row.err, row.status});
}

const std::string p = "padkit-tune-sim: ", lost = p + "write standard output failed.\n";
// A sweep of RANGE interrupted while it waits for the lock: it waits again to put back, and is let in.
std::string interrupted_wait(const std::string& range) {
    return "waited 'mmc::rdqs " + range +
           "' 'kill -INT $sweep; for i in 1 2 3 4 5 6 7 8 9 10; do\n"
           "    grep -c Waiting $B/err | grep -q 2 && echo reacted && break; sleep 0.1; done'\n"
           "echo $?; rdqs; grep -v Waiting $B/err";
}
const std::string restored = "reacted\n130\n37\n" + p + "interrupted by Interrupt; every swept property restored\n";
// What a run that needs ehci0-phy::tx-vref says without the memory device.
const std::string vref = p + "ehci0-phy::tx-vref: ";
const std::string no_vref = vref + "open /dev/zeb_mem failed.\n" + vref + "unreadable";
std::string skipped(const char* name) { return p + "<B>/etc/padkit.d/" + name + ": not a regular file; skipped\n"; }
using namespace tune_status;

// clang-format off
const script_row rows[] = {
    // The writes are never cut short, statuses mean one thing.
    {"apply -v into head -1 applies everything", "t apply -v $B/new | head -1 >/dev/null; whole new new", "", lost, 0},
    {"SIGQUIT at random moments of apply", R"sh(for i in 1 2 3 4; do
        bg apply $B/few_new 2>/dev/null & pause $i 0.1; kill -QUIT $! 2>/dev/null; wait
        whole few_old few_new; t apply $B/few_old; done)sh", "", "", 0},
    {"SIGALRM at random moments of a sweep", R"sh(for i in 1 2 3; do
        bg sweep -y mmc::rdqs 30 60 -- sleep 0.01 >/dev/null 2>&1 & pause $i 0.3; kill -ALRM $! 2>/dev/null; wait
        rdqs; done)sh", "37\n37\n37\n", "", 0},
    {"a held SIGTERM ends a complete apply and says so", R"sh(bg apply $B/new & apply=$!
        while grep -q '^0x00540008 0x00ac111c' $B/regs; do sleep 0.01; done
        kill -TERM $apply; { wait $apply; } 2>/dev/null; echo $?; whole new new)sh",
        "143\n", p + "apply complete; ending on Terminated, held until the writes were done\n", 0},
    {"lost output: 4 for a complete apply and an equal diff, differences keep 1", R"sh(
        t apply -v $B/few_new >/dev/full; echo $?; t diff --json $B/few_new >/dev/full; echo $?
        t diff $B/old >/dev/full; echo $?; whole few_new few_new)sh", "4\n4\n1\n", lost + lost + lost, 0},
    {"-h and --version need no board", R"sh(PADKIT_SIM_DIR=$B.x t -h >/dev/null; ls -d $B.x 2>/dev/null
        env -u PADKIT_SIM_DIR -u HOME -u XDG_STATE_HOME $T --version)sh",
        "padkit-tune-sim " PADKIT_VERSION "\n", "", 0},
    // Waits that answer, orphans ended, results kept.
    {"SIGINT ends a wait for the lock, the value restored", interrupted_wait("30 31"), restored, "", 0},
    {"SIGINT while a row waits to be put back: put back, then ended", interrupted_wait("30 30"), restored, "", 0},
    {"a journalled sweep waiting for the lock keeps the watchdog alive; SIGINT leaves a resumable stop", R"sh(: >$B/wd
        waited "--journal $B/j --watchdog /wd mmc::rdqs 30 31" 'a=$(wc -c <$B/wd); sleep 1.5
            [ $(wc -c <$B/wd) -gt $a ] && echo kept alive; kill -INT $sweep
            until grep -c Waiting $B/err | grep -q 2; do sleep 0.01; done'
        echo $? $(rdqs) $(tail -n 1 $B/j); t resume $B/j >/dev/null; echo $? $(tail -n 1 $B/j))sh",
        "kept alive\n130 37 stop\n0 end\n", "", 0},
    {"what the command leaves in a session of its own ends before the next value", R"sh(
        t sweep -y mac-tx::delay 0 1 -- sh -c '[ -e $0.pid ] && kill -0 $(cat $0.pid) 2>/dev/null && exit 1
            setsid sleep 30 & echo $! >$0.pid' $B/daemon
        kill -0 $(cat $B/daemon.pid) 2>/dev/null && echo left running; true)sh",
        "               0 1\n"
        "mac-tx::delay  O#\n"
        "mac-tx::delay: window 0..1 (2 values), centre 0; neither edge found\n"
        "mac-tx::delay: original 0: margin at least 0 below, at least 1 above\n",
        "", 0, true},
    {"a result file on a full disk is refused first", "t sweep -y --csv /dev/full mmc::rdqs 30 31 -- true",
        "", p + "cannot write /dev/full: No space left on device; nothing written\n", bad_input},
    {"a sweep killed keeps every measured value in its CSV", R"sh(t sweep -y --csv $B/s.csv mmc::rdqs 30 40 -- \
        sh -c '[ $PADKIT_SWEEP_VALUE -lt 32 ] || kill -KILL $PPID' >/dev/null 2>&1; sed -n '/^name/,$p' $B/s.csv)sh",
        "name,value,result\nmmc::rdqs,30,pass\nmmc::rdqs,31,pass\n", "", 0},
    // Nothing unreadable is a value, odd input is shown as it is.
    // Two fields of one word: the second is as unknown as the first, read once.
    {"no memory device: dump 1, apply 1, diff 2, sweep 2", R"sh(echo 'ehci0-phy::tx-vref = 3' >$B/p; rm $B/regs
        t dump ehci0-phy::tx-rise ehci0-phy::tx-vref; echo $?; t apply $B/p; echo $?; t diff $B/p; echo $?
        t sweep -y ehci0-phy::tx-vref 0 1 -- true; echo $?)sh",
        "# ehci0-phy::tx-rise: unreadable\n# ehci0-phy::tx-vref: unreadable\n1\n1\n2\n2\n",
        p + "ehci0-phy::tx-rise: open /dev/zeb_mem failed.\n" + no_vref + "; nothing written\n" + no_vref + "\n" +
        no_vref + "; nothing written\n", 0},
    {"a code without a key is compared and applied over", R"sh(echo '0x00f38120 0x00000000' >$B/regs
        echo 'tarnm-ddra::clkdrv = 40' >$B/p; t diff --json $B/p; t apply -v $B/p; t dump tarnm-ddra::clkdrv)sh",
        "[\n  {\"name\": \"tarnm-ddra::clkdrv\", \"board\": \"code 0\", \"file\": 40}\n]\n"
        "tarnm-ddra::clkdrv: code 0 -> 40\ntarnm-ddra::clkdrv = 40\n", "", 0},
    {"/etc/padkit.d: hidden files, links in and out of the board, FIFOs", R"sh(d=$B/etc/padkit.d; mkdir -p $d; cd $d
        echo 'mac-tx::delay = 1' >10-a.conf; echo 'mac-tx::delay = 3' >.old.conf; ln -s gone .#10-a.conf
        mkfifo 20-fifo.conf; ln -s /dev/zero 30-zero.conf; echo 'mmc::rdqs = 40' >$B/p; ln -s ../../p 40-link.conf
        t apply --system -v)sh",
        "mac-tx::delay: 0 -> 1\nmmc::rdqs: 37 -> 40\n", skipped("20-fifo.conf") + skipped("30-zero.conf"), 0},
    {"a profile larger than 1 MiB is refused", "head -c 1048577 /dev/zero >$B/p; t apply $B/p",
        "", p + "<B>/p: larger than 1 MiB; refused\n", bad_input},
    {"a byte order mark is no part of the first name", R"sh(printf '\357\273\277mac-tx::delay = 1\n' | t apply -v -)sh",
        "mac-tx::delay: 0 -> 1\n", "", 0},
    {"control characters escaped, a long value cut",
        R"sh(printf 'mac-tx::delay = \033[31m\001\nmmc::rdqs = %0300d\n' 1 | t apply -)sh",
        "", p + "(standard input):1: mac-tx::delay: '\\x1b[31m\\x01' is not a decimal or 0x hexadecimal number\n" +
        p + "(standard input):2: '" + std::string(40, '0') + "...' is too long\n", bad_input},
    {"after 100 bad lines the rest are counted", "yes x | head -n 103 | t apply - 2>&1 | tail -n 2",
        p + "(standard input):100: expected NAME = VALUE\n" + p + "3 more bad lines not listed\n", "", 0},
    {"standard input twice, or closed", "t apply - - </dev/null; t apply - <&-",
        "", p + "standard input given twice; it can be read once\n" + p + "standard input is closed\n", bad_input},
    // Result files, the watchdog, the test command's output and trials under attack.
    {"a result file naming a device or standard output writes through it; a directory is refused", R"sh(
        mknod $B/null c 1 3; ln -s /proc/self/fd/1 $B/out
        t sweep -y --profile $B/null mmc::rdqs 30 31 -- true >/dev/null
        t sweep -y --profile $B/out mmc::rdqs 30 31 -- true >$B/o; grep -x 'mmc::rdqs = 30' $B/o
        t sweep -y --profile $B mmc::rdqs 30 31 -- true; echo $?; [ -c $B/null ] && [ -L $B/out ] && echo kept)sh",
        "mmc::rdqs = 30\n2\nkept\n", p + "cannot write <B>: Is a directory; nothing written\n", 0},
    {"empty file names are refused", R"sh(for o in --journal --csv --svg --profile --watchdog; do
        t sweep -y $o '' mmc::rdqs 30 31 -- true 2>$B/e; echo $? $(head -n 1 $B/e); done
        for o in --csv --svg --profile; do t merge $o '' $B/x.csv 2>$B/e; echo $? $(head -n 1 $B/e); done)sh",
        "2 " + p + "--journal: the file name is empty\n2 " + p + "--csv: the file name is empty\n2 " + p +
        "--svg: the file name is empty\n2 " + p + "--profile: the file name is empty\n2 " + p +
        "--watchdog: the file name is empty\n2 " + p + "--csv: the file name is empty\n2 " + p +
        "--svg: the file name is empty\n2 " + p + "--profile: the file name is empty\n", "", 0},
    {"a watchdog that takes no keep-alive (here /dev/full) stops the sweep, which puts back", R"sh(mknod $B/wd c 1 7
        t sweep -y --journal $B/j --watchdog /wd mmc::rdqs 30 32 -- sleep 1 >/dev/null
        echo $? $(rdqs) $(tail -n 1 $B/j))sh",
        "1 37 end\n", p + "cannot keep the watchdog /wd alive: No space left on device; it will reset the board\n" + p +
        "cannot write the magic close to the watchdog /wd: No space left on device; it stays armed and will reset the "
        "board\n", 0},
    {"a FIFO as the watchdog is refused, with a reader or without", R"sh(mkfifo $B/wd
        timeout 10 $T sweep -y --journal $B/j --watchdog /wd mmc::rdqs 30 31 -- true; echo $?; exec 3<>$B/wd
        t sweep -y --journal $B/k --watchdog /wd mmc::rdqs 30 31 -- true; echo $?)sh",
        "2\n2\n", p + "cannot open the watchdog /wd: No such device or address; nothing written\n" + p +
        "cannot use the watchdog /wd: not a character device; nothing written\n", 0},
    {"keep-alives go by the clock while the command leaves an orphan every 0.25 s", R"sh(: >$B/wd; s=$(date +%s%N)
        t sweep -y --journal $B/j --watchdog /wd mmc::rdqs 30 30 -- sh -c '
            for i in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20; do (sleep 0.01 &); sleep 0.25; done' >/dev/null
        n=$(tr -d V <$B/wd | wc -c) seconds=$((($(date +%s%N) - s) / 1000000000))
        [ $n -ge $((seconds - 1)) ] && echo kept alive || echo $n in $seconds s)sh",
        "kept alive\n", "", 0, true},
    {"the test command's output is not the sweep's: a sweep into head -1 passes every value", R"sh(
        t sweep -y --csv $B/s.csv mmc::rdqs 30 45 -- sh -c 'echo t; sleep 0.05' 2>/dev/null | head -n 1 >/dev/null
        grep -c pass $B/s.csv)sh", "16\n", "", 0},
    {"a FIFO or a directory as the trial file is bad, neither applied nor blessed", R"sh(d=$B/var/lib/padkit
        mkdir -p $d; mkfifo $d/trial-0001+3-0.conf; t trial --status | head -n 1; t apply --system; t bless; rm $d/*
        mkdir $d/trial-0001+2-1@1.conf; t bless)sh",
        "state: bad\n", p + "trial <B>/var/lib/padkit/trial-0001+3-0.conf is not a regular file; not applied\n" +
        p + "trial <B>/var/lib/padkit/trial-0001+3-0.conf is not a regular file; not blessed\n" +
        p + "trial <B>/var/lib/padkit/trial-0001+2-1@1.conf is not a regular file; not blessed\n", not_done},
    {"the last trial number held by the pending trial: it is named", R"sh(mkdir -p $B/var/lib/padkit
        echo 'mmc::rdqs = 9' | tee $B/t >$B/var/lib/padkit/trial-9999+3-0.conf; t trial $B/t)sh",
        "", p + "no trial number left: remove the trial "
        "<B>/var/lib/padkit/trial-9999+3-0.conf first (trial --remove)\n", not_done},
    {"trial --status --json escapes a path that is not UTF-8", R"sh(echo 'mmc::rdqs = 9' >$B/t
        export PADKIT_SIM_DIR=$B/$(printf '\377'); t trial $B/t >/dev/null
        t trial --status --json | python3 -c 'import json, os, sys; print(os.fsencode(
            json.loads(sys.stdin.buffer.read().decode())["file"]))' | sed "s|$B||")sh",
        "b'/\\xff/var/lib/padkit/trial-0001+3-0.conf'\n", "", 0},
    // resume and resume --restore take a journal's word for nothing they cannot check first.
    {"an original the property cannot hold is refused before anything is written", R"sh(
        t sweep -y --journal $B/j mac-tx::delay 0 3 -- sh -c '[ $PADKIT_SWEEP_VALUE != 2 ] || kill -KILL $PPID' 2>&-
        for v in 99 abc; do sed "/^original/s/\"0\"/\"$v\"/" $B/j >$B/k; t resume $B/k; t resume --restore $B/k; done
        echo $?; t dump mac-tx::delay)sh", "2\nmac-tx::delay = 2\n",
        p + "<B>/k:4: mac-tx::delay: 99 is not in 0..3; nothing written\n" +
        p + "<B>/k:4: mac-tx::delay: 99 is not in 0..3; nothing written\n" +
        p + "<B>/k:4: mac-tx::delay: 'abc' is not a decimal or 0x hexadecimal number; nothing written\n" +
        p + "<B>/k:4: mac-tx::delay: 'abc' is not a decimal or 0x hexadecimal number; nothing written\n", 0},
    {"an unreadable voltage refuses resume, resume --restore writes the original back", R"sh(
        t sweep -y --journal $B/j core_regulator::microvolts 880000 900000 -- \
            sh -c '[ $PADKIT_SWEEP_VALUE != 890000 ] || kill -KILL $PPID' 2>&-
        : >$B/sys/class/regulator/regulator.2/microvolts; t resume $B/j; echo $?; t resume --restore $B/j >/dev/null
        echo $?; t dump core_regulator::microvolts)sh", "2\n0\ncore_regulator::microvolts = 900000\n",
        p + "core_regulator::microvolts: unreadable; nothing written\n" + p +
            "core_regulator::microvolts: 890000 counted as a hang (in flight when the run stopped)\n", 0},
};
// clang-format on

TEST(PadkitTuneReliability, ScriptsUnderPipesSignalsLocksAndOddBoards) {
    for (const script_row& row : rows)
        if (row.script.find("python3") != std::string::npos && lacks("python3"))
            std::cout << "skipped, needs python3: " << row.name << "\n";
        else if (!*PADKIT_SIM_EMULATOR || !row.needs_subreaper)
            check_script(row);
}

// A read-only regulator refuses its write; the drive strength goes back to its code without a key,
// the voltage found off the 10 mV step cannot be put back (the next step up is written instead).
TEST(PadkitTuneReliability, RollbackRestoresACodeWithoutAKey) {
    tune_board b;
    b.change("regs", "0x00f38120 0x00000000\n");
    b.change("sys/class/regulator/regulator.1/microvolts", "1095000");
    b.change("p",
             "tarnm-ddra::clkdrv = 40\ncpu_regulator::microvolts = 1200000\ncore_regulator::microvolts = 1000000\n");
    if (!read_only(b, b.dir / "sys/class/regulator/regulator.2"))
        GTEST_SKIP() << "no private mount namespace here";
    const result got = b.run({"apply", (b.dir / "p").string()});
    EXPECT_EQ(got.status, left_changed);
    EXPECT_EQ(got.err, p + "core_regulator::microvolts: writing 1000000 failed\n" + p +
                           "cpu_regulator::microvolts: not restored to 1095000: wrote 1095000, reads back 1100000\n" +
                           p + "tarnm-ddra::clkdrv: restored to code 0\n" + p +
                           "apply failed; left changed: cpu_regulator::microvolts\n");
    EXPECT_EQ(slurp(b.dir / "regs"), "0x00f38120 0x00000000\n");
}

// --keep centre and a profile that cannot be replaced: refused before the first write when it is read-only; put back
// when its rename fails at the end. Nothing is kept, and the profile stays as it was.
TEST(PadkitTuneReliability, KeepCentreKeepsNothingWhenTheProfileCannotBeWritten) {
    // clang-format off
    using mount = bool (*)(sim_board&, const fs::path&);
    const struct { const char* name; mount set_up; int status; std::string why; } rows[] = {
        {"read-only", read_only, bad_input, "Read-only file system; nothing written"},
        {"a mount point", mount_point, not_done, "Device or resource busy"},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        tune_board b;
        const fs::path profile = b.scratch / "p.conf";
        std::ofstream(profile) << "# old\n";
        if (!row.set_up(b, profile))
            GTEST_SKIP() << "no private mount namespace here";
        const result got =
            b.run({"sweep", "-y", "--keep", "centre", "--profile", profile, "mmc::rdqs", "30", "34", "--", "true"});
        EXPECT_EQ(got.status, row.status);
        EXPECT_EQ(got.err, p + "cannot write " + profile.string() + ": " + row.why + "\n");
        EXPECT_EQ(b.run({"dump", "mmc::rdqs"}).out, "mmc::rdqs = 37\n");
        EXPECT_EQ(slurp(profile), "# old\n");
    }
}

// A centre that cannot be kept (the regulator's limit lowered by the last run) is not kept: the original goes back and
// the sweep fails.
TEST(PadkitTuneReliability, KeepCentreThatCannotBeWrittenPutsBackAndFails) {
    tune_board b;
    const std::string core = "core_regulator::microvolts", limit = (b.dir / "sys/class/regulator/regulator.2").string();
    b.change("p", (core + " = 880000\n").c_str());
    ASSERT_EQ(b.run({"apply", (b.dir / "p").string()}).status, 0);
    const std::string lower = "[ $PADKIT_SWEEP_VALUE != 920000 ] || echo 890000 >" + limit + "/max_microvolts";
    const result got = b.run(
        {"sweep", "-y", "--step", "10000", "--keep", "centre", core, "880000", "920000", "--", "sh", "-c", lower});
    EXPECT_EQ(got.status, not_done) << got.err;
    EXPECT_EQ(b.run({"dump", core}).out, core + " = 880000\n");
}

}  // namespace
