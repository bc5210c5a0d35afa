#!/usr/bin/env bash
# A domain ends with its command, and with the script that started it, however that ends; nothing of it remains.
set -euo pipefail
domain=$(dirname "$(readlink -f "$0")")/domain.sh
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

Fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# The network of the member is in use by no process.
IsGone() {
    local process
    for process in /proc/[0-9]*; do
        [ "$(readlink "$process/ns/net" 2>/dev/null)" != "$1" ] || return 1
    done
}

AwaitEnd() {
    local network
    network=$(<"$folder/network")
    for _ in $(seq 3000); do
        ! IsGone "$network" || return 0
        sleep 0.02
    done
    Fail "$1: processes of the domain go on running"
}

# The network is written last.
# shellcheck disable=SC2016 # the inner shell's own
atWork='wbinfo --ping-dc >/dev/null && readlink /proc/self/ns/net >"$0/network"'

code=0
"$domain" run bash -c "$atWork; exit 5" "$folder" >"$folder/output" || code=$?
if [ $code = 77 ]; then
    cat "$folder/output"
    exit 77
fi
[ $code = 5 ] || Fail "the command's exit code became $code"
AwaitEnd "after the command"

for signal in TERM KILL; do
    rm "$folder/network"
    "$domain" run bash -c "$atWork; sleep 100" "$folder" >/dev/null 2>&1 &
    for _ in $(seq 15000); do # another test may be making a larger domain
        [ ! -s "$folder/network" ] || break
        sleep 0.02
    done
    [ -s "$folder/network" ] || Fail "no domain within five minutes"
    ! IsGone "$(<"$folder/network")" || Fail "the domain's processes cannot be seen from here"
    kill -$signal $!
    AwaitEnd "after $signal"
done
! grep -F " ${domain%/tests/support/domain.sh}/build/domain/" /proc/mounts || Fail "a mount is left"
