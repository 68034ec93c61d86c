#!/usr/bin/env bash
# Completes lines in bash, zsh or fish itself, with the shell's script for orvantactl where an installation has it,
# beside a simulator.
#
# usage: check_completions.sh bash|zsh|fish SCRIPT ORVANTACTL SIMULATOR
set -euo pipefail

shell=$1
script=$2
here=$(readlink -f "$(dirname "$0")")
PATH=$(dirname "$3"):$PATH
export PATH
export HOME
HOME=$(mktemp -d)
cd "$HOME"
touch notes.json

exec 9< <(exec "$4" </dev/null)
simulator=$!
trap 'kill -TERM $simulator 2>/dev/null || true; rm -rf "$HOME"' EXIT
read -r -t 60 -u 9 line || { echo "the simulator does not start"; exit 1; }
[ "$line" = "listening on port 54320" ] || { echo "the simulator says '$line'"; exit 1; }

case $shell in
bash)
    install -D "$script" share/bash-completion/completions/orvantactl
    complete_line() { XDG_DATA_DIRS=$HOME/share bash --norc "$here/complete_line.bash" "$1"; }
    ;;
zsh)
    install -D "$script" site-functions/_orvantactl
    complete_line() { zsh -f "$here/complete_line.zsh" "$HOME/site-functions" "$1"; }
    ;;
fish)
    install -D "$script" share/fish/vendor_completions.d/orvantactl.fish
    complete_line() { XDG_DATA_DIRS=$HOME/share:/usr/local/share:/usr/share fish --no-config -c 'set -p fish_complete_path share/fish/vendor_completions.d; complete -C $argv[1]' -- "$1" | cut -f1; }
    ;;
esac

broken=0
# becomes LINE WORD...: the candidates for the last word of a line, in any order.
becomes() {
    local found wanted
    found=$(complete_line "$1" | sort | tr '\n' ' ')
    wanted=$(printf '%s\n' "${@:2}" | sort | tr '\n' ' ')
    if [ "$found" != "$wanted" ]; then
        printf '%s: "%s" becomes "%s" and not "%s"\n' "$shell" "$1" "$found" "$wanted"
        broken=1
    fi
}

becomes 'orvantactl ve' version
becomes 'orvantactl --json ver' version
becomes 'orvantactl wait ' device removal service
becomes 'orvantactl restore --d' --device --dry-run
becomes 'orvantactl info --device ' 1 1001
becomes 'orvantactl get torque-scaling h' handedness
becomes 'orvantactl set h' handedness=
becomes 'orvantactl set --save handedness=' handedness=left handedness=right
becomes 'orvantactl set torque-scaling=of' torque-scaling=off
becomes 'orvantactl info --device=10' --device=1001
becomes 'orvantactl backup no' notes.json
exit $broken
