#!/usr/bin/env bash
# The program under Wayland: its main window, and the editor in front of it. Assistive technology works it, since the
# compositor of the test has neither keys nor a mouse.
#   wayland_test.sh PROGRAM-FOLDER PICTURE-FOLDER
set -euo pipefail
# shellcheck source=tests/end_to_end/program.sh
source "$(dirname "$(readlink -f "$0")")/program.sh"

Press() { "$here/accessible_press.py" "$@"; }
Take() { (cd "$work" && rm -f wayland-screenshot-* && weston-screenshooter && mv wayland-screenshot-* "$1"); }
# IsMostly LEAST PICTURE...: whether at least so many percent of the pixels are white, after what convert is to do.
IsMostly() { [ "$(convert "${@:2}" -threshold 99% -format '%[fx:int(100*mean)]' info:)" -ge "$1" ]; }
# The main window is a list, which is white; the editor covers a part of it.
ShowsList() { Take "$pictures/main-window.png" && IsMostly 30 "$pictures/main-window.png"; }
ShowsEditor() {
    Take "$pictures/editor.png" &&
        IsMostly 5 "$pictures/main-window.png" "$pictures/editor.png" -compose difference -composite -threshold 0
}
ToldNot() { ! Told "$1"; }

# Builds that look for leaks do so in the tests under X11; what the toolkit's half for Wayland keeps is not the program's.
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0"

BeginRun "$1" "$2/wayland" wayland
StartAssistance
mkdir -p "$work/data/Alpha"
start=("$programs/permora")
if [ "$(id -u)" = 0 ]; then # as if for a user, whose compositor it is
    start=(env -u WAYLAND_DISPLAY PKEXEC_UID=0 "$programs/permora" --wayland-display "$XDG_RUNTIME_DIR/$WAYLAND_DISPLAY")
fi
"${start[@]}" "$work/data" >>"$work/output" 2>&1 &
programPid=$!
ExpectTold 'frame|Permora|.*|'
ExpectTold 'list item|Alpha|.*|'
WaitUntil "the main window to be painted" ShowsList
WaitUntil "the row to be chosen" Press "list item" Alpha
ExpectTold 'list item|Alpha|selected|'
WaitUntil "a command on it" Press "push button" Permissions
ExpectTold 'dialog|Security Editor - Alpha|.*|'
ExpectTold 'list item|Allow, Name: .*, Permission: .*, Apply To: .*|.*|'
WaitUntil "the editor to be painted" ShowsEditor
WaitUntil "Cancel to be pressed" Press "push button" Cancel
WaitUntil "the editor to close" ToldNot 'dialog|.*'
ExpectTold 'frame|Permora|.*|'
kill "$programPid"
WaitForEnd
EndRun
