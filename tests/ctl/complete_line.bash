# Prints what bash makes of the last word of a line: finds the script as an interactive bash does, and gives it the
# line taken apart as Readline takes it apart.
#
# usage: bash complete_line.bash LINE
# shellcheck shell=bash
. /usr/share/bash-completion/bash_completion
_completion_loader orvantactl
[ "$(complete -p orvantactl)" = 'complete -F _orvantactl orvantactl' ] || echo "the script was not found"

options=
compopt() { options+=" $*"; }

COMP_LINE=$1
COMP_POINT=${#1}
# "=" is a word of its own, and a blank at the end begins an empty one.
eval "COMP_WORDS=(${COMP_LINE//=/ = })"
case $COMP_LINE in *[\ =]) COMP_WORDS+=("") ;; esac
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
typed=${COMP_WORDS[COMP_CWORD]}
_orvantactl orvantactl "$typed" "${COMP_WORDS[COMP_CWORD - 1]}"

last=${COMP_LINE##* }
for word in "${COMPREPLY[@]}"; do
    case $last in *=*) word=${last%%=*}=$word ;; esac
    printf '%s\n' "$word"
done
case $options in *default*) compgen -f -- "$typed" ;; esac
