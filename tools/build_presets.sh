#!/usr/bin/env bash
# Builds every preset by the compilers that this release of Debian has, each target's sources joined. Warnings are errors.
# check_root.sh runs this where nothing is installed yet.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh
# shellcheck source=tools/build.sh
source tools/build.sh

EnsurePackages "${buildPackages[@]}" "${windowsPackages[@]}" "${clangPackages[@]}"
g++ --version | head -n 1
clang++ --version | head -n 1
for preset in dev release asan tsan fuzz windows; do
    echo "Building $preset"
    Configure "$preset" "${joined[@]}"
    BuildPreset "$preset"
done
