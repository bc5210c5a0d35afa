#!/usr/bin/env bash
# Where run.sh makes its sample, and where it refuses to: other people may not be able to turn its path elsewhere.
#   sample_test.sh SOURCE_FOLDER
set -euo pipefail
source=$1
if [ "$(id -u)" != 0 ]; then
    echo "[  SKIPPED ] only root can give folders to others"
    exit
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
Fail() {
    echo "$1" >&2
    exit 1
}

# Prepares CACHE: whether a sample is made in this cache folder.
Prepares() {
    # shellcheck disable=SC2016 # the inner shell's own
    XDG_CACHE_HOME=$1 bash -euc 'source "$1/tools/sample.sh"; PrepareSampleFolder; [ -d "$(dirname "$sample")" ]' \
        _ "$source" 2>>"$work/said"
}
# MakeParent NAME: a parent with a cache folder in it.
MakeParent() {
    parent=$work/$1
    mkdir -p "$parent/cache"
}

MakeParent own
Prepares "$parent/cache" || Fail "no sample in a folder of the user's own"
Prepares "$parent/new/cache" || Fail "no sample in a folder that was not there"

MakeParent sticky
chmod 1777 "$parent"
Prepares "$parent/cache" || Fail "no sample below a folder like /tmp"

for mode in 0777 0775; do
    MakeParent "mode-$mode"
    chgrp nogroup "$parent"
    chmod "$mode" "$parent"
    ! Prepares "$parent/cache" || Fail "a sample below a folder of mode $mode"
    [ ! -e "$parent/cache/permora-sample" ] || Fail "something was made below a folder of mode $mode"
done

MakeParent foreign
chown nobody "$parent"
! Prepares "$parent/cache" || Fail "a sample below another user's folder"

# A link in the way counts as what it leads to, and is not gone through a second time.
MakeParent linked
ln -s "$work/foreign/cache" "$parent/link"
! Prepares "$parent/link" || Fail "a sample below another user's folder, by a link"

MakeParent taken
ln -s "$work/own" "$parent/cache/permora-sample"
! Prepares "$parent/cache" || Fail "a sample in the place of a link"

grep -q "Others may write in $work/foreign" "$work/said" || Fail "no reason was told: $(cat "$work/said")"
echo "Passed"
