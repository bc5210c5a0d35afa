#!/usr/bin/env bash
# The accounts of a server whose share is mounted: their names both ways, and what they may do by a list. The server itself is
# the judge. Runs in an emulated machine: accounts_test.sh PERMORA_CLI
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
# shellcheck source=tests/smb_mounts/server.sh
source "$here/server.sh"
cli=$1
export HOME=$server/home
credentials=/root/files.credentials

# shellcheck disable=SC2016 # it expands in the shell of the server
# The server has an /etc of its own, so that nobody here knows its users.
MakeServer() {
    rm -f /etc/samba/smb.conf
    mkdir -p /run/etc/{above,work}
    unshare --mount bash -c 'set -e
        mount -t overlay -o lowerdir=/etc,upperdir=/run/etc/above,workdir=/run/etc/work none /etc
        source "$1"
        groupadd staff-of-server
        groupadd team-of-server
        StartServer
        own=$(net getlocalsid | sed "s/.* is: //")
        net groupmap add ntgroup=Staff unixgroup=staff-of-server type=domain rid=3001
        net groupmap add "ntgroup=Local Team" unixgroup=team-of-server type=local rid=3002
        usermod -aG staff-of-server anna
        net groupmap addmem "$own-3002" "$own-3001"' bash "$here/server.sh" >"$server.log" 2>&1 || cat "$server.log"
}

# Tell COMMAND...: what the program prints, and its exit code at the end. While a slow machine makes it wait too long for the
# server, once more.
Tell() {
    local attempt code output
    for attempt in {1..20}; do
        code=0
        output=$("$cli" "$@" 2>&1) || code=$?
        grep -q "server does not answer\|since its domain does not answer" <<<"$output" || break
        echo "attempt $attempt" >>"$server.log"
    done
    printf '%s\nexit code %s\n' "$output" "$code"
}

# Expect WHAT PATTERN TEXT
Expect() { grep -q -e "$2" <<<"$3" || Fail "$1: no '$2' in: $3"; }

MakeServer
mkdir "$HOME"
printf 'username=root\npassword=secret\n' >"$credentials"
chmod 600 "$credentials"
mkdir "$mount"
echo "//127.0.0.1/data $mount cifs credentials=$credentials,vers=3.1.1 0 0" >/etc/fstab
mount "$mount"
: >"$mount/file"
echo "the server runs ($SECONDS s)"

# The first question of all makes the server start more of itself.
ShowsNames() { "$cli" show "$mount/file" | grep -q 'FILES\\root'; }
Await ShowsNames

own=$(Judge file | sed -n 's/^O:\(S-1-5-21-[-0-9]*\)-1000G:.*/\1/p') # root made the file
[ -n "$own" ] || Fail "the owner is not the server's root: $(Judge file)"

# SetList ACES sets the list as one of the server's own clients does.
SetList() { smbcacls --sddl //127.0.0.1/data file -U root%secret --set "D:$1" >"$server/output" 2>&1 || Fail "$1: $(cat "$server/output")"; }

# Entries by names that the server alone knows: its own, the one by which it was mounted, and none before it.
Expect "grant" "exit code 0" "$(Tell grant "$mount/file" --account 'FILES\anna' --rights 0x1301bf)"
Expect "grant" "exit code 0" "$(Tell grant "$mount/file" --account '127.0.0.1\Local Team' --rights 0x1)"
Expect "grant" "exit code 0" "$(Tell grant "$mount/file" --account bert --rights 0x20)"
Expect "a name that nobody has" "exit code 2" "$(Tell grant "$mount/file" --account 'FILES\nobody-there' --rights 0x20)"
list=$(smbcacls //127.0.0.1/data file -U root%secret 2>/dev/null)
for name in 'FILES\\anna' 'FILES\\Local Team' 'FILES\\bert'; do Expect "the server's list" "ACL:$name:ALLOWED" "$list"; done
Expect "a bare name, for an object of this machine" "exit code 2" "$(Tell grant /root --account bert --rights 0x20)"
"$cli" save "$mount/file" --output "$server/lists" >/dev/null 2>&1
for place in "" "--to=$mount/file"; do
    # shellcheck disable=SC2086
    Expect "a bare name to be exchanged" "exit code 0" "$(Tell restore "$server/lists" $place --map bert=S-1-5-11 --yes)"
    Expect "the server's list" ";;;AU)" "$(Judge file)"
    Expect "a bare name to be exchanged" "exit code 0" "$(Tell replace "$mount/file" --map S-1-5-11=bert)"
done
for place in "$mount/file" /root; do
    printf "version = 1\n[[rule]]\npath = '%s'\nincludes = [{allow = 'bert', rights = '0x20'}]\n" "$place" >"$server/policy"
    [ "$place" = /root ] && told="exit code 2" || told="exit code [01]"
    Expect "a bare name in a policy for $place" "$told" "$(Tell policy check "$server/policy")"
done
echo "names ($SECONDS s)"

# Rights ACCOUNT: by the list, as the program tells them.
Rights() { Tell effective "$mount/file" --account "$1" --json; }

# By the list a user has what the server grants.
Compare() {
    local user granted told
    for user in anna bert; do
        granted=$(smbcacls //127.0.0.1/data file -U "$user%secret" --maximum-access 2>/dev/null | sed -n 's/^Maximum access: 0x//p')
        told=$(Rights "FILES\\$user" | sed -n 's/.*"mask": *"0x\([0-9a-fA-F]*\)".*/\1/p')
        # The program leaves out the right to synchronize.
        if [ -z "$told" ] || [ -z "$granted" ] || [ $((0x$granted & ~0x100000)) != $((0x$told)) ]; then
            Fail "$1: $user has $granted on the server, and $told are told: $(Rights "FILES\\$user")"
        fi
    done
}
SetList "(A;;0x120089;;;WD)(A;;0x10000;;;$own-1001)(A;;0x40000;;;$own-1002)"
Compare "Everyone and themselves"
SetList "(D;;0x2;;;$own-3001)(A;;0x110;;;$own-3002)(A;;0x1201bf;;;NU)"
Compare "groups"

# Nobody here is anybody there, and the numbers of the server's own system are not told.
Expect "an account of this machine" "are not known here" "$(Rights nobody)"
SetList "(A;;0x1;;;S-1-22-1-1)(A;;0x120089;;;WD)"
Expect "the server's own numbers" "is among those is not known" "$(Rights 'FILES\anna')"

# Without a file that only root can read there are SIDs.
chmod 644 "$credentials"
Expect "without credentials" "Owner: S-1-5-21-" "$(Tell show "$mount/file")"
Expect "without credentials" "are not known here" "$(Rights "$own-1001")"

echo "all steps done ($SECONDS s)"
[ "$failures" = 0 ]
