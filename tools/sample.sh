# A small volume to play with. Sourced, not run.
# shellcheck shell=bash

# In a folder that only its owner can write to, so that nobody can put a link where the sample is made; those above it
# are no one else's either.
sampleFolder=${XDG_CACHE_HOME:-${HOME:?}/.cache}/permora-sample
sampleImage=
sample=
# A volume that a user mounted is his to take away, but not through umount.
unmount=(umount)
[ "$(id -u)" = 0 ] || unmount=(fusermount3 -u)

# IsMounted: whether something is mounted on $sample, also when its file system's process is gone and the folder itself
# can no longer be asked.
IsMounted() { findmnt --mountpoint "$sample" >/dev/null; }

# OthersMayWrite FOLDER: whether anyone but root and this user can put something else in the place of what is in it. Where
# the sticky bit is set, nobody can who does not own that. A group of the user's own name is the user.
OthersMayWrite() {
    local owner group mode
    read -r owner group mode < <(stat --format '%u %G %a' "$1") || return 0
    [ "$owner" = 0 ] || [ "$owner" = "$(id -u)" ] || return 0
    mode=$((8#$mode))
    if (((mode & 01000) != 0)); then return 1; fi
    (((mode & 0002) != 0)) || { (((mode & 0020) != 0)) && [ "$group" != root ] && [ "$group" != "$(id -un)" ]; }
}

# PrepareSampleFolder: makes it and finds the places in it, by a path without links, which nobody can turn elsewhere.
PrepareSampleFolder() {
    local parent
    mkdir -p "$(dirname "$sampleFolder")"
    parent=$(readlink -e "$(dirname "$sampleFolder")")
    sampleFolder=${parent%/}/$(basename "$sampleFolder")
    while :; do
        if OthersMayWrite "$parent"; then
            echo "Others may write in $parent, so no sample is made below it; XDG_CACHE_HOME can name another place." >&2
            return 1
        fi
        [ "$parent" != / ] || break
        parent=$(dirname "$parent")
    done
    [ -d "$sampleFolder" ] || mkdir -m 700 "$sampleFolder"
    if [ ! -O "$sampleFolder" ] || [ -L "$sampleFolder" ]; then
        echo "$sampleFolder belongs to someone else." >&2
        return 1
    fi
    sampleImage=$sampleFolder/volume.img
    sample=$sampleFolder/volume
}

# MakeSample: an empty NTFS volume mounted on $sample, or a plain folder there when nothing can be mounted. An older
# sample is removed first.
MakeSample() {
    PrepareSampleFolder || return 1
    if IsMounted && ! "${unmount[@]}" "$sample"; then
        echo "The earlier sample is in use; leave $sample and try again." >&2
        return 1
    fi
    rm -rf --one-file-system "$sample" "$sampleImage"
    mkdir "$sample"

    local problem
    if problem=$(MountSample 2>&1); then
        echo "Made a small NTFS volume, mounted on $sample."
    else
        rm -f "$sampleImage"
        echo "No volume can be mounted here (${problem##*$'\n'}),"
        echo "so a plain folder is the sample: $sample."
    fi
}

MountSample() {
    local mkntfs
    mkntfs=$(command -v mkntfs || echo /usr/sbin/mkntfs)
    truncate --size 16M "$sampleImage" && "$mkntfs" -Q -F -q "$sampleImage" >/dev/null 2>&1 &&
        ntfs-3g "$sampleImage" "$sample"
}

# FillSample PROGRAM: folders and files, and the access lists that make them interesting.
FillSample() {
    local cli=$1
    Change() { "$cli" "$@" --no-history; }
    mkdir -p "$sample"/{Projects/Archive,Payroll,Inbox}
    echo "Everybody may read this." >"$sample/Projects/plan.txt"
    echo "Read, but do not change." >"$sample/Projects/Archive/old plan.txt"
    echo "Not for everybody." >"$sample/Payroll/salaries.txt"
    {
        # Every folder begins with a list of its own; what is below the three takes it over.
        local folder
        for folder in Projects Payroll Inbox; do
            Change inherit "$sample/$folder" --remove
            Change grant "$sample/$folder" --account Administrators --rights "full control"
            Change revoke "$sample/$folder" --account Everyone
        done
        Change revoke "$sample"/Projects/{plan.txt,Archive} "$sample/Projects/Archive/old plan.txt" \
            "$sample/Payroll/salaries.txt" --account Everyone
        Change inherit "$sample"/Projects/{plan.txt,Archive} "$sample/Projects/Archive/old plan.txt" \
            "$sample/Payroll/salaries.txt" --on

        Change grant "$sample/Projects" --account Users \
            --rights "List folder / Read data,Read attributes,Read extended attributes,Traverse folder / Execute file,Read permissions"
        Change deny "$sample/Projects/Archive" --account Users \
            --rights "Create files / Write data,Create folders / Append data,Delete"
        # Whoever drops a file into the inbox keeps control of it and sees nobody else's.
        Change grant "$sample/Inbox" --account Users --rights "Create files / Write data" --scope "This folder only"
        Change grant "$sample/Inbox" --account "CREATOR OWNER" --rights "full control" --scope "Files only"
    } >/dev/null
}

# TourSample PROGRAM: shows the lists, changes one, shows it again, and says how to go on.
TourSample() {
    local cli=$1
    printf '\n'
    "$cli" show "$sample"/{Projects,Projects/Archive,Projects/plan.txt,Payroll,Inbox}
    printf '\nNow guests are denied everything in Projects; what is below takes it over:\n'
    printf '    permora-cli deny %q --account Guests --rights "Full control"\n\n' "$sample/Projects"
    "$cli" deny "$sample/Projects" --account Guests --rights "Full control"
    printf '\n'
    "$cli" show "$sample"/Projects{,/plan.txt}
    printf '\nThe sample stands in %s. Go on with\n' "$sample"
    printf '    %q show %q\n' "$cli" "$sample/Projects"
    printf '    %q --help\n' "$cli"
    if IsMounted; then
        printf 'and when you are done:\n    %s %q\n' "${unmount[*]}" "$sample"
    fi
}
