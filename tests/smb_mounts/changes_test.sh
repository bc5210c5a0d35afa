#!/usr/bin/env bash
# Changes lists of what a server shares, through a mount, and compares what the server then tells with what the same
# commands make of the same objects on the server's own disk; then what files_test.sh says. Runs in an emulated machine:
# changes_test.sh PERMORA_CLI PERMORA_TEST_FILE_CALLS
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
# shellcheck source=tests/smb_mounts/server.sh
source "$here/server.sh"
cli=$1 calls=$2
export HOME=$server/home # for the history

# MakeTree FOLDER makes the objects whose names are in the list.
MakeTree() {
    local name
    mkdir "$1"
    while IFS= read -r name; do
        case $name in
        */) mkdir "$1/$name" ;;
        *) : >"$1/$name" ;;
        esac
    done <"$server/names"
}

# Same WHAT compares both trees as the server tells them.
Same() {
    Lists "$mount/by-mount" >"$server/by-mount.lists"
    Lists "$mount/by-disk" >"$server/by-disk.lists"
    cmp --silent "$server/by-mount.lists" "$server/by-disk.lists" || {
        Fail "$1: the lists differ"
        diff "$server/by-mount.lists" "$server/by-disk.lists" | head -n 20
    }
}

# Both COMMAND... runs it on both trees; TREE stands for them.
Both() {
    local tree status
    for tree in "$mount/by-mount" "$ownDisk/by-disk"; do
        status=0
        "$cli" "${@//TREE/$tree}" >"$server/output" 2>&1 || status=$?
        [ "$status" = 0 ] || { Fail "$* on $tree: exit code $status"; tail -n 5 "$server/output"; }
    done
}

# Step COMMAND... changes both trees, which must be the same afterwards and not what they were.
Step() {
    cp "$server/by-mount.lists" "$server/before.lists"
    Both "$@"
    Same "$*"
    if cmp --silent "$server/before.lists" "$server/by-mount.lists"; then Fail "$*: nothing has changed"; fi
}

# TakeBack brings back what was there before the last step.
TakeBack() {
    local tree
    for tree in disk mount; do
        "$cli" undo --yes >"$server/output" 2>&1 || { Fail "undo, $tree"; tail -n 5 "$server/output"; }
    done
    Same "undo"
    cmp --silent "$server/before.lists" "$server/by-mount.lists" || Fail "undo: not what was there"
}

# Sample PATH: a server's client that is not ours reads the same list of both.
Sample() {
    local byMount byDisk
    byMount=$(Judge "by-mount/$1")
    byDisk=$(Judge "by-disk/$1")
    if [ -z "$byMount" ] || [ "$byMount" != "$byDisk" ]; then Fail "smbcacls tells of $1: $byMount and $byDisk"; fi
}

StartServer
mkdir "$HOME"
MountShare "$mount" root
python3 "$here/made_lists.py" 7 by-mount "$server/mount.acl" >"$server/names"
python3 "$here/made_lists.py" 7 by-disk "$server/disk.acl" >/dev/null
MakeTree "$ownDisk/by-mount"
MakeTree "$ownDisk/by-disk"
"$cli" restore "$server/mount.acl" --to "$mount" --yes >"$server/output" 2>&1 || Fail "restore through the mount"
"$cli" restore "$server/disk.acl" --to "$ownDisk" --yes >"$server/output" 2>&1 || Fail "restore on the own disk"
Same "made lists"
Sample 'folder 3/file 4'
echo "$(grep -c ^system "$server/by-mount.lists") made lists are the same ($SECONDS s)"

# Nobody says here which groups the accounts have there; all else of a report is what the server tells.
"$cli" report --json "$mount/by-mount/folder 1" >"$server/report" 2>"$server/output" || Fail "report: $(cat "$server/output")"
python3 "$here/judge_report.py" "$server/report" "$mount" || Fail "a report differs from what the server tells"
if grep -q '"canRead":[0-9]' "$server/report"; then Fail "a report counts for accounts whose groups nobody told"; fi
echo "report ($SECONDS s)"

