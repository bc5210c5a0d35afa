# Attributes and copies of what a server shares, through mounts of it, judged by what the server
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

# ListOf PATH: owner, group and list as the server tells them to one of its clients.
ListOf() { smbcacls --sddl //127.0.0.1/files "$1" -U root%secret 2>/dev/null; }

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
[ "$(ListOf tree/made)" = "$(ListOf tree/small)" ] || Fail "list of a copy: $(ListOf tree/small), not $(ListOf tree/made)"
rm "$files/tree/made"
"$calls" copy "$files/tree" "$server/out" || Fail "copying from the share"
diff -r "$tree" "$server/out/tree" || Fail "what was copied from the share"
getfattr -n security.NTACL "$server/out/tree/small" >/dev/null 2>&1 && Fail "a copy from the share has a list"

Run grant "$files/tree/small" --account bert --rights 0x2
"$calls" attributes "$files/tree/small" 2 || Fail "attributes"
"$calls" copy "$files/tree/small" "$files/into" || Fail "copying within the share"
HasAttributes into/small 2
: >"$files/into/made"
[ "$(ListOf into/made)" = "$(ListOf into/small)" ] || Fail "list of a copy within the share: $(ListOf into/small)"
list=$(ListOf tree/small)
"$calls" move "$files/tree/small" "$files/elsewhere" || Fail "moving within the share"
[ "$(ListOf elsewhere/small)" = "$list" ] || Fail "list of what was moved: $(ListOf elsewhere/small), not $list"
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
