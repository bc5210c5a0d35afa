#!/usr/bin/env bash
# Opens every window that shows something, and changes nothing in any.
#   looks_test.sh PROGRAM-FOLDER PICTURE-FOLDER light|dark FOLDER
# The folder has a folder "Alpha" and a file; the machine has a share "share".
set -euo pipefail
folder=$(readlink -f "$4")
# shellcheck source=tests/end_to_end/program.sh
source "$(dirname "$(readlink -f "$0")")/program.sh"
# shellcheck source=tests/end_to_end/editor_by_keyboard.sh
source "$here/editor_by_keyboard.sh"

NextPage() { Keys ctrl+Tab; }
# Look TITLE OWNER COMMAND...: opens the window, and closes it with Escape.
Look() {
    local title=$1 owner=$2
    shift 2
    OpenDialog "$title" "$@"
    CloseDialog "$title" "$owner" Keys Escape
}
# What the program keeps for itself is its own; the desktop's server has its folder too.
HomeFiles() { find "$HOME" -mindepth 1 ! -path "$XDG_CONFIG_HOME/permora*" ! -path "$XDG_CONFIG_HOME" ! -path "$HOME/.cache*" | sort; }

BeginRun "$1" "$2" "$3"
HomeFiles >"$work/home-before"
Start "$folder"
WaitForFolder "$folder"
xdotool windowmove --sync "$window" 60 40 windowsize --sync "$window" 760 480
Settle
for view in i m l d; do
    Keys alt+v "$view"
    Settle
done
Step "desktop-icons" Keys alt+v u

Step "select-alpha" Keys A
OpenDialog "Security Editor - Alpha" ChoosePermissions
sheet=$dialog
OpenDialog "Select Account Name" PressAdd
Step "accounts" PressFind
CloseDialog "Select Account Name" "$sheet" Keys Escape
Step "owner" NextPage
Step "effective" NextPage
CloseDialog "Security Editor - Alpha" "$window" CancelSheet
Look "Properties - Alpha" "$window" Keys alt+e e
OpenDialog "Security Wizard" Keys alt+w
CloseDialog "Security Wizard" "$window" Keys Escape

Step "drives" Keys alt+e o
Step "shares" Keys alt+e h
Step "select-share" Keys s
OpenDialog "Security Editor - share" ChoosePermissions
CloseDialog "Security Editor - share" "$window" CancelSheet
OpenDialog "Create a Shared Folder" Keys alt+f n
CloseDialog "Create a Shared Folder" "$window" Keys Escape
Look "Properties - looked at" "$window" Keys alt+e e
Keys F5
Settle
Step "files-again" Keys alt+e h
Quit
HomeFiles >"$work/home-after"
diff "$work/home-before" "$work/home-after" >&2 || Fail "the home is another"
EndRun
