# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# A fake tarnm board, sourced by bash scripts that run in a private mount
# namespace of their own: /dev with null, zero, urandom and full, a 16 MiB
# sparse image as /dev/zeb_mem (the word at physical address A at offset A),
# tmpfs with the kernel files on /sys/class, /sys/kernel/debug and /tmp.

# fake_board FILE...: the new /dev is built aside while the real nodes are still
# reachable, with a copy of each FILE as /dev/.NAME (their directory may be in /tmp).
fake_board() {
    local img stage d f
    img=$(mktemp) && stage=$(mktemp -d) && truncate -s 16M "$img" && mount -t tmpfs tmpfs "$stage" || return
    for d in null zero urandom full; do touch "$stage/$d" && mount --bind "/dev/$d" "$stage/$d" || return; done
    touch "$stage/zeb_mem" && mount --bind "$img" "$stage/zeb_mem" || return
    for f; do cp "$f" "$stage/.${f##*/}" || return; done
    mount --move "$stage" /dev && rmdir "$stage" && rm "$img" || return
    for d in /sys/class /sys/kernel/debug /tmp; do mount -t tmpfs tmpfs "$d" || return; done
    mkdir -p /sys/class/regulator/regulator.{1,2} /sys/kernel/debug/mmc0 &&
        printf '37\n' >/sys/kernel/debug/mmc0/rdqs || return
    for d in 1 2; do (cd "/sys/class/regulator/regulator.$d" && echo 800000 >min_microvolts &&
        echo 1300000 >max_microvolts && echo "1${d}00000" >microvolts) || return; done
}
