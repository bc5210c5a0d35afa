# A Samba server on the loopback of an emulated machine, whose share "data" is mounted by the kernel. Sourced, not run.
# shellcheck shell=bash disable=SC2034

server=/run/server       # what the server needs
ownDisk=$server/data     # what it shares, on its own disk
mount=/mnt/data          # the same, mounted as root of the server

# A test goes on after a failure, and ends with `[ "$failures" = 0 ]`.
failures=0
Fail() {
    printf 'FAILED: %s\n' "$*"
    failures=$((failures + 1))
}

# smbcacls and rpcclient read /etc/samba/smb.conf.
StartServer() {
    mkdir -p "$server"/{private,lock,state,cache,pid,data,modes,rpc} /etc/samba
    cat >/etc/samba/smb.conf <<CONFIGURATION
[global]
netbios name = FILES
server role = standalone server
interfaces = lo
bind interfaces only = yes
smb ports = 445
disable netbios = yes
private dir = $server/private
lock directory = $server/lock
state directory = $server/state
cache directory = $server/cache
pid directory = $server/pid
ncalrpc dir = $server/rpc
log file = $server/log
vfs objects = acl_xattr
load printers = no
printcap name = /dev/null
disable spoolss = yes
[data]
path = $ownDisk
read only = no
acl_xattr:ignore system acls = yes
[files]
path = $server/files
read only = no
acl_xattr:ignore system acls = yes
vfs objects = acl_xattr xattr_tdb
xattr_tdb:file = $server/attributes.tdb
[modes]
path = $server/modes
read only = no
vfs objects =
CONFIGURATION
    printf 'secret\nsecret\n' | smbpasswd -s -a root >/dev/null
    local user
    for user in anna bert; do
        useradd "$user"
        printf 'secret\nsecret\n' | smbpasswd -s -a "$user" >/dev/null
    done
    smbd --daemon --no-process-group
    Await smbclient //127.0.0.1/data -U root%secret -c 'ls'
}

# Await COMMAND...: until it succeeds, at most a minute.
Await() {
    local attempt
    for attempt in {1..120}; do
        if "$@" >/dev/null 2>&1; then return 0; fi
        sleep 0.5
    done
    "$@"
}

# MountShare FOLDER USER [OPTION...]
MountShare() {
    local folder=$1 user=$2
    mkdir -p "$folder"
    mount -t cifs //127.0.0.1/data "$folder" -o "username=$user,password=secret,vers=3.1.1${3:+,$3}"
}

# Judge PATH: owner, group, control and list as the server tells them to one of its clients.
Judge() { smbcacls --sddl //127.0.0.1/data "$1" -U root%secret 2>/dev/null; }

# Lists FOLDER: what the server tells of every object below, paths relative.
Lists() { (cd "$1" && find . -print0 | LC_ALL=C sort -z | xargs -0 getfattr --encoding=hex --name=system.cifs_acl 2>/dev/null); }

# Requests NAME: how many of a kind the kernel has sent to servers so far: Creates, QueryInfos, SetInfos, or SMBs for all.
Requests() { awk -v name="$1:" '$1 == name { sum += $2 } END { print sum + 0 }' /proc/fs/cifs/Stats; }
