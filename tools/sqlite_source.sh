#!/usr/bin/env bash
# Usage: tools/sqlite_source.sh FOLDER
# Makes FOLDER/sqlite3.c and FOLDER/sqlite3.h, the whole of SQLite in one source, from Debian's source package of the
# release of this machine: for the programs for Windows, where no system library has it. The package comes through apt
# from the mirrors that this machine already uses; apt checks that it is signed by Debian.
set -euo pipefail
folder=$1
keys=/usr/share/keyrings/debian-archive-keyring.gpg

Fail() {
    echo "The source of SQLite is missing: $*" >&2
    exit 1
}

for tool in dpkg-source make gcc tclsh; do
    [ -n "$(command -v $tool)" ] || Fail "$tool is not installed (dpkg-dev, tcl and g++ bring what is needed)."
done
release=$(. /etc/os-release && echo "${VERSION_CODENAME-}")
mapfile -t mirrors < <(apt-get indextargets --format '$(REPO_URI) $(CODENAME) $(COMPONENT)' \
    'Created-By: Packages' 'Origin: Debian' 'Component: main' |
    awk -v release="$release" '$2 == release || $2 == release "-updates" || $2 == release "-security"' | sort -u)
[ "${#mirrors[@]}" -gt 0 ] || Fail "apt knows no mirror of Debian $release. \"apt-get update\" makes them known."

mkdir -p "$folder"
folder=$(readlink -f "$folder")
work=$folder/work
rm -rf "$work"
mkdir -p "$work"/{apt/lists/partial,apt/archives/partial,download,build}
trap 'rm -rf "$work"' EXIT

# The machine's own lists of packages stay as they are: these have a folder of their own.
for mirror in "${mirrors[@]}"; do
    read -r site suite component <<<"$mirror"
    printf 'Types: deb-src\nURIs: %s\nSuites: %s\nComponents: %s\nSigned-By: %s\n\n' "$site" "$suite" "$component" "$keys"
done >"$work/debian.sources"
apt=(apt-get --quiet -o "Dir::Etc::SourceList=$work/debian.sources" -o Dir::Etc::SourceParts=/dev/null
    -o "Dir::State::Lists=$work/apt/lists" -o "Dir::Cache=$work/apt" -o Acquire::Languages=none
    -o Acquire::Retries=3 -o APT::Get::AllowUnauthenticated=false)
"${apt[@]}" -o APT::Update::Error-Mode=any update >"$work/log" 2>&1 ||
    { cat "$work/log" >&2; Fail "the mirrors of Debian could not be read."; }
(cd "$work/download" && "${apt[@]}" source --download-only sqlite3) >"$work/log" 2>&1 ||
    { cat "$work/log" >&2; Fail "the package could not be fetched."; }

# Its configuration is about the shell and the library for this machine; only the joined source is made here.
{
    dpkg-source --no-copy --extract "$work"/download/sqlite3_*.dsc "$work/sqlite" &&
        cd "$work/build" &&
        env --unset=MAKEFLAGS CC=gcc CFLAGS=-O1 ../sqlite/configure --disable-tcl --disable-readline --disable-load-extension &&
        env --unset=MAKEFLAGS make sqlite3.c
} >"$work/log" 2>&1 || { tail -n 40 "$work/log" >&2; Fail "it could not be joined to one file."; }
[ -s sqlite3.c ] && [ -s sqlite3.h ] || Fail "nothing came of it."
mv sqlite3.h sqlite3.c "$folder/"
