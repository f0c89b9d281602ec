# SPDX-License-Identifier: MIT
# bash completion for padkit-memtest and padkit-memtest-sim        -*- shell-script -*-
#
# The patterns come from the usage of the program being completed, so no list
# can drift.

_padkit_memtest()
{
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]} prog=${COMP_WORDS[0]/#\~/$HOME}
    COMPREPLY=()
    case $prev in
        --bus-width) mapfile -t COMPREPLY < <(compgen -W "16 32 64" -- "$cur") && return ;;
        --size | --passes) return ;;
        --patterns)
            # One more name after the ones already given.
            local given=${cur%"${cur##*,}"}
            mapfile -t COMPREPLY < <(compgen -P "$given" -W "$(timeout 5 "$prog" --help 2>/dev/null |
                sed -n 's/^  \([a-z-]*\) .*/\1/p')" -- "${cur##*,}")
            return ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "--size --bus-width --patterns --passes -h --help --version" -- "$cur")
}

complete -F _padkit_memtest padkit-memtest padkit-memtest-sim
