#!/usr/bin/env bash
# The machine's shares as a user works with them, by keyboard: one is removed, a folder is shared, and its list is edited.
#   shares_test.sh PROGRAM-FOLDER PICTURE-FOLDER light|dark FOLDER
# There is a share "beta" and none that begins with "plan". The folder has "plans", which is shared under that name; what then
# stands on the server is judged by whoever made it.
set -euo pipefail
folder=$(readlink -f "$4")
# shellcheck source=tests/end_to_end/program.sh
source "$(dirname "$(readlink -f "$0")")/program.sh"
# shellcheck source=tests/end_to_end/editor_by_keyboard.sh
source "$here/editor_by_keyboard.sh"

ToggleShares() { Keys alt+e h; }
TypeText() { xdotool type --delay 20 "$1"; }
# The dialog begins with the folder's field.
WriteNewShare() {
    TypeText "$folder/plans"
    Keys alt+n
    TypeText plans
    Keys alt+c
    TypeText 'What we want'
    Step "user-limit" Keys alt+a
    Keys Tab
    TypeText 12
}

BeginRun "$1" "$2" "$3"
Start "$folder"
WaitForFolder "$folder"
xdotool windowmove --sync "$window" 60 40 windowsize --sync "$window" 760 480
Settle
Step "details" Keys alt+v d
Picture "files" "$window"
Step "shared-resources" ToggleShares

Step "one-share" Keys b
OpenDialog "Deletion" Keys Delete
CloseDialog "Deletion" "$window" AnswerYes
Picture "removed"

Step "file-menu" Keys alt+f
OpenDialog "Create a Shared Folder" Keys n
Step "new-share" WriteNewShare
CloseDialog "Create a Shared Folder" "$window" Keys Return
Step "the-new-one" Keys p l a n
OpenDialog "Security Editor - plans" ChoosePermissions
sheet=$dialog
OpenDialog "Select Account Name" PressAdd
TypeAccount 'BUILTIN\Users'
WaitForDialog "Permissions"
Step "full-control" TickAllowFullControl
CloseDialog "Permissions" "$sheet" AcceptEntry
Picture "added" "$sheet"
CloseDialog "Security Editor - plans" "$window" AcceptSheet

Step "files-again" ToggleShares
WaitForFolder "$folder"
Quit
EndRun