# With fewer objects, since the emulated machine is slow.
rm -r "$ownDisk"/*/folder\ {3..24}
Same "what is left"
cp "$server/by-mount.lists" "$server/saved.lists"
"$cli" save "$mount/by-mount" --output "$server/saved" >"$server/output" 2>&1 || Fail "save"
Step grant TREE --account anna --rights 0x1301bf
TakeBack
Step grant TREE --account anna --rights 0x1301bf
Step deny 'TREE/folder 1' --account bert --rights 0x2 --scope 1
Step inherit 'TREE/folder 2' --remove
Step inherit 'TREE/folder 2/file 1' --copy
Step revoke TREE --tree --account Everyone
Step replace TREE --account anna --by bert
Step owner TREE --set anna --tree
TakeBack
Step assign 'TREE/folder 1' 'TREE/folder 2' --account anna --combination Read
Step reset TREE --yes --empty-lists
TakeBack
Sample 'folder 1/file 2'
Both restore "$server/saved" --to TREE --yes
Same "what was saved"
cmp --silent "$server/saved.lists" "$server/by-mount.lists" || Fail "what was saved is not what came back"
echo "changes, undo, and what was saved ($SECONDS s)"

# The path of a network means the mount, whatever the case of its letters.
list=$("$cli" show --sddl "$mount/by-mount/folder 1")
[ "$("$cli" show --sddl '\\127.0.0.1\DATA\by-mount\.\x\..\folder 1')" = "$list" ] || Fail "network path"
mkdir /mnt/deeper
mount -t cifs '//127.0.0.1/data/by-mount/folder 1' /mnt/deeper -o username=root,password=secret,vers=3.1.1
umount "$mount"
[ "$("$cli" show --sddl '\\127.0.0.1\data\by-mount\folder 1')" = "$list" ] || Fail "network path to a mounted folder"
"$cli" show '\\127.0.0.1\data\by-disk' >"$server/output" 2>&1 && Fail "what is not mounted was shown"
grep -q "to mount it: mount -t cifs '//127.0.0.1/data' FOLDER" "$server/output" ||
    Fail "advice to mount: $(cat "$server/output")"

# Where a folder was mounted first, the kernel tells less of the share: its path leads there or nowhere.
umount /mnt/deeper
mount -t cifs '//127.0.0.1/data/by-mount/folder 1' /mnt/deeper -o username=root,password=secret,vers=3.1.1
MountShare "$mount" root
[ "$("$cli" show --sddl '\\127.0.0.1\data\by-mount\folder 1')" = "$list" ] || Fail "network path to a folder mounted first"
found=$("$cli" show --sddl '\\127.0.0.1\data\by-disk' 2>"$server/output") || grep -q "to mount it" "$server/output" || Fail "$(cat "$server/output")"
[ -z "$found" ] || [ "$found" = "$("$cli" show --sddl "$mount/by-disk")" ] || Fail "network path to another object: $found"

# A server that makes mode bits of lists keeps another list than it was given, and says nothing.
: >"$server/modes/file"
mkdir /mnt/modes
mount -t cifs //127.0.0.1/modes /mnt/modes -o username=root,password=secret,vers=3.1.1
"$cli" grant /mnt/modes/file --account anna --rights 0x10000 >"$server/output" 2>&1 && Fail "a list that is not kept counts as written"
list=$(getcifsacl /mnt/modes/file 2>/dev/null)
if grep -q DENIED <<<"$list" || [ "$(grep -c "^ACL:.*-100[1-9]:" <<<"$list")" != 0 ]; then Fail "something of what was not kept has stayed: $list"; fi

# An account without rights gets the server's refusal, and nothing changes.
MountShare /mnt/bert bert
"$cli" grant '/mnt/bert/by-disk' --account bert --rights 'Full control' >"$server/output" 2>&1 && Fail "a stranger may change lists"
grep -q "denied" "$server/output" || Fail "refusal: $(cat "$server/output")"
"$cli" shred --yes '/mnt/deeper/file 1' >"$server/output" 2>&1 && Fail "shred without --force"
[ -e '/mnt/deeper/file 1' ] || Fail "shred without --force deleted"
grep -q "another server" "$server/output" || Fail "shred: $(cat "$server/output")"

# shellcheck source=tests/smb_mounts/files_test.sh
source "$here/files_test.sh"
echo "all steps done ($SECONDS s)"
[ "$failures" = 0 ]
