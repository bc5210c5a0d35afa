#!/usr/bin/env bash
# Builds the program and shows what it does.
#   ./run.sh FOLDER   shows the folder's access list
#   ./run.sh          makes a sample volume with a few interesting access lists, shows and changes them
set -euo pipefail
callerFolder=$PWD
cd "$(dirname "$(readlink -f "$0")")"
# shellcheck source=tools/packages.sh
source tools/packages.sh
# shellcheck source=tools/build.sh
source tools/build.sh

EnsurePackages "${buildPackages[@]}" "${volumePackages[@]}"
BuildPreset release permora-cli
cli=$PWD/build/release/bin/permora-cli

if [ $# -gt 0 ]; then
    cd "$callerFolder"
    exec "$cli" show -- "$@"
fi

# shellcheck source=tools/sample.sh
source tools/sample.sh
MakeSample
FillSample "$cli"
TourSample "$cli"
