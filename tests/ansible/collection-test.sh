#!/bin/sh
# SPDX-License-Identifier: MIT
# The padkit.board collection under ansible-playbook, on a simulated board of its own.
# Usage: collection-test.sh SOURCE_DIR VERSION PADKIT_TUNE_SIM [EMULATOR...]; exit 77 means skipped.
set -u
src=$1 version=$2 tune=$3 fails=0
shift 3
command -v ansible-playbook >/dev/null || "$src/scripts/need-packages" ansible ||
    { echo "skipped: no ansible"; exit 77; }
tmp=$(mktemp -d) && trap 'rm -rf "$tmp"' EXIT
mkdir -p "$tmp/collections/ansible_collections/padkit" "$tmp/etc"
ln -s "$src/ansible" "$tmp/collections/ansible_collections/padkit/board"
export ANSIBLE_COLLECTIONS_PATH="$tmp/collections" ANSIBLE_HOME="$tmp/home" \
    ANSIBLE_REMOTE_TEMP="$tmp/home/tmp" ANSIBLE_NOCOLOR=1 PADKIT_SIM_DIR="$tmp/board"
# The module takes one program: a cross-built one goes through its emulator.
[ $# -eq 0 ] || { printf '#!/bin/sh\nexec %s "%s" "$@"\n' "$*" "$tune" >"$tmp/tune" && chmod +x "$tmp/tune" &&
    tune=$tmp/tune; }
dest=$tmp/etc/50-board.conf

fail() { echo "FAIL $1"; fails=1; }
failed() { fail "$1"; cat "$tmp/out"; }
# play NAME RECAP OPTION...: a run of board.yml ends with RECAP (changed=N failed=M).
play() {
    name=$1 recap=$2 && shift 2
    ansible-playbook -i localhost, "$src/tests/ansible/board.yml" \
        -e "{\"binary\": \"$tune\", \"dest\": \"$dest\"}" "$@" >"$tmp/out" 2>&1
    [ "$(grep -o 'changed=[0-9]*\|failed=[0-9]*' "$tmp/out" | xargs)" = "$recap" ] || failed "$name: $recap"
}
# shows TEXT...: the last run printed every TEXT.
shows() { for text; do grep -qF -- "$text" "$tmp/out" || failed "$name: $text"; done; }

"$tune" dump >"$tmp/fresh"
play check "changed=1 failed=0" --check --diff
shows "-ehci0-phy::tx-vref = 8" "+ehci0-phy::tx-vref = 9" "+++ after: $dest"
{ "$tune" dump | cmp -s - "$tmp/fresh" && [ ! -e "$dest" ]; } || fail "check: board or $dest written"
play first "changed=1 failed=0"
[ "$(cat "$dest")" = "ehci0-phy::tx-vref = 9" ] || fail "first run installed: $(cat "$dest")"
play second "changed=0 failed=0"
"$tune" dump >"$tmp/applied"
play refused "changed=0 failed=1" -e '{"profile": "mmc::rdqs = 400\nfoo = 1\n"}'
shows "(standard input):1: mmc::rdqs: 400 is not in 2..255" "(standard input):2: no property foo"
# A regulator made read-only in a private mount namespace refuses its write.
ro=$tmp/board/sys/class/regulator/regulator.2/microvolts
cat >"$tmp/ro" <<END
#!/bin/sh
exec unshare -m sh -c 'mount --bind "\$0" "\$0" && mount -o remount,bind,ro "\$0" "\$0" && exec "\$@"' \\
    "$ro" "$tune" "\$@"
END
chmod +x "$tmp/ro"
if "$tmp/ro" --version >/dev/null 2>&1; then
    play rolled-back "changed=0 failed=1" -e "{\"binary\": \"$tmp/ro\",
        \"profile\": \"ehci0-phy::tx-vref = 10\\ncore_regulator::microvolts = 1000000\\n\"}"
    shows "put back what it had written" "ehci0-phy::tx-vref: restored to 9"
    "$tune" dump | cmp -s - "$tmp/applied" || fail "rolled-back: board changed"
else
    echo "rolled-back: skipped, no private mount namespace here"
fi

grep -qx "version: $version" "$src/ansible/galaxy.yml" || fail "galaxy.yml: not version $version"
name=ansible-doc
ansible-doc padkit.board.padkit_profile padkit.board.padkit_facts >"$tmp/out" 2>&1 || failed "$name"
shows "> PADKIT.BOARD.PADKIT_PROFILE" "> PADKIT.BOARD.PADKIT_FACTS" "- dest" "- names" "- binary"
exit $fails
