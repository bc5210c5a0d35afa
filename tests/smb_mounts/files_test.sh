# Attributes, system access lists and copies of what a server shares, through mounts of it, judged by what the server
# tells. Sourced by changes_test.sh, whose server runs by then; $calls is permora-test-file-calls.
# shellcheck shell=bash disable=SC2154

files=/mnt/files           # a share whose server keeps attributes
filesOnDisk=$server/files

# MountFiles FOLDER, by a logon of its own: who gets a right has it from the next logon on.
MountFiles() {
    mkdir -p "$1"
    mount -t cifs //127.0.0.1/files "$1" -o username=root,password=secret,vers=3.1.1,nosharesock
}

# HasAttributes PATH FLAGS: here and at the server, hexadecimal.
HasAttributes() {
    local here there
    here=$("$calls" attributes "$files/$1")
    there=$(smbclient //127.0.0.1/files -U root%secret -c "allinfo \"$1\"" 2>/dev/null | sed -n 's/^attributes:.*(\([0-9a-f]*\)).*/\1/p')
    [ "$here $there" = "$2 $2" ] || Fail "attributes of $1: $here here, $there at the server"
}

# Refused ERROR CALL...: the call fails with this number.
Refused() {
    local error=$1
    shift
    "$calls" "$@" >"$server/output" && Fail "$*: it counts as done"
    grep -qx "error $error" "$server/output" || Fail "$*: $(cat "$server/output")"
}

# Whole PATH: all that the server keeps, to one of its clients with the right to see it.
Whole() { smbcacls --query-security-info=15 --sddl //127.0.0.1/files "$1" -U root%secret 2>/dev/null; }

# HasAudit TEXT WHAT: the system access lists of both objects; empty: they have none.
HasAudit() {
    local name list
    for name in file folder; do
        list=$(Whole "$name")
        [[ $list == *D:* && ${list#"${list%S:*}"} == "${1:+S:$1}" ]] || Fail "$2: the system access list of $name: $list"
    done
}

# SaysHidden WHAT: the last Run has said that it read no system access lists.
SaysHidden() { grep -q "cannot be read without a privilege" "$server/output" || Fail "$1: not said that audits are hidden"; }

# Audits grant|revoke: the right to see them, for those who log on from now on, as whoever uses $audited does.
Audits() {
    Await net rpc rights "$1" root SeSecurityPrivilege -U root%secret -S 127.0.0.1
    if mountpoint -q "$audited"; then umount "$audited"; fi
    MountFiles "$audited"
}

Run() { "$cli" "$@" >"$server/output" 2>&1 || { Fail "$*"; tail -n 5 "$server/output"; }; }

# NothingHalf FOLDER: no file that is not whole has stayed there.
NothingHalf() { [ -z "$(find "$1" -name '.permora-*')" ] || Fail "left in $1: $(ls -A "$1")"; }

mkdir "$filesOnDisk"
MountFiles "$files"
: >"$files/file"
mkdir "$files/folder"
for flags in 2 27 80 7; do
    "$calls" attributes "$files/file" "$flags" || Fail "setting $flags"
    HasAttributes file "$flags"
done
"$calls" attributes "$files/folder" 3 || Fail "setting the attributes of a folder"
HasAttributes folder 13
[ "$("$calls" list "$files")" = $'7 file\n13 folder' ] || Fail "listed: $("$calls" list "$files")"
Refused 50 attributes "$files/file" 2002 # what Samba does not keep
HasAttributes file 7
: >"$mount/file"
Refused 50 attributes "$mount/file" 2
echo "attributes ($SECONDS s)"

# Without the right nobody sees a system access list, and what was saved does not pretend to have one.
"$cli" show --sddl --audit "$files/file" >"$server/output" 2>&1 && Fail "a list was shown to one who has no right to it"
grep -q "lacks a privilege" "$server/output" || Fail "refusal: $(cat "$server/output")"
Run save "$files" --output "$server/without"
SaysHidden save
grep -qx 'parts owner group dacl' "$server/without" || Fail "saved without the right: $(grep parts "$server/without")"

# The saved lists with audits, as the program would have saved them.
audited=/mnt/audited
Audits grant
Run save "$audited" --output "$server/none"
grep -qx 'parts owner group dacl sacl' "$server/none" || Fail "saved with the right: $(grep parts "$server/none")"
audit='(AU;SAFA;WOWD;;;WD)'
sed "s/^list .*/&S:$audit/;\$d" "$server/none" >"$server/with"
echo "end complete 3 sha256 $(sha256sum <"$server/with" | cut -d ' ' -f 1)" >>"$server/with"
"$cli" restore "$server/with" --to "$files" --yes >"$server/output" 2>&1 && Fail "audits were restored without the right"
HasAudit "" "restore without the right"
# Whoever has nothing to do with audits needs no right, and is told.
Run compare "$server/none" "$files"
SaysHidden compare
Run grant "$files" --account anna --rights 0x1200a9
Run restore "$server/none" --to "$files" --yes
SaysHidden restore
Run compare "$server/none" "$audited"
Run restore "$server/with" --to "$audited" --yes
HasAudit "$audit" "restore"
Run show --sddl --audit "$audited/file"
grep -q "S:(AU;SAFA;.*;;;WD)" "$server/output" || Fail "shown: $(cat "$server/output")"
Run compare "$server/with" "$audited"
"$cli" compare "$server/with" "$files" >"$server/output" 2>&1 && Fail "hidden audits were compared"
[ "$(grep -c "not compared: .*lacks a privilege" "$server/output")" = 3 ] || Fail "compared: $(cat "$server/output")"

# Whoever changes something else leaves them, with the right and without.
for place in "$files" "$audited"; do
    before=$(Whole folder)
    Run grant "$place" --account anna --rights 0x1200a9
    [ "$(Whole folder)" != "$before" ] || Fail "grant through $place: nothing has changed"
    HasAudit "$audit" "grant through $place"
    Run reset "$place" --yes
    Run owner "$place/folder" --set anna
    HasAudit "$audit" "changes through $place"
    for _ in owner reset grant; do Run undo --yes; done
    [ "$(Whole folder)" = "$before" ] || Fail "undo through $place: $(Whole folder), not $before"
done
Run replace "$audited" --account Everyone --by anna
HasAudit "${audit/;WD)/;$(pdbedit -Lv anna | sed -n 's/^User SID: *//p'))}" "replace"
Run undo --yes
HasAudit "$audit" "undo of replace"

# What has changed no audits is undone without the right, and nothing else.
before=$(Whole folder)
Run owner "$audited/folder" --set bert
Run restore "$server/with" --to "$audited" --yes
[ "$(Whole folder)" = "$before" ] || Fail "restore of an owner: $(Whole folder), not $before"
Audits revoke
Run replace "$audited" --account Everyone --by anna
SaysHidden replace
for _ in replace restore owner; do Run undo --yes; done
"$cli" undo --yes >"$server/output" 2>&1 && Fail "audits were taken away without the right"
grep -q "lacks a privilege" "$server/output" || Fail "refusal: $(cat "$server/output")"
Audits grant
[ "$(Whole folder)" = "$before" ] || Fail "undo without the right: $(Whole folder), not $before"
Run undo --yes
HasAudit "" "undo of restore"
echo "system access lists ($SECONDS s)"

# Copies get what the server gives to new objects, and the attributes of what they were made of.
tree=$server/tree
mkdir -p "$tree/folder" "$server/out" "$files/into" "$files/elsewhere"
echo small >"$tree/small"
head -c 300000 /dev/urandom >"$tree/folder/large"
echo read-only >"$tree/read-only"
chmod 444 "$tree/read-only"
"$calls" copy "$tree" "$files" || Fail "copying to the share"
diff -r "$tree" "$filesOnDisk/tree" || Fail "what was copied to the share"
[[ $("$calls" attributes "$files/tree/read-only") == *1 ]] || Fail "the copy of what is read-only by its mode"
: >"$files/tree/made"
[ "$(Whole tree/made)" = "$(Whole tree/small)" ] || Fail "list of a copy: $(Whole tree/small), not $(Whole tree/made)"
rm "$files/tree/made"
"$calls" copy "$files/tree" "$server/out" || Fail "copying from the share"
diff -r "$tree" "$server/out/tree" || Fail "what was copied from the share"
getfattr -n security.NTACL "$server/out/tree/small" >/dev/null 2>&1 && Fail "a copy from the share has a list"

Run grant "$files/tree/small" --account bert --rights 0x2
"$calls" attributes "$files/tree/small" 2 || Fail "attributes"
"$calls" copy "$files/tree/small" "$files/into" || Fail "copying within the share"
HasAttributes into/small 2
: >"$files/into/made"
[ "$(Whole into/made)" = "$(Whole into/small)" ] || Fail "list of a copy within the share: $(Whole into/small)"
list=$(Whole tree/small)
"$calls" move "$files/tree/small" "$files/elsewhere" || Fail "moving within the share"
[ "$(Whole elsewhere/small)" = "$list" ] || Fail "list of what was moved: $(Whole elsewhere/small), not $list"
"$calls" move "$files/tree/folder" "$mount" || Fail "moving to another share"
cmp "$tree/folder/large" "$ownDisk/folder/large" || Fail "what was moved to another share"
[ ! -e "$files/tree/folder" ] || Fail "what was moved is still there"

# What fails leaves all as it was: attributes that another server does not keep, and a full disk.
"$calls" move "$files/into/small" "$mount" >"$server/output" && Fail "attributes were lost without a question"
if [ ! -e "$filesOnDisk/into/small" ] || [ -e "$ownDisk/small" ]; then Fail "a move that lost attributes"; fi
mkdir "$filesOnDisk/full"
mount -t tmpfs -o size=100k none "$filesOnDisk/full"
for name in large large-2; do
    cp "$tree/folder/large" "$server/$name"
    "$calls" move "$server/$name" "$files/full" >"$server/output" && Fail "a full disk held $name"
    cmp "$tree/folder/large" "$server/$name" || Fail "a move to a full disk"
done
[ -z "$(ls -A "$filesOnDisk/full")" ] || Fail "on the full disk: $(ls -lA "$filesOnDisk/full")"
NothingHalf "$filesOnDisk"
NothingHalf "$ownDisk"
echo "copies ($SECONDS s)"
