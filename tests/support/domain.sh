#!/usr/bin/env bash
# A real Active Directory domain on one machine, for tests: the domain EXAMPLE with its controller DC1, and the member
# FILES, which shares the folder /srv/data as //FILES/data. Both are machines of their own (network, mounts, host name)
# in one world of processes, which ends with the command for which it was made, however that ends.
#
#   domain.sh run [--users N] COMMAND...    makes a domain and runs the command on the member, as root; the exit code is
#                                           the command's, or 77 where no domain can be made here, with the reason
# Within such a command ($PERMORA_DOMAIN is set):
#   domain.sh stop|start controller|winbindd|smbd
#   domain.sh freeze|thaw controller|winbindd           still takes connections, but no longer answers
#   domain.sh unplug|plug                               the cable of the controller
#   domain.sh on controller|member COMMAND...           runs a command there
#
# Accounts (tests/support/domain_accounts.py) have the password $domainPassword. A domain is made once and kept in
# build/domain; the next ones start from that copy. --users adds that many users: person00001, person00002, ...
set -euo pipefail

self=$(readlink -f "$0")
project=${self%/tests/support/domain.sh}
kept=$project/build/domain
world=$kept/world # an empty folder, in which each world mounts its own

domainPassword='Passw0rd!'
domainSid=S-1-5-21-1111111111-2222222222-3333333333
memberSid=S-1-5-21-4000000001-4000000002-4000000003
controllerAddress=192.0.2.1
memberAddress=192.0.2.2
patience=120 # seconds; far more than a busy machine needs
export LC_ALL=C.UTF-8 PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin

Fail() {
    echo "domain.sh: $*" >&2
    exit 1
}

CannotRun() {
    echo "[  SKIPPED ] no domain can be made here: $*"
    exit 77
}

# WaitUntil SECONDS COMMAND...
WaitUntil() {
    local deadline=$((SECONDS + $1 + 1))
    shift
    until "$@" >/dev/null 2>&1; do
        [ "$SECONDS" -lt "$deadline" ] || Fail "waited in vain for: $*"
        sleep 0.02
    done
}

# Enter MACHINE COMMAND...: becomes the command, in all namespaces of a machine. On: runs it there.
Enter() {
    local machine=$1
    shift
    exec nsenter --target "$(<"$world/$machine.holder")" --mount --net --uts --ipc --wdns="$PWD" -- "$@"
}
On() { (Enter "$@"); }

# ---- What each machine consists of.

# Runs as the process that holds the namespaces of a machine, until the world ends.
HoldMachine() {
    local machine=$1 place
    mkdir "$world/$machine/etc"
    cp -a /etc/. "$world/$machine/etc/"
    mount --bind "$world/$machine/etc" /etc # on the machine's own copy, which only it sees
    for place in lib cache log; do
        mkdir -p "$world/$machine/$place" "/var/$place/samba"
        mount --bind "$world/$machine/$place" "/var/$place/samba"
    done
    mkdir -p /run/samba
    mount -t tmpfs -o mode=755 tmpfs /run/samba
    mount -t tmpfs -o mode=755 tmpfs /srv
    mkdir -m 777 /srv/data
    rm -rf /etc/samba /etc/resolv.conf
    mkdir -p /etc/samba "/var/lib/samba/private"
    Configure "$machine"
    ip link set lo up
    : >"$world/$machine.ready"
    exec sleep infinity
}

Configure() {
    cat >/etc/resolv.conf <<TEXT
search example.test
nameserver $controllerAddress
options timeout:1 attempts:1
TEXT
    cat >/etc/hosts <<TEXT
127.0.0.1 localhost
$controllerAddress dc1.example.test dc1
$memberAddress files.example.test files
TEXT
    cat >/etc/krb5.conf <<TEXT
[libdefaults]
    default_realm = EXAMPLE.TEST
    dns_lookup_realm = false
    dns_lookup_kdc = true
    rdns = false
TEXT
    "Configure-$1"
}

Configure-controller() {
    hostname dc1
    cat >/etc/samba/smb.conf <<TEXT
[global]
    netbios name = DC1
    workgroup = EXAMPLE
    realm = EXAMPLE.TEST
    server role = active directory domain controller
    # Joining a domain needs the controller's own winbindd as well.
    server services = s3fs, rpc, ldap, cldap, kdc, dns, winbindd
    allow dns updates = disabled
$(CommonSettings)
[sysvol]
    path = /var/lib/samba/sysvol
    read only = no
[netlogon]
    path = /var/lib/samba/sysvol/example.test/scripts
    read only = no
TEXT
}

