#!/usr/bin/env bash
# Opens every window that shows something, and changes nothing in any. Each is read as assistive technology reads it, and gone
# through by the keyboard.
#   looks_test.sh PROGRAM-FOLDER PICTURE-FOLDER light|dark FOLDER
# The folder has a folder "Alpha", a link "link" and a file "text.txt"; the machine has a share "share".
set -euo pipefail
folder=$(readlink -f "$4")
# shellcheck source=tests/end_to_end/program.sh
source "$(dirname "$(readlink -f "$0")")/program.sh"
# shellcheck source=tests/end_to_end/editor_by_keyboard.sh
source "$here/editor_by_keyboard.sh"

NextPage() { Keys ctrl+Tab; }
# Look ROLE TITLE OWNER COMMAND...: opens the window, judges it, and closes it with Escape.
Look() {
    local role=$1 title=$2 owner=$3
    shift 3
    OpenDialog "$title" "$@"
    Judge "$(xdotool getwindowname "$dialog")" "$role"
    CloseDialog "$title" "$owner" Keys Escape
}
# LookAtResults QUESTION COMMAND...: the question, which the command answers, and the window of its results.
LookAtResults() {
    local title=$1
    shift
    Judge "$title"
    "$@"
    WaitForDialog "$title - .*"
    ExpectTold 'list item|.*text.txt, .*'
    ExpectTold 'push button|Stop|disabled|'
    Judge "$(xdotool getwindowname "$dialog")" frame
    CloseDialog "$title - .*" "$window" Keys ctrl+w
}
FindDaemon() { xdotool type --delay 20 daemon && Keys Return; }
ShowProperties() { Keys alt+e e; }
# What the program keeps for itself is its own; the desktop's server has its folders too, and so has the bus.
HomeFiles() {
    find "$HOME" -mindepth 1 ! -path "$XDG_CONFIG_HOME/permora*" ! -path "$XDG_CONFIG_HOME" ! -path "$HOME/.cache*" \
        ! -path "$XDG_RUNTIME_DIR/*" | sort
}
# Every dialog is judged here or where it changes something, but for the walks that reset a tree, delete or undo,
# which are over too soon.
ExpectAllJudged() {
    local caption
    while read -r caption; do
        # An alert of the same title is a message box.
        grep -E "(Judge|Look).* \"$caption" "$here"/*_test.sh | grep -qvE 'Look alert|" alert' || Fail "nobody judges \"$caption\""
    done < <(sed -n 's/^CAPTION "\(.*\)"$/\1/p' "$here/../../src/resources/dialogs.rc" | grep -vxE 'Applying settings|Secure deletion|Undo')
}

ExpectAllJudged
BeginRun "$1" "$2" "$3"
StartAssistance
HomeFiles >"$work/home-before"
Start "$folder"
WaitForFolder "$folder"
xdotool windowmove --sync "$window" 60 40 windowsize --sync "$window" 900 480
Settle
for view in i m l d; do
    Keys alt+v "$view"
    Settle
done
Step "desktop-icons" Keys alt+v u
Judge Permora frame
Step "folder-tree" Keys alt+v f
Judge Permora frame
Step "folder-tree-gone" Keys alt+v f

# The editor, of one item.
Keys A
ExpectTold 'list item|Alpha.*|.*selected|.*'
OpenDialog "Security Editor - Alpha" ChoosePermissions
sheet=$dialog
Judge "Security Editor - Alpha" dialog "Permissions"
OpenDialog "Permora Help" Keys F1 # beside the sheet, which is modal
Judge "Permora Help"
CloseDialog "Permora Help" "$sheet" Keys Escape
ExpectTold 'list item|Allow, Name: .*daemon, Permission: Full control, Inheritance: .*, Apply To: This folder, .*|.*'
ExpectTold 'check box|Inherit from parent .*|checked|'
OpenDialog "Select Account Name" PressAdd
Step "accounts" PressFind
ExpectTold 'list item|Everyone, Type: Well-known account|.*'
Judge "Select Account Name"
CloseDialog "Select Account Name" "$sheet" Keys Escape
OpenDialog "Select Account Name" Keys space
TypeAccount Everyone
WaitForDialog "Permissions"
Judge "Permissions"
ExpectTold 'text|Name|editable,disabled|Everyone'
CloseDialog "Permissions" "$sheet" Keys Escape
Step "owner" NextPage
Judge "Security Editor - Alpha" dialog "Owner"
Step "effective" NextPage
OpenDialog "Select Account Name" Keys Tab space
TypeAccount daemon
WaitUntil "the sheet to be active" IsActive "$sheet"
ExpectTold 'list item|Traverse folder .*|checked|'
ExpectTold 'list item|Over .*share.*'
Settle
Judge "Security Editor - Alpha" dialog "Effective Permissions"
ExpectTold 'text|Account name|.*|.*daemon'
Look dialog "Why" "$sheet" Keys alt+w
CloseDialog "Security Editor - Alpha" "$window" CancelSheet

# Of several.
Keys ctrl+a
OpenDialog "Information" ChoosePermissions
Judge "Information"
Keys Return
WaitForDialog "Security Editor - Alpha"
sheet=$dialog
Step "removed" RemoveFirstEntry
OpenDialog "What will happen" Keys alt+v
ExpectTold 'push button|Stop|disabled|'
Judge "What will happen"
CloseDialog "What will happen" "$sheet" Keys Escape
Step "effective-of-several" Keys ctrl+Tab ctrl+Tab
OpenDialog "Compare accounts" Keys alt+c
compared=$dialog
OpenDialog "Select Account Name" Keys alt+a
TypeAccount daemon
WaitUntil "the comparison to be active" IsActive "$compared"
ExpectTold 'list item|.*daemon, Traverse folder / Execute file: .*, Take ownership: .*|.*'
Settle
Judge "Compare accounts"
CloseDialog "Compare accounts" "$sheet" Keys Escape
CloseDialog "Security Editor - Alpha" "$window" CancelSheet

for item in Alpha link text.txt; do
    Step "select-$item" Keys "${item:0:1}"
    Look dialog "Properties - $item" "$window" ShowProperties
done
Look dialog "File Attributes - text.txt" "$window" Keys alt+e a
Look dialog "Rename" "$window" Keys F2
Look dialog "New Folder" "$window" Keys alt+f n
Look dialog "Permora Settings" "$window" Keys alt+f s
Look dialog "About ZEL" "$window" Keys alt+h a
Look alert "Secure deletion" "$window" Keys ctrl+Delete
OpenDialog "Find" Keys ctrl+f
LookAtResults "Find" FindDaemon
OpenDialog "Report" Keys alt+s r
LookAtResults "Report" Keys Return
OpenDialog "Security Wizard" Keys alt+w
Judge "Security Wizard"
Step "permissions-assignment" Keys Return
Judge "Security Wizard"
CloseDialog "Security Wizard" "$window" Keys Escape

Step "drives" Keys alt+e o
Judge Permora frame
Step "select-drive" Keys End
Look dialog "Properties - .*" "$window" ShowProperties
Step "shares" Keys alt+e h
Step "select-share" Keys s
ExpectTold 'list item|share, .*'
Judge Permora frame
Step "select-share-again" Keys s
OpenDialog "Security Editor - share" ChoosePermissions
Judge "Security Editor - share" dialog "Permissions"
CloseDialog "Security Editor - share" "$window" CancelSheet
Look dialog "Create a Shared Folder" "$window" Keys alt+f n
Look dialog "Properties - looked at" "$window" ShowProperties
Keys F5
Settle
Step "files-again" Keys alt+e h
Quit
HomeFiles >"$work/home-after"
diff "$work/home-before" "$work/home-after" >&2 || Fail "the home is another"
EndRun
