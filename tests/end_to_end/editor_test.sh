#!/usr/bin/env bash
# The security editor as a user works it: two folders get a list, and all below them is reset to inherit it.
#   editor_test.sh PROGRAM-FOLDER PICTURE-FOLDER SHOWN-FOLDER keyboard|mouse
# The folder shown has "Alpha", which inherits an entry, and "Beta" with something below; the lists that it then has are
# judged by whoever made it.
set -euo pipefail
folder=$(readlink -f "$3")
# shellcheck source=tests/end_to_end/program.sh
source "$(dirname "$(readlink -f "$0")")/program.sh"
# The hands: all functions that are called here and stand in none of the files before.
# shellcheck source=/dev/null
source "$here/editor_by_$4.sh"

# Whether every entry of what is below the two folders is an inherited one.
IsReset() {
    local lists
    lists=$(find "$folder"/{Alpha,Beta} -mindepth 1 -exec "$programs/permora-cli" show --sddl {} +) || return 1
    [ -n "$lists" ] && ! grep -o '([^)]*)' <<<"$lists" | grep -vE '^\([A-Z]+;[A-Z]*ID;'
}

BeginRun "$1" "$2" light
StartAssistance
Start "$folder"
WaitForFolder "$folder"
xdotool windowmove --sync "$window" 60 40 windowsize --sync "$window" 760 480
Settle
ShowInOrder
Step "two-folders" SelectFolders

OpenDialog "Information" ChoosePermissions
Step "not-again" TickDoNotShowAgain
CloseNotice
WaitForDialog "Security Editor - Alpha"
sheet=$dialog
Picture "sheet"

OpenDialog "Inherited entries" ClickInherit
CloseDialog "Inherited entries" "$sheet" AnswerYes
Picture "copied"

OpenDialog "Select Account Name" PressAdd
Step "found" PressFind
Step "chosen" ChooseFoundAccount
AcceptAccount
WaitForDialog "Permissions"
Picture "new-entry"
Step "full-control" TickAllowFullControl
Step "deny-delete" TickDenyDelete
CloseDialog "Permissions" "$sheet" AcceptEntry
Picture "added"
ExpectTold 'dialog|Security Editor - Alpha|active,modal|'
ExpectTold 'list item|Deny, Name: .*, Permission: Delete, .*, Apply To: This folder, subfolders and files|.*selected|'
ExpectTold 'list item|Allow, Name: .*, Permission: Full control, .*, Apply To: This folder, subfolders and files||'

OpenDialog "Select Account Name" PressAdd
TypeAccount Everyone
WaitForDialog "Permissions"
entry=$dialog
OpenDialog "Select Account Name" PressChange
TypeAccount 'BUILTIN\Guests'
WaitUntil "the entry again" IsActive "$entry"
Settle
dialog=$entry
Step "read-attributes" TickAllowReadAttributes
Step "files-only" ChooseFilesOnly
CloseDialog "Permissions" "$sheet" AcceptEntry
Picture "added-by-name"

Step "replace" TickReplace
ExpectTold 'check box|Replace permission entries on all .*|.*checked|'
ExpectTold 'check box|Inherit from parent the .*||'
# Entries of the second folder and of what is below would be lost.
OpenDialog "What will happen" PressApply
ExpectTold 'list item|Items: would change: 2, .*|.*|'
CloseDialog "What will happen" "$sheet" ApplyAllTheSame
WaitUntil "all below to inherit" IsReset
WaitUntil "the walk's dialog to close" HasNoWindow "Applying settings"
WaitUntil "the sheet to be active" IsActive "$sheet"
ExpectTold 'push button|Apply|disabled|'
ExpectTold '.*Kept .*' # who obeys the list is told when that has been found out
Settle
Picture "read-again" "$sheet"
CloseDialog "Security Editor - Alpha" "$window" CancelSheet

# No notice now; the sheet shows what it showed after the apply.
OpenDialog "Security Editor - Alpha" ChoosePermissions
sheet=$dialog
PictureLike "opened-again" "read-again" "$sheet"
Step "remove" RemoveFirstEntry
OpenDialog "Permissions" EditFirstEntry
Step "clear-all" PressClearAll
Step "read-permissions" TickAllowReadPermissions
Step "children-only" TickChildrenOnly
CloseDialog "Permissions" "$sheet" AcceptEntry
Picture "edited"
CloseDialog "Security Editor - Alpha" "$window" AcceptSheet

Quit
EndRun
