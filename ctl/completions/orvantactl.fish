# fish completion for orvantactl: asks the program itself what the last word may become.

function __orvantactl_candidates
    set -l typed (commandline -opc)
    set -l current (commandline -ct)
    for line in ($typed[1] complete -- $typed[2..-1] "$current" 2>/dev/null </dev/null)
        if test "$line" = :files
            __fish_complete_path "$current"
        else
            echo $line
        end
    end
end

complete -c orvantactl -f -a '(__orvantactl_candidates)'
