#!/usr/bin/env bash
# Runs this project on a Debian of another release, from nothing: in an empty root, with a copy of the tree as it is.
#   tools/check_root.sh RELEASE [ARGUMENT...]   both commands of the README; the arguments go to ctest
#   tools/check_root.sh RELEASE --core          only builds what has no window, and runs its tests that need no server
#   tools/check_root.sh RELEASE --presets       only builds, but all presets: by its compilers, whose warnings are errors
# A skipped test counts as failed.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh
# shellcheck source=tools/build.sh
source tools/build.sh
# shellcheck source=tools/clean_root.sh
source tools/clean_root.sh

[ "$(id -u)" = 0 ] || { echo "Only root can make another root." >&2; exit 1; }
EnsurePackages mmdebstrap
release=$1
shift
mkdir -p build # where there is more room than in a temporary folder
work=$(mktemp -d -p "$PWD/build")
root=$work/$release
# Where compilers' results are kept, those of the other release's compilers are kept beside them.
kept=${CCACHE_DIR:+$CCACHE_DIR-$release}
CleanUp() {
    [ ! -e "$root/ccache" ] || cp -a --update "$root/ccache/." "$kept"
    rm -rf --one-file-system "$work"
}
trap CleanUp EXIT

echo "Making an empty $release"
MakeRoot "$release" "$root"
CopyTree "$root/permora"
cache=()
if [ -n "$kept" ]; then
    mkdir -p "$kept"
    cp -a "$kept" "$root/ccache"
    InRoot "$root" sh -c 'apt-get --quiet update && apt-get --quiet --yes --no-install-recommends install ccache' >/dev/null
    cache=(CCACHE_DIR=/ccache CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS-}" CMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
Run() { InRoot "$root" env "${cache[@]}" "$@"; }

case ${1-} in
--core) Run /permora/tools/core_tests.sh ;;
--presets) Run /permora/tools/build_presets.sh ;;
*)
    Run /permora/run.sh
    Run /permora/test.sh "$@"
    ;;
esac 2>&1 | tee "$work/log"
! grep -E "\*\*\*(Skipped|Not Run)|\(Disabled\)|^\[  SKIPPED \]" "$work/log"
