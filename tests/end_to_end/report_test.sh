#!/usr/bin/env bash
# A report of a tree made, looked through and saved by keyboard alone.
#   report_test.sh PROGRAM-FOLDER PICTURE-FOLDER light|dark SHOWN-FOLDER SAVED-FOLDER
# The folder shown has folders with lists of their own; the report is saved in the other one.
set -euo pipefail
folder=$(readlink -f "$4") saved=$(readlink -f "$5")
# shellcheck source=tests/end_to_end/program.sh
source "$(dirname "$(readlink -f "$0")")/program.sh"

# A report without the time at which it was made.
WithoutTime() { sed -E 's/[0-9-]{10}T[0-9:]{8}Z//' "$1"; }

full=$("$1/permora-cli" report "$folder" --json | sed -nE 's/.*"fullPath":"([^"]*)".*/\1/p' | head -1 | sed 's/\\\\/\\/g')
"$1/permora-cli" report "$full" --html "$saved/terminal.html"

BeginRun "$1" "$2" "$3"
Start "$folder"
WaitForFolder "$folder"
OpenDialog "Report" Keys alt+s r
asked=$dialog
Keys alt+l
xdotool type --delay 20 x
OpenDialog "Permora Error" Keys Return
CloseDialog "Permora Error" "$asked" Keys Return
Keys alt+l BackSpace Return
WaitForDialog "Report - .*"
report=$dialog
xdotool windowmove --sync "$report" 20 30 windowsize --sync "$report" 1230 600
Settle
Picture "folders"
Step "objects" Keys alt+v o
Step "accounts" Keys alt+v a
Step "folders-again" Keys alt+v f
# What the window saves is what the terminal program writes.
OpenDialog "Save results" Keys ctrl+s
xdotool type --delay 20 "$saved/window"
CloseDialog "Save results" "$report" Keys Return
WaitUntil "the page" test -s "$saved/window.html"
cmp <(WithoutTime "$saved/window.html") <(WithoutTime "$saved/terminal.html") || Fail "the window has saved another report"
CloseDialog "Report - .*" "$window" Keys ctrl+w
Quit
EndRun
