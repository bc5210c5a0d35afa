#!/usr/bin/env bash
# Builds Debian's packages of the two programs from the tree as it is, committed or not, and leaves them in build/packages:
# permora, the windowed program, and permora-cli, which needs no toolkit.
#   packaging/build_deb.sh           builds and checks them
#   packaging/build_deb.sh --twice   as root: builds them once more in an empty root, which gets what debian/control asks for
#                                    and no more; both must be the same bytes
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh
# shellcheck source=tools/build.sh
source tools/build.sh
# shellcheck source=tools/clean_root.sh
source tools/clean_root.sh

EnsurePackages "${buildPackages[@]}" "${packagingPackages[@]}"
version=$(dpkg-parsechangelog --show-field Version)
work=$PWD/build/packaging
packages=$PWD/build/packages
root=$work/root

rm -rf --one-file-system "$work" "$packages"
if [ "${1-}" = --twice ]; then
    trap 'rm -rf --one-file-system "$root"' EXIT
    MakeRoot "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$root"
    CopyTree "$root/another/folder/permora-$version"
fi
CopyTree "$work/permora-$version" # now, so that both are the same whoever works on this one meanwhile

# In the tree that is its argument. The packages are beside it then; of debug information there are none, since nobody
# installs them from here.
# shellcheck disable=SC2016 # another shell's own
build='cd "$1"; DEB_BUILD_OPTIONS="noautodbgsym parallel=$(nproc)" DEB_CXXFLAGS_APPEND=-g0 dpkg-buildpackage --build=binary --no-sign'
# Build LOG COMMAND...
Build() {
    echo "Building the packages of permora $version"
    "${@:2}" >"$1" 2>&1 || { cat "$1" >&2; return 1; }
}
Build "$work/build.log" sh -euc "$build" sh "$work/permora-$version"
rm -rf "$work/permora-$version"
mkdir -p "$packages"
mv "$work"/*.deb "$packages/"

if [ "${1-}" = --twice ]; then
    # shellcheck disable=SC2016 # as above
    Build "$work/build-in-root.log" InRoot "$root" sh -euc 'apt-get update; apt-get --yes --no-install-recommends build-dep "$1"; '"$build" \
        sh "/another/folder/permora-$version"
    mkdir "$work/again" # where they stay, to look at what differs
    mv "$root"/another/folder/*.deb "$work/again/"
    for package in "$packages"/*.deb; do
        cmp "$package" "$work/again/${package##*/}"
    done
    echo "Both builds gave the same bytes."
fi
lintian --fail-on error,warning --allow-root "$packages"/*.deb
ls "$packages"/*.deb