Configure-member() {
    hostname files
    sed -i -E 's/^(passwd|group):.*/\1: files winbind/' /etc/nsswitch.conf
    [ ! -e /var/lib/samba/krb5.keytab ] || cp /var/lib/samba/krb5.keytab /etc/
    # The domain's administrator is root here. Otherwise nobody might change the list of a file that root made.
    echo '!root = EXAMPLE\Administrator' >/etc/samba/user.map
    cat >/etc/samba/smb.conf <<TEXT
[global]
    netbios name = FILES
    workgroup = EXAMPLE
    realm = EXAMPLE.TEST
    security = ads
    kerberos method = secrets and keytab
    machine password timeout = 0
    idmap config * : backend = tdb
    idmap config * : range = 3000-7999
    idmap config EXAMPLE : backend = rid
    idmap config EXAMPLE : range = 100000-199999
    template shell = /bin/sh
    template homedir = /nonexistent
    username map = /etc/samba/user.map
    min domain uid = 0
$(CommonSettings)
[data]
    path = /srv/data
    read only = no
    vfs objects = acl_xattr
    acl_xattr:ignore system acls = yes
TEXT
}

CommonSettings() {
    cat <<TEXT
    interfaces = lo cable
    bind interfaces only = yes
    disable netbios = yes
    smb ports = 445
    load printers = no
    printing = bsd
    printcap name = /dev/null
    disable spoolss = yes
TEXT
}

# ---- Services. Each one is the leader of a session, by which all its processes are found.

# Launch MACHINE NAME COMMAND...
Launch() {
    local machine=$1 name=$2
    shift 2
    Enter "$machine" setsid "$@" </dev/null >>"$world/$machine/log/$name.output" 2>&1 &
    WaitUntil $patience pgrep --session $!
    echo $! >"$world/$name.session"
}

Start() {
    case $1 in
        controller) Launch controller controller samba --foreground --no-process-group --model=single ;;
        winbindd) Launch member winbindd winbindd --foreground --no-process-group ;;
        smbd) Launch member smbd smbd --foreground --no-process-group ;;
        *) Fail "there is no service $1" ;;
    esac
}

# IsOpen ADDRESS PORT..., as the member sees it
IsOpen() {
    local port address=$1
    shift
    for port; do On member bash -c "exec 3<>/dev/tcp/$address/$port" || return 1; done
}

AwaitService() {
    case $1 in
        controller) WaitUntil $patience IsOpen $controllerAddress 389 445 135 88 ;;
        winbindd) WaitUntil $patience On member wbinfo --ping ;;
        smbd) WaitUntil $patience IsOpen 127.0.0.1 445 ;;
    esac
}

IsOver() { ! pgrep --session "$1"; }

Stop() {
    local session
    session=$(<"$world/$1.session")
    pkill -TERM --session "$session" || true
    ( WaitUntil 3 IsOver "$session" ) 2>/dev/null || pkill -KILL --session "$session" || true
    WaitUntil $patience IsOver "$session"
}

Signal() { pkill "-$1" --session "$(<"$world/$2.session")"; }

# ---- The world: process 1 of its process namespace. With it, everything in it ends.

MakeMachines() {
    local machine
    for machine in controller member; do
        mkdir "$world/$machine"
        [ ! -e "$image/$machine" ] || cp -a --sparse=always "$image/$machine" "$world/$machine/lib"
        unshare --mount --net --uts --ipc bash "$self" hold "$machine" </dev/null >"$world/$machine.log" 2>&1 &
        echo $! >"$world/$machine.holder"
    done
    for machine in controller member; do
        ( WaitUntil $patience test -e "$world/$machine.ready" ) || { cat "$world/$machine.log" >&2; exit 1; }
    done
    On controller ip link add cable type veth peer name cable netns "$(<"$world/member.holder")"
    Connect controller $controllerAddress
    Connect member $memberAddress
}

Connect() {
    On "$1" ip address add "$2/24" dev cable
    On "$1" ip link set cable up
}

StartServices() {
    Start controller
    Start smbd # takes its time beside the controller
    AwaitService controller
    Start winbindd
    AwaitService winbindd
    WaitUntil $patience On member wbinfo --ping-dc
    AwaitService smbd
}

# Logged COMMAND...: shows what the command printed only when it failed.
Logged() { "$@" >>"$world/log" 2>&1 || { tail -n 30 "$world/log" >&2; Fail "failed: $*"; }; }

