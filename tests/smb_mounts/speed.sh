#!/usr/bin/env bash
# How long an entry takes that all objects of a tree on another server inherit: through a mount, and by Samba's own client.
# Both take turns and must leave the same lists. Prints rows of the table in bench/README.md, and how many requests an object
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
folders=4 filesOfFolder=24 runs=1 delays="0 100"
objects=$((folders * (filesOfFolder + 1)))

# Take NAME COMMAND...: adds the seconds that it takes to those of this name.
Take() {
    local name=$1 began=$EPOCHREALTIME
    shift
    "$@" >"$server/output" 2>&1 || { Fail "$*"; tail -n 5 "$server/output"; }
    awk "BEGIN { printf \"%.3f\n\", $EPOCHREALTIME - $began }" | tee -a "$server/$name.seconds"
}
Median() { sort -n "$server/$1.seconds" | awk '{ all[NR] = $1 } END { print (all[int((NR + 1) / 2)] + all[int((NR + 2) / 2)]) / 2 }'; }

Grant() { "$cli" grant "$mount/tree" --account S-1-5-11 --rights 0x1200a9 "$@"; }
Revoke() { "$cli" revoke "$mount/tree" --account S-1-5-11 "$@"; }
Peer() { smbcacls //127.0.0.1/data tree -U root%secret "$1" 'ACL:S-1-5-11:0/3/0x1200a9' --propagate-inheritance; }

# Same: the entries are those of the first time. Samba's client puts them in an order of its own.
Same() {
    (cd "$mount/tree" && find . -print0 | LC_ALL=C sort -z | xargs -0 getcifsacl -r 2>/dev/null) |
        awk '/^# filename/ { name = $0 } /^(ACL|OWNER|GROUP):/ { print name, $0 }' | LC_ALL=C sort >"$server/now"
    [ -e "$server/lists" ] || cp "$server/now" "$server/lists"
    cmp --silent "$server/lists" "$server/now" || Fail "the lists differ: $(diff "$server/lists" "$server/now" | head -n 4)"
}

# Row WHERE NAME: against the peer.
Row() {
    awk -v where="$1" -v ours="$(Median "$2")" -v peer="$(Median peer)" 'BEGIN {
        printf "| setting an entry that is inherited | %s | %.2f s | %.2f s, `smbcacls --propagate-inheritance` | %.2f | at most 0.2 | %s |\n",
            where, ours, peer, ours / peer, ours <= 0.2 * peer ? "yes" : "no" }'
}

# Compare WHERE
Compare() {
    local run before
    rm -f "$server"/*.seconds
    for ((run = 0; run < runs; run++)); do
        before=$(Requests SMBs)
        Take ours Grant --no-history
        awk "BEGIN { printf \"requests for each object: %.1f\n\", ($(Requests SMBs) - $before) / $objects }"
        Same
        Take ours Revoke --no-history
        Take peer Peer --add
        Same
        Take peer Peer --delete
        Take history Grant
        Take history Revoke
    done
    Row "$1" ours
    Row "$1, with history" history
}

StartServer
mkdir "$HOME"
mkdir "$ownDisk/tree"
for ((folder = 1; folder <= folders; folder++)); do
    mkdir "$ownDisk/tree/folder $folder"
    for ((file = 1; file <= filesOfFolder; file++)); do : >"$ownDisk/tree/folder $folder/file $file"; done
done
"$cli" grant "$ownDisk/tree" --account anna --rights 0x1301bf --no-history >/dev/null
MountShare "$mount" root
echo "server and tree ($SECONDS s), $(nproc) processors"
for delay in $delays; do
    # Each packet is delayed once on its way, and its answer too.
    [ "$delay" = 0 ] || tc qdisc replace dev lo root netem delay "$((delay / 2))ms" limit 100000
    Compare "share of another server, $delay ms away, $objects objects"
done
echo "all steps done ($SECONDS s)"
[ "$failures" = 0 ]
