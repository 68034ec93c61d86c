#!/usr/bin/env bash
# Runs the README's two commands as a new user would: makes a bare Debian 12 in a folder, clones this checkout
# into it, what is committed alone, and runs ./run with a typed session and ./test there. Tells what each gave
# and how long it took. Needs root and debootstrap; mirror and settings are those of this machine's apt.
#
# usage: scripts/fresh_machine.sh [--run | --test] [FOLDER [CTEST-ARGUMENT...]]
#
# --run and --test run the one command alone. FOLDER must be empty or missing, and is kept; without one the
# system is removed at the end.
set -euo pipefail
. "$(dirname "$(readlink -f "$0")")/common.sh"

release=bookworm
commands=(run test)
case ${1-} in
--run | --test)
    commands=("${1#--}")
    shift
    ;;
--inside) ;;
-*) fail "usage: $0 [--run | --test] [FOLDER [CTEST-ARGUMENT...]]" ;;
esac

# How apt reaches its mirrors from here: through which proxies, and how much it believes of clocks.
apt_settings() {
    apt-config dump | grep -E '^Acquire::(Check-|Retries|https?::)' || true
    [ -z "${http_proxy-}" ] || printf 'Acquire::http::Proxy "%s";\n' "$http_proxy"
    [ -z "${https_proxy-}" ] || printf 'Acquire::https::Proxy "%s";\n' "$https_proxy"
}

make_system() {
    local format='deb $(REPO_URI) $(RELEASE) $(COMPONENT)' sources mirror log proxy=
    sources=$(apt-get indextargets --format "$format" 'Origin: Debian' 'Created-By: Packages')
    mirror=$(awk '$3 !~ /-security/ { print $2; exit }' <<<"$sources")
    [ -n "$mirror" ] || fail "no Debian mirror is known to apt: run 'apt-get update', then try again"
    # Where this machine has another Debian, the mirror alone.
    sources=$(grep -E "^deb [^ ]+ $release(-updates|-security)? " <<<"$sources" || printf 'deb %s %s main' "$mirror" "$release")

    eval "$(apt-config shell proxy Acquire::http::Proxy)"
    say "making a bare Debian ($release) in $folder"
    log=$(mktemp "${TMPDIR:-/tmp}/fresh_machine.XXXXXX.log")
    http_proxy=${http_proxy-$proxy} debootstrap --variant=minbase "$release" "$folder" "$mirror" >"$log" 2>&1 ||
        fail "debootstrap failed: see $log"
    rm "$log"
    printf '%s\n' "$sources" >"$folder/etc/apt/sources.list"
    apt_settings >"$folder/etc/apt/apt.conf.d/99machine"
    [[ $sources != *https:* ]] || install -D -t "$folder/etc/ssl/certs" /etc/ssl/certs/ca-certificates.crt
    printf '127.0.0.1 localhost\n::1 localhost ip6-localhost\n' >"$folder/etc/hosts"
    install -m 644 /etc/resolv.conf "$folder/etc/resolv.conf"
    git clone --quiet --no-hardlinks "$root" "$folder/root/checkout"
}

# Runs a command line in the system, from the clone.
inside() {
    env -i HOME=/root TERM=dumb PATH=/usr/sbin:/usr/bin:/sbin:/bin chroot "$folder" sh -c "cd /root/checkout && $1"
}

# Waits until the tool asks, and types an answer.
answer() {
    local text
    while IFS= read -r -d : -t 1800 -u "${session[0]}" text; do
        printf '%s:' "$text" >>"$folder/root/run.log"
        if [[ $text == *"Select option" ]]; then
            printf '%s\n' "$1" >&"${session[1]}"
            return
        fi
    done
    fail "./run does not ask for an option: see $folder/root/run.log"
}

check_run() {
    local start=$SECONDS log=$folder/root/run.log text
    : >"$log"
    coproc session { inside 'script --quiet --return --command ./run /dev/null' 2>&1; }
    # shellcheck disable=SC2154 # coproc sets it
    local process=$session_PID output
    exec {output}<&"${session[0]}"
    answer 0
    say "./run asks for an option after $((SECONDS - start)) s"
    answer 1
    answer 2
    answer 4
    cat <&"$output" >>"$log"
    wait "$process" || fail "./run ends with status $?: see $log"
    for text in 'Device Info Updated' 'Device Type:' 'Orientation:' 'Handedness:'; do
        grep -qF "$text" "$log" || fail "./run does not show '$text': see $log"
    done
    ! grep -qF 'a service holds UDP port' "$log" || fail "./run used a service of this machine: end it, then try again"
    say "./run passed, with a session of find, info, configuration and exit"
}

check_test() {
    local start=$SECONDS log=$folder/root/test.log suites
    inside "./test ${*@Q}" 2>&1 | tee "$log" || fail "./test failed after $((SECONDS - start)) s: see $log"
    suites=$(grep -E '^[0-9]+% tests passed' "$log")
    ! grep -F 'tests did not run' "$log" || fail "./test leaves tests out: see $log"
    say "./test passed in $((SECONDS - start)) s:"$'\n'"$suites"
}

# In namespaces of its own: whatever happens, mounts and processes end with this script.
if [ "${1-}" = --inside ]; then
    folder=$2
    mount -t proc proc "$folder/proc"
    mount --bind /dev "$folder/dev"
    mount --bind /dev/pts "$folder/dev/pts"
    "check_$3" "${@:4}"
    exit
fi

[ "$(id -u)" = 0 ] || fail "only root can make a system: run it with sudo"
for tool in debootstrap git unshare; do
    command -v "$tool" >/dev/null || fail "there is no $tool: install it, then try again"
done
if [ $# -gt 0 ]; then
    folder=$(realpath -m "$1")
    shift
    [ -z "$(ls -A "$folder" 2>/dev/null)" ] || fail "$folder is not empty"
else
    folder=$(mktemp -d "${TMPDIR:-/tmp}/fresh_machine.XXXXXX")
    trap 'rm -rf --one-file-system "$folder"' EXIT
fi
git -C "$root" diff --quiet HEAD || say "what is not committed is left out"
make_system
for command in "${commands[@]}"; do
    arguments=()
    [ "$command" = run ] || arguments=("$@")
    unshare --mount --pid --fork --kill-child "$0" --inside "$folder" "$command" "${arguments[@]}"
done
