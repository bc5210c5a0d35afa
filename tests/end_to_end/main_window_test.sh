#!/usr/bin/env bash
# The program from its start to its end as a user sees it, on a screen of its own:
#   main_window_test.sh PROGRAM-FOLDER PICTURE-FOLDER light|dark
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
# shellcheck source=tests/end_to_end/desktop.sh
source "$here/desktop.sh"

# For builds that look for leaks at their end.
export LSAN_OPTIONS="suppressions=$here/leaks.supp:print_suppressions=0"

programs=$(readlink -f "$1")
pictures=$2/$3
colours=$3
rm -rf "$pictures"
mkdir -p "$pictures"
work=$(mktemp -d)
programPid=
CleanUp() {
    [ -z "$programPid" ] || kill "$programPid" 2>/dev/null || true
    StopDesktop
    rm -rf "$work"
}
desktopPids=()
trap CleanUp EXIT

# Fixed times and sizes, so that the orders of the columns differ.
MakeData() {
    mkdir -p "$1"/{Alpha/Inner,Beta,Überblick}
    printf 'x%.0s' {1..5000} >"$1/budget.txt"
    printf 'short' >"$1/zebra.html"
    printf 'middle%.0s' {1..100} >"$1/notes.png"
    : >"$1/archive.zip"
    printf '日本語' >"$1/日本語.txt"
    touch -d '2020-01-01 10:00' "$1/zebra.html"
    touch -d '2024-05-01 10:00' "$1/archive.zip"
    touch -d '2022-03-01 10:00' "$1/budget.txt" "$1/notes.png" "$1/日本語.txt" "$1"/{Alpha,Beta,Überblick}
}

