# Attributes of what a server shares, through a mount of it, judged by what the server tells. Sourced by changes_test.sh, whose
# server runs by then; $calls is permora-test-file-calls.
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
