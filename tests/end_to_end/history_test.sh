#!/usr/bin/env bash
# Changes taken back as a user does it, by keyboard and by mouse.
#   history_test.sh PROGRAM-FOLDER PICTURE-FOLDER light|dark SHOWN-FOLDER MANY-FOLDER
# The folder shown has a folder "Alpha" and a file "letter" with lists of their own; the other one has so many objects that
# a change of them can be cut off.
set -euo pipefail
folder=$(readlink -f "$4") many=$(readlink -f "$5")
# shellcheck source=tests/end_to_end/program.sh
source "$(dirname "$(readlink -f "$0")")/program.sh"
# shellcheck source=tests/end_to_end/editor_by_keyboard.sh
source "$here/editor_by_keyboard.sh"

# Kept: all that is kept of the objects below a folder, byte for byte.
Kept() { (cd "$1" && find . -exec getfattr --no-dereference --dump --match=- --encoding=hex {} + | LC_ALL=C sort -k 3 && find . -printf '%P %U\n' | LC_ALL=C sort); }
IsAsBefore() { [ "$(Kept "$folder")" = "$before" ]; }
IsAsChanged() { [ "$(Kept "$folder")" = "$changed" ]; }

# AnswerUndo OWNER: yes, and the box at its end.
AnswerUndo() {
    Keys alt+y
    WaitForDialog "Permora Information"
    Picture "undone"
    CloseDialog "Permora Information" "$1" Keys Return
}

before=$(Kept "$folder")
BeginRun "$1" "$2" "$3"
StartAssistance
Start "$folder"
WaitForFolder "$folder"
xdotool windowmove --sync "$window" 60 40 windowsize --sync "$window" 1000 620
Step "nothing-to-undo" Keys alt+e Up
Keys Escape Escape

# Two items lose their first entry.
Keys ctrl+a
OpenDialog "Information" ChoosePermissions
Keys Return
WaitForDialog "Security Editor - Alpha"
RemoveFirstEntry
OpenDialog "What will happen" AcceptSheet
Judge "What will happen"
CloseDialog "Security Editor - Alpha" "$window" ApplyAllTheSame
changed=$(Kept "$folder")
[ "$changed" != "$before" ] || Fail "nothing was changed"

# In the address field the key takes back what was typed.
EnterAddressField elsewhere
Keys ctrl+z ctrl+z
HasNoWindow Undo || Fail "the key of the address field has reached the window"
IsAsChanged || Fail "the key of the address field has taken a change back"
ClickAt 500 400 # the list

# By the key.
Step "edit-menu" Keys alt+e Up
Keys Escape Escape
OpenDialog "Undo" Keys ctrl+z
Judge "Undo" alert
CloseDialog "Undo" "$window" Keys alt+n
IsAsChanged || Fail "the user did not want it back"
OpenDialog "Undo" Keys ctrl+z
AnswerUndo "$window"
IsAsBefore || Fail "not all is as it was before"

# In the dialog, by mouse: the undo is the newest change itself, and is taken back.
OpenDialog "History" Keys alt+s h
history=$dialog
ExpectTold 'list item|2, When: .*, Who: .*, What: .*, Objects: .*'
Judge "History"
ClickInTemplate 480 290 60 40 # the first change
Step "objects-of-a-change" Keys alt+o End
dialog=$history
ClickInTemplate 480 290 385 277 # "Undo..."
WaitForDialog "Undo"
AnswerUndo "$history"
IsAsChanged || Fail "the undo was not taken back"
CloseDialog "History" "$window" Keys Escape
OpenDialog "Undo" Keys ctrl+z
AnswerUndo "$window"
IsAsBefore || Fail "not all is as it was before, the second time"
Quit

# A change that is cut off is told at the next start, once.
untouched=$(Kept "$many")
# The first object that is written is seen at once, wherever it stands in the folder.
touch "$work/begin"
IsAtWork() { [ -n "$(find "$many" -type f -newercm "$work/begin" -print -quit)" ]; }
"$programs/permora-cli" reset --yes "$many" >/dev/null 2>&1 &
resetPid=$!
WaitUntil "objects to be written" IsAtWork
kill -KILL $resetPid 2>/dev/null || Fail "the change was over before it could be cut off"
wait $resetPid 2>/dev/null || true

"$programs/permora" "$folder" >>"$work/output" 2>&1 &
programPid=$!
WaitForDialog "Interrupted change"
Picture "interrupted"
Keys alt+y
WaitForDialog "Permora Information"
Picture "interrupted-taken-back"
Keys Return
WaitUntil "the main window" HasWindow Permora
window=$found
WaitUntil "the main window to be active" IsActive "$window"
[ "$(Kept "$many")" = "$untouched" ] || Fail "what was cut off is not as it was before"
Quit
Start "$folder"
Quit
EndRun
