#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installation checks: install-test.sh man|completion|boot|layout|deb|ptest SOURCE_DIR BUILD_DIR [PADKIT_SIM]
# PADKIT_SIM is given when padkit-sim is installed; exit 77 means skipped.
set -u
case=$1 src=$2 build=$3 sim=${4:-} fails=0
tmp=$(mktemp -d) && trap 'rm -rf "$tmp"' EXIT
expect() { [ "$1" = "$2" ] || { echo "FAIL $3: expected '$1', got '$2'"; fails=1; }; }
# The files that an installation holds, each after the prefix $1; the init script after $2.
installed() {
    local c=share/bash-completion/completions
    local f=(sbin/padkit share/man/man8/padkit.8.gz $c/padkit share/doc/padkit/copyright
        share/doc/padkit/changelog.gz sbin/padkit-tune share/man/man8/padkit-tune.8.gz
        $c/padkit-tune lib/systemd/system/padkit-tune.service lib/systemd/system/padkit-tune-bless.service
        sbin/padkit-memtest share/man/man8/padkit-memtest.8.gz $c/padkit-memtest)
    grep -q '^PADKIT_STATIC:BOOL=ON$' "$build/CMakeCache.txt" && f+=(share/lintian/overrides/padkit)
    [ -n "$sim" ] && f+=(bin/padkit-sim share/man/man1/padkit-sim.1.gz $c/padkit-sim
        share/man/man1/padkit-tune-sim.1.gz bin/padkit-tune-sim $c/padkit-tune-sim
        share/man/man1/padkit-memtest-sim.1.gz bin/padkit-memtest-sim $c/padkit-memtest-sim)
    { printf "$1%s\n" "${f[@]}"; echo "${2}etc/init.d/padkit-tune"; } | sort | xargs
}
# An installation below $tmp/stage: DESTDIR keeps even absolute paths there.
stage() { DESTDIR=$tmp/stage cmake --install "$build" --prefix /opt/padkit >/dev/null; }

case $case in
man)
    command -v mandoc >/dev/null || "$src/scripts/need-packages" mandoc || exit 1
    pages=("$build/doc/padkit.8" "$build/doc/padkit-tune.8" "$build/doc/padkit-memtest.8" "$build/doc/padkit-sim.1")
    expect "" "$(grep -H '@[A-Z_]*@' "${pages[@]}")" "substituted"
    expect "" "$(mandoc -T lint "${pages[@]}" 2>&1)" "mandoc -T lint" ;;
completion)
    [ -n "$sim" ] || { echo "skipped: no padkit-sim to complete from"; exit 77; }
    "$src/scripts/need-packages" bash-completion || exit 1
    stage || exit 1
    export PADKIT_SIM_DIR=$tmp/board BASH_COMPLETION_USER_DIR=$tmp/stage/opt/padkit/share/bash-completion
    # Loaded by name from the installation, as bash does on the first <Tab>.
    set +u
    # shellcheck disable=SC1091
    source /usr/share/bash-completion/bash_completion
    _completion_loader padkit-sim
    expect "complete -F _padkit padkit-sim" "$(complete -p padkit-sim)" "loaded"
    complete_line() {
        COMP_LINE=$1 COMP_POINT=${#1} COMP_WORDS=("$sim") COMPREPLY=() && _padkit
        echo "${COMPREPLY[*]}"
    }
    expect "-h -i -l -r -x" "$(complete_line "padkit-sim -")" "options"
    expect "dq8" "$(complete_line "padkit-sim -r tarnm-ddrb-write7::dq8")" "name after -r"
    expect "0x1e 0x22 0x28 0x3c" "$(complete_line "padkit-sim -x tarnm-ddrb::dqsdrv ")" "hex keys"
    expect "0 1 2" "$(complete_line "padkit-sim ehci2-phy::tx-crossover ")" "values from help"
    expect "" "$(complete_line "padkit-sim mac-tx::delay 1 ")" "nothing after the value"
    # padkit-memtest-sim's, with the patterns its usage lists.
    _completion_loader padkit-memtest-sim
    COMP_WORDS=("${sim%/*}/padkit-memtest-sim" --patterns switching,r) COMP_CWORD=2 && _padkit_memtest
    expect "switching,random" "${COMPREPLY[*]}" "patterns after a comma"
    COMP_WORDS=(padkit-memtest-sim --bus-width "") && _padkit_memtest
    expect "16 32 64" "${COMPREPLY[*]}" "bus widths" ;;
boot)
    command -v systemd-analyze >/dev/null || "$src/scripts/need-packages" systemd || exit 77
    command -v shellcheck >/dev/null || "$src/scripts/need-packages" shellcheck || exit 77
    # verify looks for the command in the host's own directories: point it at a stand-in.
    for unit in padkit-tune.service padkit-tune-bless.service; do
        sed "s|^ExecStart=padkit-tune |ExecStart=$(type -P true) |" "$src/boot/$unit" >"$tmp/$unit"
    done
    expect "" "$(SYSTEMD_LOG_LEVEL=warning systemd-analyze verify --man=no \
        "$tmp/padkit-tune.service" "$tmp/padkit-tune-bless.service" 2>&1)" "systemd-analyze verify"
    expect "" "$(shellcheck -s sh "$src/boot/padkit-tune.init" 2>&1)" "shellcheck" ;;
