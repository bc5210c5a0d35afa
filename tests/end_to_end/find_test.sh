#!/usr/bin/env bash
# A search and the window of its results as a user works them, by keyboard and by mouse.
#   find_test.sh PROGRAM-FOLDER PICTURE-FOLDER light|dark SHOWN-FOLDER
# The folder shown has a folder "Alpha" in whose list Guests (S-1-5-32-546) is, and in it a file "inner" that inherits that.
set -euo pipefail
folder=$(readlink -f "$4")
# shellcheck source=tests/end_to_end/program.sh
source "$(dirname "$(readlink -f "$0")")/program.sh"

TypeText() { xdotool type --delay 20 "$1"; }
# FindGuests: in the dialog, which shows the field for the account first.
FindGuests() {
    TypeText S-1-5-32-546
    Keys Return
    WaitUntil "the window of results" HasWindowLike "Find - "
    results=$found
    WaitUntil "the window of results to be active" IsActive "$results"
    ExpectTold 'list item|inner, Folder: .*'
    Settle
}
HasNoResults() { ! HasWindowLike "Find - "; }

BeginRun "$1" "$2" "$3"
StartAssistance
Start "$folder"
WaitForFolder "$folder"
xdotool windowmove --sync "$window" 20 20 windowsize --sync "$window" 700 500

# By keyboard: from the menu, the editor on what was found, and the file that the terminal program prints.
OpenDialog "Find" Keys alt+s f
FindGuests
Picture "found"
Keys Down
OpenDialog "Security Editor - inner" Keys Return
CloseDialog "Security Editor - inner" "$results" Keys Escape
OpenDialog "Save results" Keys ctrl+s
TypeText "$work/found.json"
Keys Return
WaitUntil "the file" test -s "$work/found.json"
WaitUntil "the window of results to be active" IsActive "$results"
"$programs/permora-cli" find "C:${folder//\//\\}" --account S-1-5-32-546 --json >"$work/expected.json"
cmp "$work/found.json" "$work/expected.json" || Fail "the file is not what the terminal program prints"
Keys ctrl+w
WaitUntil "the window of results to close" HasNoResults
WaitUntil "the main window to be active" IsActive "$window"

# By mouse: the object in its folder, from the context menu. The window goes with the main window.
OpenDialog "Find" Keys ctrl+f
FindGuests
Step "context-menu" ClickIn "$results" 60 95 3
Step "context-menu-entry" Keys Down
Step "show-in-folder" Keys Down Return
WaitForFolder "$folder/Alpha"
WaitUntil "the main window to be active" IsActive "$window"
Quit
EndRun
