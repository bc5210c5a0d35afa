#!/usr/bin/env bash
# Builds Debian's packages of the two programs from the tree as it is, committed or not, and leaves them in build/packages:
# permora, the windowed program, and permora-cli, which needs no toolkit.
#   packaging/build_deb.sh           builds and checks them
#   packaging/build_deb.sh --twice   builds them once more in another folder; both must be the same bytes
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh
# shellcheck source=tools/build.sh
source tools/build.sh

EnsurePackages "${buildPackages[@]}" "${packagingPackages[@]}"
version=$(dpkg-parsechangelog --show-field Version)
work=$PWD/build/packaging
packages=$PWD/build/packages

# BuildIn FOLDER: the packages are beside the copy of the tree, where dpkg-buildpackage puts them. Nobody installs packages
# of debug information from here, so there are none.
BuildIn() {
    local tree=$1/permora-$version
    CopyTree "$tree"
    echo "Building the packages of permora $version"
    (cd "$tree" && DEB_BUILD_OPTIONS="noautodbgsym parallel=$(nproc)" DEB_CXXFLAGS_APPEND=-g0 \
        dpkg-buildpackage --build=binary --no-sign) >"$1/build.log" 2>&1 || { cat "$1/build.log" >&2; return 1; }
    rm -rf "$tree"
}

rm -rf "$work" "$packages"
BuildIn "$work/once"
mkdir -p "$packages"
mv "$work"/once/*.deb "$packages/"

if [ "${1-}" = --twice ]; then
    BuildIn "$work/another/folder/below"
    for package in "$packages"/*.deb; do
        cmp "$package" "$work/another/folder/below/${package##*/}"
    done
    echo "Both builds gave the same bytes."
fi
lintian --fail-on error,warning --allow-root "$packages"/*.deb
ls "$packages"/*.deb