Provision() {
    local users=$1
    Logged On controller samba-tool domain provision --realm=EXAMPLE.TEST \
        --domain=EXAMPLE --server-role=dc --host-name=dc1 --host-ip=$controllerAddress --domain-sid=$domainSid \
        --dns-backend=SAMBA_INTERNAL --adminpass="$domainPassword" --option="interfaces=lo cable" \
        --option="bind interfaces only=yes"
    Logged On controller python3 "${self%.sh}_accounts.py" "$domainPassword" "$users"
    Start controller
    AwaitService controller
    Logged On member net setlocalsid $memberSid
    # The controller's services for names and tickets need longer than their ports.
    WaitUntil $patience On member net ads join --user="Administrator%$domainPassword" --no-dns-updates
    Start winbindd
    WaitUntil $patience On member wbinfo --ping-dc
    Logged On member net sam createlocalgroup Operators
    Logged On member net sam addmem Operators 'EXAMPLE\Auditors'
    Logged On member net sam addmem Operators 'EXAMPLE\carla'
    Logged On member cp /etc/krb5.keytab /var/lib/samba/
    # At the first logon ever, the member fills its built-in groups.
    Start smbd
    AwaitService smbd
    Logged On member smbclient //127.0.0.1/data --user="EXAMPLE\\Administrator%$domainPassword" --command=quit
    Stop smbd
    Stop winbindd
    Stop controller
    pkill samba-dcerpcd || true # whoever asks the member's database starts one; in this world it is the only one
    rm -rf "$image.new"
    mkdir "$image.new"
    Origin >"$image.new/origin"
    cp -a --sparse=always "$world/controller/lib" "$image.new/controller"
    cp -a --sparse=always "$world/member/lib" "$image.new/member"
    mv "$image.new" "$image"
}

# The files of the name service are the one thing that is not installed, since its package changes how this machine
# looks up users. It is unpacked beside the copies.
Download() { apt-get download --quiet=2 libnss-winbind; }
ProvideNameService() {
    [ ! -e "$kept/nss/libnss_winbind.so.2" ] || return 0
    local folder=$kept/package
    rm -rf "$folder"
    mkdir -p "$folder" "$kept/nss"
    ( cd "$folder" && { Download || { apt-get update && Download; }; } ) >"$kept/download.log" 2>&1 ||
        CannotRun "the package libnss-winbind cannot be downloaded: $(tail -n 1 "$kept/download.log")"
    dpkg-deb --extract "$folder"/libnss-winbind_*.deb "$folder"
    cp "$(find "$folder" -name libnss_winbind.so.2)" "$kept/nss/"
    rm -rf "$folder"
}

# What a copy was made with: one that was made otherwise is of no use.
Origin() {
    { cat "$self" "${self%.sh}_accounts.py"; dpkg-query --show samba samba-ad-provision; } | sha256sum
}

# The volumes of tests that run meanwhile are let go of: as long as this world holds them their file systems do not end.
LetGoOfVolumes() {
    local place
    while read -r _ place _; do
        [[ $place != */permora-test-* ]] || umount --lazy "$place" 2>/dev/null || true
    done < <(cat /proc/self/mounts)
}

# RunWorld USERS COMMAND...
RunWorld() {
    local users=$1
    shift
    LetGoOfVolumes
    image=$kept/with-$users-users
    mount -t tmpfs -o mode=755 tmpfs "$world"
    exec 8>"$kept/lock" # one process makes the copy, the others wait for it
    flock 8
    [ "$(cat "$image/origin" 2>/dev/null)" = "$(Origin)" ] || rm -rf "$image"
    ProvideNameService
    mkdir "$world/nss"
    cp "$kept/nss/libnss_winbind.so.2" "$world/nss/"
    export LD_LIBRARY_PATH=$world/nss
    # For programs that look for leaks at their end.
    export LSAN_OPTIONS="suppressions=$project/tests/support/leaks.supp:print_suppressions=0"
    MakeMachines
    [ -e "$image" ] || Provision "$users"
    flock --unlock 8 # by name, since the processes that were started have it too
    StartServices
    PERMORA_DOMAIN=$world On member "$@"
}

Run() {
    local users=0 program
    if [ "${1-}" = --users ]; then users=$2; shift 2; fi
    [ $# -gt 0 ] || Fail "which command?"
    [ "$(id -u)" = 0 ] || CannotRun "it needs root"
    for program in samba smbd winbindd wbinfo net smbclient ip pgrep; do
        command -v $program >/dev/null || CannotRun "the program $program is not installed"
    done
    [ -d /usr/share/samba/setup ] || CannotRun "the package samba-ad-provision is not installed"
    unshare --mount --net --pid --fork true 2>/dev/null || CannotRun "this machine does not let its root make namespaces"
    mkdir -p "$world"
    # The world ends when this process does.
    setpriv --pdeathsig KILL unshare --mount --pid --fork --kill-child --mount-proc bash "$self" world "$users" "$@" <&0 &
    local child=$!
    trap 'kill -KILL $child' TERM INT HUP
    wait $child
}

command=${1-}
[ $# -eq 0 ] || shift
case $command in
    run) Run "$@" ;;
    world) RunWorld "$@" ;;
    hold) HoldMachine "$@" ;;
    on) On "$@" ;;
    start) Start "$1"; AwaitService "$1" ;;
    stop) Stop "$1" ;;
    freeze) Signal STOP "$1" ;;
    thaw) Signal CONT "$1" ;;
    unplug) On controller ip link set cable down ;;
    plug) On controller ip link set cable up ;;
    *) Fail "run [--users N] COMMAND... | stop, start, freeze, thaw SERVICE | unplug | plug | on MACHINE COMMAND..." ;;
esac
