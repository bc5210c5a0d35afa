#!/usr/bin/env bash
# Builds the program and shows what it does.
#   ./run.sh FOLDER   opens the main window on the folder
#   ./run.sh          makes a sample volume with a few interesting access lists, and opens the window on it
# Without a display it shows (and for the sample changes) the lists in the terminal and saves pictures of the windows.
set -euo pipefail
callerFolder=$PWD
cd "$(dirname "$(readlink -f "$0")")"
# shellcheck source=tools/packages.sh
source tools/packages.sh
# shellcheck source=tools/build.sh
source tools/build.sh

EnsurePackages "${buildPackages[@]}" "${volumePackages[@]}"
targets=(permora permora-cli)
hasDisplay=${DISPLAY:-}${WAYLAND_DISPLAY:-}
[ -n "$hasDisplay" ] || targets+=(permora-screenshots permora-window-pictures)
BuildPreset release "${targets[@]}"
programs=$PWD/build/release/bin
cli=$programs/permora-cli
# The windowed program looks for its help in the folder that is set here.
"$cli" setup -- "$programs" >/dev/null

# SavePictures FOLDER saves pictures of every dialog and of the main window on the folder.
SavePictures() {
    local pictures=$PWD/build/pictures
    local log=$PWD/build/pictures.log
    {
        QT_QPA_PLATFORM=offscreen "$programs/permora-screenshots" "$pictures" &&
            (cd "$callerFolder" && "$programs/permora-window-pictures" "$1" "$pictures")
    } >"$log" 2>&1 || { cat "$log" >&2; return 1; }
    printf '\nPictures of the windows are in %s.\n' "$pictures"
}

if [ $# -gt 0 ]; then
    if [ -n "$hasDisplay" ]; then
        cd "$callerFolder"
        exec "$programs/permora" "$1"
    fi
    (cd "$callerFolder" && "$cli" show -- "$@")
    SavePictures "$1"
    exit
fi

# shellcheck source=tools/sample.sh
source tools/sample.sh
MakeSample
FillSample "$cli"
if [ -n "$hasDisplay" ]; then
    exec "$programs/permora" "$sample"
fi
TourSample "$cli"
SavePictures "$sample"