# Same NAME NAME: fails unless the two pictures show the same, but for a few pixels at the edges of the address bar, which
# the window manager's frame may shift by one.
Same() {
    local one other pixels
    one=$(ls "$pictures"/*-"$1".png) other=$(ls "$pictures"/*-"$2".png)
    pixels=$(compare -metric AE "$one" "$other" null: 2>&1 || true)
    [ "$pixels" -lt 400 ] || Fail "$1 and $2 differ in $pixels pixels"
}

# Start [FOLDER]: until its window can be used.
Start() {
    "$programs/permora" "$@" >>"$work/output" 2>&1 &
    programPid=$!
    WaitUntil "the main window" HasWindow Permora
    window=$found
    WaitUntil "the main window to be active" IsActive "$window"
    Settle
}

HasEnded() { ! kill -0 "$programPid" 2>/dev/null; }
WaitForEnd() {
    local status=0
    WaitUntil "the program to end" HasEnded
    wait "$programPid" || status=$?
    programPid=
    [ "$status" = 0 ] || Fail "the program ended with $status: $(cat "$work/output")"
}

# The folder shown is the program's current directory.
Shows() { [ "$(readlink "/proc/$programPid/cwd")" = "$1" ]; }
WaitForFolder() { WaitUntil "the folder $1" Shows "$1"; }

# StoredByte OFFSET: of the settings record.
StoredByte() {
    local hex bytes
    hex=$(sed -n '/^"ProgramSettings"=hex:/,/[^\\]$/p' "$XDG_CONFIG_HOME/permora/registry.reg" |
        sed 's/^"ProgramSettings"=hex://' | tr -d ' \\\n')
    IFS=, read -r -a bytes <<<"$hex"
    echo $(((~0x${bytes[$1]} ^ 0xA7) & 255))
}
Stored() { [ "$(StoredByte "$1")" = "$2" ] || Fail "byte $1 of the settings is $(StoredByte "$1"), not $2"; }

Geometry() { xdotool getwindowgeometry --shell "$window" | grep -E '^(X|Y|WIDTH|HEIGHT)='; }
DoubleClickTitle() {
    local left top
    left=$(xwininfo -id "$window" | sed -n 's/.*Absolute upper-left X: *//p')
    top=$(xwininfo -id "$window" | sed -n 's/.*Absolute upper-left Y: *//p')
    xdotool mousemove --sync $((left + 250)) $((top - 8)) click --repeat 2 --delay 50 1
}
IsMaximised() { xprop -id "$window" _NET_WM_STATE | grep -q MAXIMIZED_HORZ; }
HasGeometry() { [ "$(Geometry)" = "$1" ]; }

TypeLocation() {
    ClickAt "${addressField[@]}"
    Keys ctrl+a
    xdotool type --delay 20 "$1"
    Keys Return
}

OpenDialog() { # TITLE KEY...
    local title=$1
    shift
    Keys "$@"
    WaitUntil "the window \"$title\"" HasWindow "$title"
    dialog=$found
    WaitUntil "\"$title\" to be active" IsActive "$dialog"
}
CloseDialog() { # TITLE KEY
    Keys "$2"
    WaitUntil "\"$1\" to close" HasNoWindow "$1"
    WaitUntil "the main window to be active again" IsActive "$window"
}

# Places in the window, in pixels from its top left corner: menu, toolbar with address field, list.
addressField=(700 40)
headers=(60 210 360 510)
headerLine=72
# In the settings dialog.
toolTipsBox=(217 88)

data=$work/data
MakeData "$data"
StartDesktop "$work/home" "$colours"
"$programs/permora-cli" setup "$programs" >/dev/null

# Without the installation the program says what is missing, and ends.
XDG_CONFIG_HOME=$work/home/nowhere "$programs/permora" >>"$work/output" 2>&1 &
programPid=$!
WaitUntil "the message about settings" HasWindow "Permora Error"
Settle
Picture "not-installed"
Keys Return
WaitForEnd

Start "$data"
WaitForFolder "$data"
Picture "folder-of-the-command-line"
xdotool windowmove --sync "$window" 60 40 windowsize --sync "$window" 1000 620
Settle

Step "enter-a-folder" Keys A Return
WaitForFolder "$data/Alpha"
Step "back" Keys alt+e b
WaitForFolder "$data"
Step "forward" Keys alt+e f
WaitForFolder "$data/Alpha"
Step "up" Keys BackSpace
WaitForFolder "$data"
Step "go-to-root" Keys alt+e o
Step "type-a-location" TypeLocation "$data/Alpha"
WaitForFolder "$data/Alpha"
Step "type-a-relative-location" TypeLocation ..
WaitForFolder "$data"

Step "view-small-icons" Keys alt+v m
Step "view-list" Keys alt+v l
Step "view-icons" Keys alt+v i
Step "view-details" Keys alt+v d
for column in 1 2 3 0; do
    Step "sort-by-column-$column" ClickAt "${headers[$column]}" "$headerLine"
done
Step "desktop-icons" Keys alt+v u

OpenDialog "Permora Settings" alt+f s
Settle
Picture "settings-dialog"
ClickIn "$dialog" "${toolTipsBox[@]}"
CloseDialog "Permora Settings" Return
Stored 37 0
Stored 36 0
OpenDialog "About ZEL" alt+h a
Settle
Picture "about-box"
CloseDialog "About ZEL" Escape

Keys F5
Settle
Picture "before-the-end"
place=$(Geometry)
Keys Escape
WaitForEnd
Stored 16 1 # not maximised
Stored 32 3 # Details

# The next start: place, view, icons and tool tips are as they were.
Start "$data"
WaitUntil "the window to be where it was" HasGeometry "$place"
Keys F5
Settle
Picture "started-again"
Same before-the-end started-again
Step "maximised" DoubleClickTitle
Keys Escape
WaitForEnd
Stored 16 3
Start "$data"
WaitUntil "the window to be maximised" IsMaximised
Settle
Picture "started-maximised"
Step "as-large-as-before" DoubleClickTitle
WaitUntil "the window to be where it was" HasGeometry "$place"
Keys Escape
WaitForEnd

[ ! -s "$work/output" ] || Fail "the program wrote: $(cat "$work/output")"
echo "Passed; the pictures are in $pictures"
