#!/usr/bin/env bash
# Builds the program and runs all its tests. Arguments go to ctest: ./test.sh -R sddl
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")"
# shellcheck source=tools/packages.sh
source tools/packages.sh
# shellcheck source=tools/build.sh
source tools/build.sh

EnsurePackages "${buildPackages[@]}" "${volumePackages[@]}" "${serverPackages[@]}" "${domainPackages[@]}" "${kernelPackages[@]}" \
    "${screenPackages[@]}" "${browserPackages[@]}" "${shellPackages[@]}"
BuildPreset dev
exec ctest --preset dev --parallel "$testsAtATime" "$@"
