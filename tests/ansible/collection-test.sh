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
# ns MOUNTS COMMAND...: COMMAND in a private mount namespace, once the shell commands MOUNTS have run there.
cat >"$tmp/ns" <<'END'
#!/bin/sh
exec unshare -m sh -c "$1"' && shift && exec "$@"' sh "$@"
END
chmod +x "$tmp/ns"
# play NAME RECAP OPTION...: a run of board.yml, after $mounts if set, ends with RECAP (changed=N failed=M).
mounts=
play() {
    name=$1 recap=$2 && shift 2
    ${mounts:+"$tmp/ns" "$mounts"} ansible-playbook -i localhost, "$src/tests/ansible/board.yml" \
        -e "{\"binary\": \"$tune\", \"dest\": \"$dest\"}" "$@" >"$tmp/out" 2>&1
    [ "$(grep -o 'changed=[0-9]*\|failed=[0-9]*' "$tmp/out" | xargs)" = "$recap" ] || failed "$name: $recap"
}
# shows TEXT...: the last run printed every TEXT.
shows() { for text; do grep -qF -- "$text" "$tmp/out" || failed "$name: $text"; done; }

"$tune" dump >"$tmp/fresh"
play delays "changed=1 failed=0" --check --diff -e '{"profile": "tarnm-ddra-read0::dq3 = 1\n"}'
shows "-tarnm-ddra-read0::dq3 = 0 (delay -0)" "+tarnm-ddra-read0::dq3 = 1 (delay -1)"
play check "changed=1 failed=0" --check --diff
shows "-ehci0-phy::tx-vref = 8" "+ehci0-phy::tx-vref = 9" "+++ after: $dest"
{ "$tune" dump | cmp -s - "$tmp/fresh" && [ ! -e "$dest" ]; } || fail "check: board or $dest written"
play first "changed=1 failed=0"
[ "$(cat "$dest")" = "ehci0-phy::tx-vref = 9" ] || fail "first run installed: $(cat "$dest")"
play second "changed=0 failed=0"
"$tune" dump >"$tmp/applied"
play refused "changed=0 failed=1" -e '{"profile": "mmc::rdqs = 400\nfoo = 1\n"}'
shows "(standard input):1: mmc::rdqs: 400 is not in 2..255" "(standard input):2: no property foo"
read_only() { echo "mount --bind $1 $1 && mount -o remount,bind,ro $1 $1"; }
if "$tmp/ns" "$(read_only "$tmp/etc")" true 2>/dev/null; then
    # A regulator made read-only refuses its write.
    ro=$tmp/board/sys/class/regulator/regulator.2/microvolts
    printf '#!/bin/sh\nexec "%s" "%s" "%s" "$@"\n' "$tmp/ns" "$(read_only "$ro")" "$tune" >"$tmp/ro"
    chmod +x "$tmp/ro"
    play rolled-back "changed=0 failed=1" -e "{\"binary\": \"$tmp/ro\",
        \"profile\": \"ehci0-phy::tx-vref = 10\\ncore_regulator::microvolts = 1000000\\n\"}"
    shows "put back what it had written" "ehci0-phy::tx-vref: restored to 9"
    "$tune" dump | cmp -s - "$tmp/applied" || fail "rolled-back: board changed"
    # dest that cannot be written: refused before the board is touched; failing after it, said.
    mounts=$(read_only "$tmp/etc")
    play read-only-dest "changed=0 failed=1" -e '{"profile": "ehci0-phy::tx-vref = 10\n"}'
    shows "its directory is not writable; the board is unchanged"
    "$tune" dump | cmp -s - "$tmp/applied" || fail "read-only-dest: board changed"
    mounts="mount -t tmpfs -o size=4k tmpfs $tmp/etc && head -c 4096 /dev/zero >$tmp/etc/full"
    play full-dest "changed=0 failed=1" -e '{"profile": "ehci0-phy::tx-vref = 10\n"}'
    shows '"changed": true' "No space left on device; the board holds the profile's settings now"
    mounts=
else
    echo "rolled-back, read-only-dest, full-dest: skipped, no private mount namespace here"
fi

grep -qx "version: $version" "$src/ansible/galaxy.yml" || fail "galaxy.yml: not version $version"
name=ansible-doc
ansible-doc padkit.board.padkit_profile padkit.board.padkit_facts >"$tmp/out" 2>&1 || failed "$name"
shows "> PADKIT.BOARD.PADKIT_PROFILE" "> PADKIT.BOARD.PADKIT_FACTS" "- dest" "- names" "- binary"
exit $fails