layout)
    stage || exit 1
    expect "$(installed ./opt/padkit/ ./opt/padkit/)" "$(cd "$tmp/stage" && find . ! -type d | sort | xargs)" "files"
    cmp "$build/completion/padkit.bash" "$tmp/stage/opt/padkit/share/bash-completion/completions/padkit" ||
        fails=1 ;;
ptest)
    [ -n "$sim" ] || { echo "skipped: no padkit-sim installed"; exit 77; }
    stage && DESTDIR=$tmp/stage cmake --install "$build" --prefix /opt/padkit --component e2e-tests >/dev/null || exit 1
    # Each installed program notes its runs: the suite must run these, not the build tree's.
    for program in bin/padkit-sim bin/padkit-tune-sim bin/padkit-memtest-sim sbin/padkit-memtest; do
        mv "$tmp/stage/opt/padkit/$program" "$tmp/stage/opt/padkit/$program.real"
        # shellcheck disable=SC2016 # expanded by the stand-in
        printf '#!/bin/bash\necho "${0##*/}" >>%s\nexec -a "$0" "$0.real" "$@"\n' "$tmp/ran" \
            >"$tmp/stage/opt/padkit/$program" && chmod +x "$tmp/stage/opt/padkit/$program"
    done
    filter='PadkitSim.LostOutput:PadkitTunePictures.*:PadkitMemtest*'
    "$(find "$tmp/stage" -name run-ptest)" --gtest_filter="$filter" >"$tmp/out" 2>&1
    expect 0 $? "run-ptest status"
    cases=$("$build/tests/e2e/padkit_e2e_tests" --gtest_list_tests --gtest_filter="$filter" |
        awk '/^[^ ]/ { suite = $1 } /^ / { print "PASS: " suite $1 }')
    expect "$cases" "$(cat "$tmp/out")" "one line a case"
    expect "padkit-memtest padkit-memtest-sim padkit-sim padkit-tune-sim" "$(sort -u "$tmp/ran" | xargs)" "programs run"
    ;;
deb)
    cpack -G DEB --config "$build/CPackConfig.cmake" -B "$tmp" >/dev/null || exit 1
    arch=$(sed -n 's/^set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE "\(.*\)")$/\1/p' "$build/CPackConfig.cmake")
    deb=("$tmp"/padkit_*_"${arch:=$(dpkg --print-architecture)}".deb)
    expect "Package: padkit|Architecture: $arch|Section: admin" \
        "$(dpkg-deb --field "${deb[0]}" Package Architecture Section | paste -sd '|')" "control"
    expect "$(installed ./usr/ ./)" \
        "$(dpkg-deb --contents "${deb[0]}" | awk '{print $6}' | grep -v '/$' | sort | xargs)" "contents"
    "$src/scripts/need-packages" lintian || exit 1
    lintian --fail-on error "${deb[0]}" || { echo "FAIL lintian"; fails=1; } ;;
esac
exit $fails
