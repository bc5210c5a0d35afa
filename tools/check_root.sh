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
trap 'rm -rf --one-file-system "$work"' EXIT
root=$work/$release

echo "Making an empty $release"
MakeRoot "$release" "$root"
CopyTree "$root/permora"
# Where a cache of compilers' results is used, it keeps those of the other release's compilers, too.
cache=()
if [ -n "${CCACHE_DIR-}" ]; then
    kept=$CCACHE_DIR-$release
    mkdir -p "$kept"
    cp -a "$kept" "$root/ccache"
    cache=(CCACHE_DIR=/ccache CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS-}" CMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi

case ${1-} in
--core)
    InRoot "$root" env "${cache[@]}" /permora/tools/core_tests.sh
    [ ${#cache[@]} = 0 ] || cp -a --update "$root/ccache/." "$kept"
    ;;
--presets) InRoot "$root" /permora/tools/build_presets.sh ;;
*)
    InRoot "$root" /permora/run.sh
    InRoot "$root" /permora/test.sh "$@"
    ;;
esac 2>&1 | tee "$work/log"
! grep -E "\*\*\*(Skipped|Not Run)|\(Disabled\)|^\[  SKIPPED \]" "$work/log"
