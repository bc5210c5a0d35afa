#!/usr/bin/env bash
# How long an entry takes that all objects of a tree on another server inherit: through a mount, and by Samba's own client.
# All must leave the same lists. Prints rows of the table in bench/README.md, and how many requests an object
# took. Runs in an emulated machine: run_in_machine.sh KERNEL_FOLDER PERMORA_CLI speed.sh
#
# What the server does for a request takes that machine some fifty times as long as a real one. So the delays on the way to
# it, as round trips in ms, are larger than those of real networks too.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
# shellcheck source=tests/smb_mounts/server.sh
source "$here/server.sh"
cli=$1
export HOME=$server/home # for the history
filesOfFolder=39
atOnce=$server/at-once # the same, mounted so that no request waits for others

Grant() { "$cli" grant "$1/tree" --account S-1-5-11 --rights 0x1200a9 "${@:2}"; }
Peer() { smbcacls //127.0.0.1/data tree -U root%secret --add 'ACL:S-1-5-11:0/3/0x1200a9' --propagate-inheritance; }

# Entries: of all objects on the server's own disk. Samba's client puts them in an order of its own.
Entries() {
    "$cli" save "$ownDisk/tree" --output "$server/saved" --quiet >/dev/null
    awk '/^list / { parts[$2] = split($3, part, "("); sub(/D:[A-Z]*$/, "", part[1])
                    for (i = 1; i <= parts[$2]; i++) entry[$2, i] = part[i] }
         /^(folder|file) / { list = $2; for (i = 1; i <= parts[list]; i++) print $0, entry[list, i] }' "$server/saved" |
        sed -E 's/^([a-z]+) [0-9a-f]+ /\1 /' | LC_ALL=C sort
    rm "$server/saved"
}

# Take NAME COMMAND...: keeps the seconds that it takes under this name. The entry is there afterwards, and taken away.
Take() {
    local name=$1 began before
    shift
    before=$(Requests SMBs)
    began=$EPOCHREALTIME
    "$@" >"$server/output" 2>&1 || { Fail "$*"; tail -n 5 "$server/output"; }
    awk "BEGIN { printf \"%.3f\n\", $EPOCHREALTIME - $began }" >"$server/$name.seconds"
    echo "$name: $(<"$server/$name.seconds") s, of the mounts for $objects objects $(($(Requests SMBs) - before)) requests"
    Entries >"$server/now"
    [ -e "$server/entries" ] || cp "$server/now" "$server/entries"
    cmp --silent "$server/entries" "$server/now" || Fail "the lists differ: $(diff "$server/entries" "$server/now" | head -n 4)"
    "$cli" revoke "$ownDisk/tree" --account S-1-5-11 --no-history >/dev/null
    Entries | cmp --silent "$server/without" - || Fail "the entry is not taken away"
}
# Row WHERE NAME: against the peer.
Row() {
    awk -v where="$1" -v ours="$(<"$server/$2.seconds")" -v peer="$(<"$server/peer.seconds")" 'BEGIN {
        printf "| setting an entry that is inherited | %s | %.1f s | %.1f s, `smbcacls --propagate-inheritance` | %.2f | at most 0.2 | %s |\n",
            where, ours, peer, ours / peer, ours <= 0.2 * peer ? "yes" : "no" }'
}

MakeTree() {
    local folder file
    rm -rf "$ownDisk/tree"
    mkdir "$ownDisk/tree"
    for ((folder = 1; folder <= $1; folder++)); do
        mkdir "$ownDisk/tree/folder $folder"
        for ((file = 1; file <= filesOfFolder; file++)); do : >"$ownDisk/tree/folder $folder/file $file"; done
    done
    objects=$(($1 * (filesOfFolder + 1)))
    "$cli" grant "$ownDisk/tree" --account anna --rights 0x1301bf --no-history >/dev/null
    Entries >"$server/without"
}

# Compare DELAY FOLDERS
Compare() {
    local where
    MakeTree "$2"
    # Each packet is delayed once on its way, and its answer too.
    [ "$1" = 0 ] || tc qdisc replace dev lo root netem delay "$(($1 / 2))ms" limit 100000
    rm -f "$server/entries"
    Take peer Peer
    Take ours Grant "$mount" --no-history
    Take history Grant "$mount"
    Take atOnce Grant "$atOnce" --no-history
    where="share of another server, $1 ms away, $objects objects"
    Row "$where" ours
    Row "$where, with history" history
    Row "$where, \`tcpnodelay\`" atOnce
}

StartServer
mkdir "$HOME" "$ownDisk/tree"
MountShare "$mount" root
MountShare "$atOnce" root nosharesock,tcpnodelay
echo "server and mounts ($SECONDS s), $(nproc) processors"
Compare 0 50
Compare 10 50
Compare 100 4
echo "all steps done ($SECONDS s)"
[ "$failures" = 0 ]
