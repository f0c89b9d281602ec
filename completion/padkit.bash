# bash completion for padkit and padkit-sim                -*- shell-script -*-
#
# Property names and help texts come from the listing of the very program
# being completed ("${COMP_WORDS[0]}" -l), so padkit-sim completes from
# padkit-sim and no name list can drift from the program's catalogue.

# Keys of the table-mapped DDR fields. The listing shows only the fields'
# descriptions ("clk strength", ...), not their keys, so they are kept here.
_padkit_map_keys()
{
    case $1 in
        tarnm-ddr[ab]::clkdrv | tarnm-ddr[ab]::adrdrv | tarnm-ddr[ab]::dqsdrv)
            echo 30 34 40 60 ;;
        tarnm-ddr[ab]::odt) echo 0 40 60 120 ;;
    esac
}

# Values that a help text spells out: "x=0~15 : ...", "[0-3]cycles" or
# "0=disable, 1=600uA*, ...".
_padkit_help_values()
{
    local help=$1 item
    local -a items
    if [[ $help =~ ^x=([0-9]+)~([0-9]+) || $help =~ ^\[([0-9]+)-([0-9]+)\] ]]; then
        seq "${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}"
        return
    fi
    IFS=, read -ra items <<<"$help"
    for item in "${items[@]}"; do
        [[ ${item# } =~ ^([0-9]+)= ]] && echo "${BASH_REMATCH[1]}"
    done
}

_padkit()
{
    local prog=${COMP_WORDS[0]/#\~/$HOME} line=${COMP_LINE:0:COMP_POINT}
    local cur name hex=0 mode=none candidates="" entry value
    local -a words args
    # Words from the line itself: COMP_WORDS splits the names at their "::".
    read -ra words <<<"$line"
    [[ ${#words[@]} -le 1 || $line == *[[:space:]] ]] && words+=("")
    cur=${words[-1]}
    args=("${words[@]:1:${#words[@]}-2}")

    # Only the first option of a run acts; -h, -i and -l ignore the rest.
    case ${#args[@]}:${args[0]-} in
        0:) [[ $cur == -* ]] && candidates="-h -i -l -r -x" || mode=names ;;
        1:-r | 1:-x) mode=names ;;
        1:-*) ;;
        1:*) mode=value name=${args[0]} ;;
        2:-x) mode=value name=${args[1]} hex=1 ;;
    esac

    if [[ $mode != none ]]; then
        while IFS= read -r entry; do
            [[ $entry == $'\t'* ]] || continue
            entry=${entry#$'\t'}
            if [[ $mode == names ]]; then
                candidates+=" ${entry%% : *}"
            elif [[ ${entry%% : *} == "$name" ]]; then
                for value in $(_padkit_map_keys "$name") $(_padkit_help_values "${entry#* : }"); do
                    ((hex)) && printf -v value '0x%x' "$value"
                    candidates+=" $value"
                done
            fi
        done < <(timeout 5 "$prog" -l 2>/dev/null)
    fi

    mapfile -t COMPREPLY < <(compgen -W "$candidates" -- "$cur")
    # Readline replaces only the part of the word after its last colon.
    if [[ $cur == *:* && $COMP_WORDBREAKS == *:* ]]; then
        local before=${cur%"${cur##*:}"}
        COMPREPLY=("${COMPREPLY[@]#"$before"}")
    fi
}

complete -F _padkit padkit padkit-sim
