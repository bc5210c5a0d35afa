#!/usr/bin/env bash
# The machine's shares as a user works with them, by keyboard alone or by mouse alone; only names are typed either way. One is
# removed, a folder is shared, and its list is edited.
#   shares_test.sh PROGRAM-FOLDER PICTURE-FOLDER keyboard|mouse FOLDER
# There is a share "beta" and none that begins with "plan". The folder has "plans", which is shared under that name; what then
# stands on the server is judged by whoever made it.
set -euo pipefail
hands=$3 folder=$(readlink -f "$4")
# shellcheck source=tests/end_to_end/program.sh
source "$(dirname "$(readlink -f "$0")")/program.sh"

# ToggleShares ROLE: of the button, which is a box while it is pressed.
ToggleShares() { Work "alt+e h" "$1|List all shared resources"; }
# The dialog begins with the folder's field.
WriteNewShare() {
    Type "$folder/plans"
    Work alt+n "text|Share name"
    Type plans
    Work alt+c "text|Comment"
    Type 'What we want'
    Step "user-limit" Work alt+a "radio button|Allow this number of users"
    Work Tab "text|Number of users"
    Type 12
}

BeginRun "$1" "$2" light
StartAssistance
Start "$folder"
WaitForFolder "$folder"
xdotool windowmove --sync "$window" 60 40 windowsize --sync "$window" 760 480
Settle
Step "details" Work "alt+v d" "menu item|View" "menu item|Details"
Picture "files" "$window"
Step "shared-resources" ToggleShares "push button"

Step "one-share" Work b "list item|beta.*"
OpenDialog "Deletion" Work Delete "push button|Delete"
CloseDialog "Deletion" "$window" Work alt+y "push button|Yes"
Picture "removed"

Step "file-menu" Work alt+f "menu item|File"
OpenDialog "Create a Shared Folder" Work n "menu item|New Share.*"
Step "new-share" WriteNewShare
CloseDialog "Create a Shared Folder" "$window" Accept
Step "the-new-one" Work "p l a n" "list item|plans.*"
OpenDialog "Security Editor - plans" Work alt+p "push button|Permissions"
sheet=$dialog
OpenDialog "Select Account Name" Work "Tab space" "push button|Add..."
Type 'BUILTIN\Users'
Accept
WaitForDialog "Permissions"
Step "full-control" Work "Tab space" "push button|Allow Full control"
CloseDialog "Permissions" "$sheet" Accept
Picture "added" "$sheet"
CloseDialog "Security Editor - plans" "$window" Accept

Step "files-again" ToggleShares "check box"
WaitForFolder "$folder"
Leave
EndRun
