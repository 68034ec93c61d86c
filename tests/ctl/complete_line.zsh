# Prints what zsh makes of the last word of a line: types it and a tabulator into an interactive zsh at a
# pseudo-terminal, whose completion tells what it would add.
#
# usage: zsh -f complete_line.zsh FUNCTIONS-FOLDER LINE
zmodload zsh/zpty
zpty -b inner zsh -f -i
typeset -g seen=

# Reads until the text has come.
await() {
    local part
    while [[ $seen != *$1* ]]; do
        zpty -r -t inner part && seen+=$part || sleep 0.01
        (( SECONDS < 60 )) || { print -r -- "no $1 in: $seen"; exit 1; }
    done
}

print -r -- "
PS1= PS2= RPS1=
fpath=(${(q)1} \$fpath)
autoload -Uz compinit && compinit -u
unsetopt zle_bracketed_paste 2>/dev/null
# All matches are told, and nothing is put on the line.
tell_matches() {
    compadd() {
        local -a given=(); local -A unused
        zparseopts -E -a given O:=unused A:=unused D:=unused
        [[ -n \$unused ]] && { builtin compadd \"\$@\"; return }
        local -a matches
        builtin compadd -O matches \"\$@\"
        print -r -- \"<match>\"\$^matches\"</match>\"
        builtin compadd \"\$@\"
    }
    _main_complete
    compstate[insert]=; compstate[list]=
    print -r -- '<all>'
}
zle -C tell complete-word tell_matches
bindkey '^T' tell
print '<rea''dy>'
" > setup.zsh
zpty -w inner "source ${(q)PWD}/setup.zsh"
await '<ready>'
zpty -w -n inner "$2"$'\C-t'
await '<all>'
print -r -- "$seen" | grep -o '<match>[^<]*' | cut -c8-
