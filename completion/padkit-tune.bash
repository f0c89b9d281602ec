# bash completion for padkit-tune and padkit-tune-sim        -*- shell-script -*-
#
# Names and groups for dump come from the listing of the padkit beside the
# program being completed (padkit-tune-sim: padkit-sim), so no list can drift.

_padkit_tune()
{
    local cur=${COMP_WORDS[COMP_CWORD]} prog=${COMP_WORDS[0]/#\~/$HOME} command=${COMP_WORDS[1]-}
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W "dump diff apply -h --help --version" -- "$cur")
        return
    fi
    case $command:$cur in
        dump:-*) mapfile -t COMPREPLY < <(compgen -W "-x --json" -- "$cur") ;;
        diff:-*) mapfile -t COMPREPLY < <(compgen -W "--json" -- "$cur") ;;
        apply:-*) mapfile -t COMPREPLY < <(compgen -W "-n --dry-run -v --system" -- "$cur") ;;
        dump:*)
            # The words of a name as readline splits them at its colons.
            local line=${COMP_LINE:0:COMP_POINT} word
            word=${line##*[[:space:]]}
            mapfile -t COMPREPLY < <(compgen -W "$(timeout 5 "${prog/padkit-tune/padkit}" -l 2>/dev/null |
                sed -n 's/^\t\{0,1\}\([^ ]*\) :.*/\1/p')" -- "$word")
            if [[ $word == *:* && $COMP_WORDBREAKS == *:* ]]; then
                COMPREPLY=("${COMPREPLY[@]#"${word%"${word##*:}"}"}")
            fi
            ;;
        diff:* | apply:*) mapfile -t COMPREPLY < <(compgen -f -- "$cur") ;;
    esac
}

complete -F _padkit_tune padkit-tune padkit-tune-sim
