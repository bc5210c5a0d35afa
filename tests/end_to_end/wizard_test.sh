#!/usr/bin/env bash
# The security wizard as a user works it with the keyboard: three runs that give accounts rights, and one that deletes.
#   wizard_test.sh PROGRAM-FOLDER PICTURE-FOLDER SHOWN-FOLDER
# The folder shown has "Alpha", which inherits a denial for guests and full control for administrators, "Beta", "letter"
# and "Old" with a file that cannot be deleted; what then stands there is judged by whoever made it.
set -euo pipefail
folder=$(readlink -f "$3")
# shellcheck source=tests/end_to_end/program.sh
source "$(dirname "$(readlink -f "$0")")/program.sh"

# OwnEntries LINE...: what the first item has now, each as its type, SID and mask.
OwnEntries() {
    local entries
    entries=$("$programs/permora-cli" show --json "$folder/Alpha" | awk -F '"' '
        /"type"/ { type = $4 }
        /"sid"/ { sid = $4 }
        /"mask"/ { mask = $4 }
        /"inherited": false/ { print type, sid, mask }')
    [ "$entries" = "$(printf '%s\n' "$@")" ] || Fail "Alpha has $entries"
}

OpenWizard() {
    OpenDialog "Security Wizard" Keys alt+w
    sheet=$dialog
}
Finish() { CloseDialog "Security Wizard" "$window" Keys Return; }

# The permissions page begins in its accounts; Add, Remove where it is enabled, the combinations and the rights follow.
# After each of these the keyboard is where it was said to be.

# From the rights, to the combinations and back. Take NUMBER.
Take() { Keys shift+Tab Home && Times "$1" Down && Keys space Tab; }
# From the accounts, to the rights: with Remove disabled, or enabled.
GoToRights() { Times 3 Tab; }
GoToRightsPastRemove() { Times 4 Tab; }
# In the rights. Toggle NUMBER.
Toggle() { Keys Home && Times "$1" Down && Keys space; }
# From the rights of an account that can be removed, to those of another, by name.
Add() {
    Times 3 shift+Tab
    OpenDialog "Select Account Name" Keys space
    xdotool type --delay 10 "$1"
    CloseDialog "Select Account Name" "$sheet" Keys Return
}

BeginRun "$1" "$2" light
StartAssistance
Start "$folder"
WaitForFolder "$folder"
Step "details" Keys alt+v d
Step "all-items" Keys ctrl+a

OpenWizard
Picture "task"
OpenDialog "Information" Keys Return
CloseDialog "Information" "$sheet" Keys space Tab Return
Picture "permissions"
GoToRightsPastRemove
Take 6                          # Users: Write
Times 4 shift+Tab && Keys Down  # Guests, who inherit: Remove is disabled now
GoToRights
Take 2                          # Modify
Times 3 shift+Tab && Keys Down  # Administrators
GoToRights
Take 1                          # Deny all
# Remove is still disabled here.
Times 2 shift+Tab
OpenDialog "Select Account Name" Keys space
xdotool type --delay 10 Everyone
CloseDialog "Select Account Name" "$sheet" Keys Return
Take 5                          # Read
Add "Authenticated Users"
Take 3                          # Read & execute
Add "SYSTEM"
Take 0                          # Allow all
Add "Backup Operators"
Take 4                          # List folder
Settle
Picture "assigned"
Finish
common=("Allow S-1-1-0 0x20089" "Allow S-1-5-11 0x200a9" "Allow S-1-5-18 0xf01ff" "Allow S-1-5-32-551 0x200a9")
OwnEntries "Deny S-1-5-32-544 0xf01ff" "Allow S-1-5-32-545 0x116" "Allow S-1-5-32-546 0x301bf" "${common[@]}"

# No notice now, and all items are still selected. What was denied to administrators is theirs again but for the ownership;
# Users go.
OpenWizard
Step "administrators" Keys Return
GoToRights
Take 0
Toggle 13
Times 3 shift+Tab && Keys Down  # Users
Step "users-go" Keys Tab Tab space
Times 2 shift+Tab && Keys Down  # Guests
GoToRights
Toggle 10
Settle
Picture "cleared"
Finish
OwnEntries "Deny S-1-5-32-544 0x80000" "Allow S-1-5-32-546 0x201bf" "${common[@]}"

# Both set again.
OpenWizard
Step "denied" Keys Return
GoToRights
Toggle 13
Times 3 shift+Tab && Keys Down
GoToRights
Toggle 10
Settle
Picture "set-again"
Finish

Step "old-files" Keys Home O
OpenWizard
Step "other-task" Keys Down
OpenDialog "Secure deletion" Keys Return
CloseDialog "Secure deletion" "$sheet" Keys alt+y
WaitUntil "the deletion" test ! -e "$folder/Old/draft"
Picture "deleted"
ExpectTold 'push button|Failures...||' # at the end
ExpectTold 'list item|.*kept.*|.*'
Judge "Security Wizard"
OpenDialog "What happened" Keys alt+i
ExpectTold 'list item|kept, Result: .*, Reason: .*, Path: .*|.*'
Judge "What happened"
CloseDialog "What happened" "$sheet" Keys Escape
Finish

Quit
EndRun
