# SPDX-License-Identifier: MIT
# bash completion for padkit-tune and padkit-tune-sim        -*- shell-script -*-
#
# Names and groups for dump, sweep and shmoo come from the listing of the padkit
# beside the program being completed (padkit-tune-sim: padkit-sim), so no
# list can drift.

_padkit_tune()
{
    local cur=${COMP_WORDS[COMP_CWORD]} prog=${COMP_WORDS[0]/#\~/$HOME} command=${COMP_WORDS[1]-}
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(compgen -W "dump diff apply sweep shmoo deskew resume merge report trial bless -h --help --version" -- "$cur")
        return
    fi
    if [[ $command == merge ]]; then
        case $cur in
            -*) mapfile -t COMPREPLY < <(compgen -W "--csv --svg --profile" -- "$cur") ;;
            *) mapfile -t COMPREPLY < <(compgen -f -- "$cur") ;;
        esac
        return
    fi
    if [[ $command == sweep || $command == shmoo || $command == deskew ]]; then
        local i prev=${COMP_WORDS[COMP_CWORD - 1]}
        # After "--" comes the test command: its name, then its own words.
        for ((i = 2; i < COMP_CWORD; i++)); do
            [[ ${COMP_WORDS[i]} == -- ]] || continue
            if ((i == COMP_CWORD - 1)); then
                mapfile -t COMPREPLY < <(compgen -c -- "$cur")
            else
                mapfile -t COMPREPLY < <(compgen -f -- "$cur")
            fi
            return
        done
        case $prev in
            --keep) mapfile -t COMPREPLY < <(compgen -W "original centre" -- "$cur") && return ;;
            --csv | --svg | --profile | --journal | --watchdog | --bits) mapfile -t COMPREPLY < <(compgen -f -- "$cur") && return ;;
            --log) mapfile -t COMPREPLY < <(compgen -d -- "$cur") && return ;;
            --step | --xstep | --ystep | --weigh | --runs | --timeout) return ;;
        esac
    fi
    [[ $command == trial && ${COMP_WORDS[COMP_CWORD - 1]} == --tries ]] && return
    case $command:$cur in
        dump:-*) mapfile -t COMPREPLY < <(compgen -W "-x --json" -- "$cur") ;;
        diff:-*) mapfile -t COMPREPLY < <(compgen -W "--json" -- "$cur") ;;
        apply:-*) mapfile -t COMPREPLY < <(compgen -W "-n --dry-run -v --system" -- "$cur") ;;
        trial:-*) mapfile -t COMPREPLY < <(compgen -W "--tries --now --status --json --remove" -- "$cur") ;;
        bless:-*) mapfile -t COMPREPLY < <(compgen -W "-h --help" -- "$cur") ;;
        sweep:-*)
            mapfile -t COMPREPLY < <(compgen -W "-y --step --runs --timeout --keep --csv --svg --profile --journal
                --watchdog --log --parallel --bits --" -- "$cur") ;;
        shmoo:-*)
            mapfile -t COMPREPLY < <(compgen -W "-y --xstep --ystep --weigh --runs --timeout --keep --csv --svg
                --profile --journal --watchdog --log --" -- "$cur") ;;
        deskew:-*)
            mapfile -t COMPREPLY < <(compgen -W "-y --full --runs --timeout --keep --csv --profile --journal
                --watchdog --log --bits --" -- "$cur") ;;
        deskew:*)
            # Controllers, their lanes and all, from the listing's lanes.
            local line=${COMP_LINE:0:COMP_POINT} word
            word=${line##*[[:space:]]}
            mapfile -t COMPREPLY < <(compgen -W "all $(timeout 5 "${prog/padkit-tune/padkit}" -l 2>/dev/null |
                sed -n -e h -e "s/^\t\([^ ]*::dq\) :.*/\1/p" -e g -e "s/^\t\([^ ]*\)-read0::dq :.*/\1/p")" -- "$word")
            if [[ $word == *:* && $COMP_WORDBREAKS == *:* ]]; then
                COMPREPLY=("${COMPREPLY[@]#"${word%"${word##*:}"}"}")
            fi
            ;;
        resume:-*) mapfile -t COMPREPLY < <(compgen -W "--restore --retry-hang" -- "$cur") ;;
        dump:* | sweep:* | shmoo:*)
            # The words of a name as readline splits them at its colons. The
            # listing's group lines have no tab; sweep takes no group.
            local line=${COMP_LINE:0:COMP_POINT} word tab='\{0,1\}'
            word=${line##*[[:space:]]}
            [[ $command == sweep || $command == shmoo ]] && tab=
            mapfile -t COMPREPLY < <(compgen -W "$(timeout 5 "${prog/padkit-tune/padkit}" -l 2>/dev/null |
                sed -n "s/^\t$tab\([^ ]*\) :.*/\1/p")" -- "$word")
            if [[ $word == *:* && $COMP_WORDBREAKS == *:* ]]; then
                COMPREPLY=("${COMPREPLY[@]#"${word%"${word##*:}"}"}")
            fi
            ;;
        report:-*) mapfile -t COMPREPLY < <(compgen -W "--json --svg" -- "$cur") ;;
        diff:* | apply:* | trial:* | resume:* | report:*) mapfile -t COMPREPLY < <(compgen -f -- "$cur") ;;
    esac
}

complete -F _padkit_tune padkit-tune padkit-tune-sim
