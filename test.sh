#!/usr/bin/env bash
# Builds the program and runs all its tests. Arguments go to ctest: ./test.sh -R sddl
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")"
# shellcheck source=tools/packages.sh
source tools/packages.sh
# shellcheck source=tools/build.sh
source tools/build.sh

<<<<<<< HEAD
EnsurePackages "${buildPackages[@]}" "${volumePackages[@]}" "${serverPackages[@]}" "${domainPackages[@]}" "${kernelPackages[@]}" \
    "${screenPackages[@]}" "${browserPackages[@]}"
=======
EnsurePackages "${buildPackages[@]}" "${volumePackages[@]}" "${serverPackages[@]}" "${domainPackages[@]}" "${screenPackages[@]}" \
    "${browserPackages[@]}" "${shellPackages[@]}"
>>>>>>> 89bc783 (packaging: make manual pages and completion from the grammar)
BuildPreset dev
exec ctest --preset dev --parallel "$testsAtATime" "$@"
