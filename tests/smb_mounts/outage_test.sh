#!/usr/bin/env bash
# The server of a mount goes away in the middle of each command: killed, or out of reach as behind a cut cable. The command
# ends and says so, and when the server is back, undo brings back what was there. Runs in an emulated machine, and takes
# too long for continuous integration: run_in_machine.sh KERNEL_FOLDER PERMORA_CLI outage_test.sh
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
# shellcheck source=tests/smb_mounts/server.sh
source "$here/server.sh"
cli=$1
export HOME=$server/home # for the history

# AwaitMiddle BEFORE: until the command is in the middle of its work, or has ended.
AwaitMiddle() {
    while kill -0 "$running" 2>/dev/null && [ $(($(Requests "$work") - $1)) -lt "$inTheMiddle" ]; do sleep 0.05; done
}

Kill() { pkill -KILL smbd; }
Restart() { smbd --daemon --no-process-group; }
Unplug() { busybox ip link set lo down; }
PlugIn() { busybox ip link set lo up; }

# Seen FILE: what is there, as the mount tells it of all objects, and the server's own client of some.
Seen() {
    local path
    Lists "$mount/tree" >"$1"
    for path in tree 'tree/folder 1' 'tree/folder 1/file 1' 'tree/folder 2/file 9' "tree/folder $folders" \
        "tree/folder $folders/file $filesOfFolder"; do
        Judge "$path" || Fail "no answer about $path" >&2
    done >>"$1"
}

IsBack() { ls "$mount/tree" && Judge tree | grep -q .; }

# Outage GO COME COMMAND...: the server goes in the middle of the command, and comes again.
Outage() {
    local go=$1 come=$2 status=0 before running began
    shift 2
    before=$(Requests "$work")
    "$cli" "$@" >"$server/output" 2>&1 &
    running=$!
    AwaitMiddle "$before"
    began=$SECONDS
    "$go"
    wait "$running" || status=$?
    echo "$go, $*: exit code $status after $((SECONDS - began)) s"
    "$come"
    Await IsBack || Fail "the server does not come back"
    [ "$status" != 0 ] || Fail "$*: it counts as done"
    grep -Eq "$mount/tree.*(Host is down|not connected|network name)" "$server/output" || Fail "$*: no reason is given"
    tail -n 4 "$server/output"
}

# OutageOfChange GO COME COMMAND...: what was written can be taken back.
OutageOfChange() {
    Outage "$@"
    Seen "$server/after"
    local changed
    changed=$(diff "$server/before" "$server/after" | grep -c '^> system' || true)
    echo "    objects changed: $changed"
    [ "$changed" != 0 ] || Fail "${*:3}: nothing was changed before"
    "$cli" undo --yes >"$server/output" 2>&1 || { Fail "undo after ${*:3}"; tail -n 5 "$server/output"; }
    Seen "$server/after"
    cmp --silent "$server/before" "$server/after" || { Fail "${*:3}: undo does not bring back what was there"; diff "$server/before" "$server/after" | head; }
}

StartServer
mkdir "$HOME"
mkdir "$ownDisk/tree"
folders=4 filesOfFolder=15
for ((folder = 1; folder <= folders; folder++)); do
    mkdir "$ownDisk/tree/folder $folder"
    for ((file = 1; file <= filesOfFolder; file++)); do : >"$ownDisk/tree/folder $folder/file $file"; done
done
MountShare "$mount" root soft,echo_interval=1
"$cli" grant "$mount" --account bert --rights 0x1301bf >"$server/output" 2>&1 || Fail "grant"
"$cli" save "$mount/tree" --output "$server/saved" >"$server/output" 2>&1 || Fail "save"
Seen "$server/whole"
cp "$server/whole" "$server/before"
echo "server and tree ($SECONDS s)"

work=SetInfos inTheMiddle=12
OutageOfChange Kill Restart grant "$mount/tree" --account anna --rights 0x1200a9
OutageOfChange Unplug PlugIn deny "$mount/tree" --account anna --rights 0x2
OutageOfChange Kill Restart revoke "$mount" --account bert
OutageOfChange Unplug PlugIn inherit "$mount/tree" --remove
OutageOfChange Unplug PlugIn reset "$mount/tree" --yes --empty-lists
OutageOfChange Kill Restart owner "$mount/tree" --set anna --tree
work=QueryInfos inTheMiddle=20
Outage Kill Restart save "$mount/tree" --output "$server/other"
[ ! -e "$server/other" ] || grep -q incomplete "$server/other" || Fail "what was saved passes for whole"

# What is left out of a report is said, and the next one is whole.
"$cli" report "$mount/tree" >"$server/report" 2>"$server/output" || true
Outage Unplug PlugIn report "$mount/tree"
"$cli" report "$mount/tree" 2>"$server/output" | cmp --silent "$server/report" - || Fail "report: $(cat "$server/output")"

# What was put back by then can be taken back, and the rest put back.
work=SetInfos inTheMiddle=12
"$cli" inherit "$mount/tree" --remove >"$server/output" 2>&1 || Fail "inherit"
Seen "$server/before"
OutageOfChange Kill Restart restore "$server/saved" --to "$mount/tree" --yes
Outage Unplug PlugIn restore "$server/saved" --to "$mount/tree" --yes
"$cli" restore "$server/saved" --to "$mount/tree" --yes >"$server/output" 2>&1 || Fail "restore: $(cat "$server/output")"
Seen "$server/after"
cmp --silent "$server/whole" "$server/after" || Fail "restore: not what was saved"
echo "all steps done ($SECONDS s)"
[ "$failures" = 0 ]
