# Empty Debian systems in folders, to try out what happens on a machine that has nothing yet. Sourced, not run; for root.
# shellcheck shell=bash

# SourcesOf RELEASE: its sources, from the servers that this machine's apt takes Debian from.
SourcesOf() {
    local uri label
    # shellcheck disable=SC2016 # apt fills these in
    apt-get indextargets --format '$(REPO_URI) $(LABEL)' 'Identifier: Packages' 'Origin: Debian' | sort --unique |
        while read -r uri label; do
            case $label in
            Debian) printf 'deb %s %s main\n' "$uri" "$1" "$uri" "$1-updates" ;;
            Debian-Security) printf 'deb %s %s-security main\n' "$uri" "$1" ;;
            esac
        done
}

# The same, also where apt has no lists yet, which tell it.
Sources() {
    local sources
    sources=$(SourcesOf "$1")
    if [ -z "$sources" ]; then
        apt-get update --quiet >&2
        sources=$(SourcesOf "$1")
    fi
    [ -n "$sources" ] || { echo "This machine's apt takes Debian from nowhere." >&2; return 1; }
    printf '%s\n' "$sources"
}

# MakeRoot RELEASE FOLDER: the least that can install more, with an id, which a machine gets at its first start.
MakeRoot() {
    Sources "$1" | mmdebstrap --quiet --variant=minbase "$1" "$2" - || return 1
    tr --delete - </proc/sys/kernel/random/uuid >"$2/etc/machine-id"
}

# InRoot FOLDER COMMAND...: runs it there as a machine's root, with this machine's devices, and its X server if there is one.
# What is mounted for it, and by it, is gone when it ends, and so are all processes that it leaves behind.
InRoot() {
    # shellcheck disable=SC2016 # the inner shell's own
    unshare --mount --pid --fork --kill-child --propagation private sh -euc '
        root=$1
        shift
        mount --bind "$root" "$root" # as a root is: a place of a volume
        mount -t proc proc "$root/proc"
        mount --rbind /sys "$root/sys"
        mount --rbind /dev "$root/dev"
        if [ -d /tmp/.X11-unix ]; then
            mkdir -p "$root/tmp/.X11-unix"
            mount --bind /tmp/.X11-unix "$root/tmp/.X11-unix"
        fi
        exec env --ignore-environment PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root \
            LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive ${DISPLAY:+"DISPLAY=$DISPLAY"} \
            ${http_proxy:+"http_proxy=$http_proxy"} ${https_proxy:+"https_proxy=$https_proxy"} chroot "$root" "$@"
        ' InRoot "$@"
}
