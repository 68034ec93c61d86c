# bash completion for orvantactl: asks the program itself what the last word may become.
# shellcheck shell=bash

_orvantactl() {
    local program=$1 words=() index part glue=0 candidates candidate prefix
    # bash has taken words apart at "=" and ":".
    for ((index = 1; index <= COMP_CWORD; ++index)); do
        part=${COMP_WORDS[index]}
        if [[ $part == [=:]* || $glue = 1 ]] && [ ${#words[@]} -gt 0 ]; then
            words[-1]+=$part
        else
            words+=("$part")
        fi
        [[ $part == *[=:] ]] && glue=1 || glue=0
    done
    prefix=
    [[ ${words[-1]-} != *=* || $COMP_WORDBREAKS != *=* ]] || prefix=${words[-1]%"${words[-1]##*=}"}

    COMPREPLY=()
    mapfile -t candidates < <("$program" complete -- "${words[@]}" 2>/dev/null </dev/null)
    for candidate in "${candidates[@]}"; do
        candidate=${candidate%%$'\t'*}
        if [ "$candidate" = :files ]; then
            compopt -o default 2>/dev/null
        else
            COMPREPLY+=("${candidate#"$prefix"}")
        fi
    done
    [[ ${COMPREPLY[*]-} != *= ]] || compopt -o nospace 2>/dev/null
}

complete -F _orvantactl orvantactl
