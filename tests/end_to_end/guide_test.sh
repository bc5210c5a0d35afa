#!/usr/bin/env bash
# The tasks of docs/guide.md as a user does them, by keyboard alone or by mouse alone; only names are typed either way. What the
# editor, the shares and the wizard's other pages do is in the scripts of these.
#   guide_test.sh PROGRAM-FOLDER PICTURE-FOLDER keyboard|mouse SHOWN-FOLDER
# The folder shown has a folder "Alpha", in whose list Guests are, with a file "inner" that inherits that, and files "draft" and
# "letter"; what then stands there is judged by whoever made it.
set -euo pipefail
hands=$3 folder=$(readlink -f "$4")
# shellcheck source=tests/end_to_end/program.sh
source "$(dirname "$(readlink -f "$0")")/program.sh"

# SelectItem LETTER NAME: an item of the main window.
SelectItem() { Step "select-$2" Work "$1" "list item|$2.*"; }
Open() { if [ "$hands" = keyboard ]; then Keys "$1" Return; else ClickOn "list item|$2.*" --repeat 2 --delay 50 1; fi; }
# ChooseAccount NAME OWNER COMMAND...: in the dialog that the command opens.
ChooseAccount() {
    OpenDialog "Select Account Name" "${@:3}"
    Type "$1"
    CloseDialog "Select Account Name" "$2" Accept
}
Cancel() { Work Escape "push button|Cancel"; }
CloseResults() { Work ctrl+w "menu item|File" "menu item|Close.*"; }
Exists() { [ -e "$1" ]; }
IsGone() { [ ! -e "$1" ]; }
IsIdle() { HasNoWindow "File Operation Progress" && IsActive "$window"; }

BeginRun "$1" "$2" light
StartAssistance
Start "$folder"
WaitForFolder "$folder"
xdotool windowmove --sync "$window" 60 40 windowsize --sync "$window" 1000 620
Settle
Step "details" Work "alt+v d" "menu item|View" "menu item|Details"

# The owner.
SelectItem l letter
OpenDialog "Security Editor - letter" Work alt+p "push button|Permissions"
sheet=$dialog
Step "owner" Work ctrl+Tab "page tab|Owner"
ChooseAccount daemon "$sheet" Work alt+o "push button|Other account..."
CloseDialog "Security Editor - letter" "$window" Accept

# The wizard, and what the account may then do.
before=$("$programs/permora-cli" show --sddl "$folder/Alpha")
SelectItem a Alpha
OpenDialog "Security Wizard" Work alt+w "push button|Security Wizard"
sheet=$dialog
Step "assignment" Work Return "push button|Next.*"
ChooseAccount Everyone "$sheet" Work "Tab space" "push button|Add..."
Step "read" Work "shift+Tab Home Down Down Down Down Down space" "list item|Read"
CloseDialog "Security Wizard" "$window" Work Return "push button|Finish"
OpenDialog "Security Editor - Alpha" Work alt+p "push button|Permissions"
sheet=$dialog
Step "effective" Work "ctrl+Tab ctrl+Tab" "page tab|Effective Permissions"
ChooseAccount Everyone "$sheet" Work "Tab space" "push button|Change..."
ExpectTold 'list item|Read permissions|checked|'
ExpectTold 'list item|Delete||'
CloseDialog "Security Editor - Alpha" "$window" Cancel

# The way back.
[ "$("$programs/permora-cli" show --sddl "$folder/Alpha")" != "$before" ] || Fail "the wizard has changed nothing"
OpenDialog "Undo" Work ctrl+z "menu item|Edit" "menu item|Undo .*"
Work alt+y "push button|Yes"
WaitForDialog "Permora Information"
CloseDialog "Permora Information" "$window" Accept
[ "$("$programs/permora-cli" show --sddl "$folder/Alpha")" = "$before" ] || Fail "the change was not taken back"

# A search, and a report.
OpenDialog "Find" Work ctrl+f "menu item|Security" "menu item|Find.*"
Type Guests
Work Return "push button|Find"
WaitForDialog "Find - .*"
results=$dialog
OpenDialog "Security Editor - inner" Work "i Return" "list item|inner.*" "push button|Permissions..."
CloseDialog "Security Editor - inner" "$results" Cancel
CloseDialog "Find - .*" "$window" CloseResults
OpenDialog "Report" Work "alt+s r" "menu item|Security" "menu item|Report.*"
Work Return "push button|Report"
WaitForDialog "Report - .*"
Step "accounts" Work "alt+v a" "menu item|View" "menu item|Accounts"
ExpectTold 'list item|BUILTIN.Guests, .*'
CloseDialog "Report - .*" "$window" CloseResults

# Files.
SelectItem l letter
Work ctrl+c "push button|Copy"
Open a Alpha
WaitForFolder "$folder/Alpha"
Settle
Work ctrl+v "push button|Paste"
WaitUntil "the copy" Exists "$folder/Alpha/letter"
WaitUntil "the operation to end" IsIdle
Settle # what was pasted is selected
OpenDialog "Rename" Work F2 "menu item|Edit" "menu item|Rename.*"
Type copy
CloseDialog "Rename" "$window" Accept
OpenDialog "New Folder" Work "alt+f n" "menu item|File" "menu item|New Folder.*"
Type New
CloseDialog "New Folder" "$window" Accept
SelectItem i inner
OpenDialog "File Operation Progress" Work Delete "push button|Delete"
CloseDialog "File Operation Progress" "$window" Work alt+m "push button|Move.*"
WaitUntil "the file to be in the trash" IsGone "$folder/Alpha/inner"
WaitUntil "the operation to end" IsIdle
Work BackSpace "push button|Up"
WaitForFolder "$folder"
Settle

# For good.
SelectItem d draft
OpenDialog "Secure deletion" Work ctrl+Delete "push button|Secure deletion"
CloseDialog "Secure deletion" "$window" Work alt+y "push button|Yes"
WaitUntil "the file to be deleted" IsGone "$folder/draft"

# Settings: tool tips are off, which the program shows by itself.
OpenDialog "Permora Settings" Work "alt+f s" "push button|Settings"
Step "no-tool-tips" Work "Tab Tab space" "check box|Show tool tips"
CloseDialog "Permora Settings" "$window" Accept
OpenDialog "Permora Settings" Work "alt+f s" "push button|Settings"
ExpectTold 'check box|Show tool tips|.*'
! Told 'check box|Show tool tips|.*checked.*' || Fail "tool tips are still shown"
CloseDialog "Permora Settings" "$window" Cancel
Leave
EndRun
