#!/usr/bin/env bash
# The program from its start to its end as a user sees it, on a screen of its own:
#   main_window_test.sh PROGRAM-FOLDER PICTURE-FOLDER light|dark
set -euo pipefail
# shellcheck source=tests/end_to_end/program.sh
source "$(dirname "$(readlink -f "$0")")/program.sh"

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
# FindCorner: the client area's left and top edge on the screen, into $left and $top.
FindCorner() { read -r left top <<<"$(xwininfo -id "$window" | awk '/Absolute upper-left/ { printf "%s ", $NF }')"; }
DoubleClickTitle() {
    FindCorner
    xdotool mousemove --sync $((left + 250)) $((top - 8)) click --repeat 2 --delay 50 1
}
IsMaximised() { xprop -id "$window" _NET_WM_STATE | grep -q MAXIMIZED_HORZ; }
HasGeometry() { [ "$(Geometry)" = "$1" ]; }

# Places in the window, in pixels from its top left corner: the headers of the list.
headers=(60 210 360 510)
headerLine=70

# The go button, at its place in a window of any width.
GoButton() {
    Measure "$window"
    import -silent -window "$window" -crop 20x20+$((WIDTH - 49))+25 -depth 8 rgb:- | sha1sum
}
ShowsGoButton() { [ "$(GoButton)" = "$goButton" ]; }
IsNotMaximised() { ! IsMaximised; }

# FitsScreen: with the frame that the window manager draws around it.
FitsScreen() {
    local frameLeft frameRight frameTop frameBottom
    IFS=', ' read -r frameLeft frameRight frameTop frameBottom < <(xprop -id "$window" _NET_FRAME_EXTENTS | sed 's/.*= //')
    FindCorner
    Measure "$window"
    [ $((left - frameLeft)) -ge 0 ] && [ $((left + WIDTH + frameRight)) -le 1280 ] &&
        [ $((top - frameTop)) -ge 0 ] && [ $((top + HEIGHT + frameBottom)) -le 900 ]
}

BeginRun "$1" "$2/$3" "$3"
StartAssistance
data=$work/data
MakeData "$data"

# Where no installation has told its folder the program goes by where it stands.
XDG_CONFIG_HOME=$work/home/nowhere Start "$data"
Picture "not-installed"
Quit

Start "$data"
WaitForFolder "$data"
Picture "folder-of-the-command-line"
xdotool windowmove --sync "$window" 60 40 windowsize --sync "$window" 1000 620
Settle

Step "enter-a-folder" Keys A l Return # "Alpha" has the focus, and letters look behind it
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

ExpectTold 'frame|Permora|active|'
ExpectTold 'push button|Go to location||'
ExpectTold "text|Location|.*editable|C:${data//\//.}"
ExpectTold "list|C:${data//\//.}|focused|"
ExpectTold 'list item|Alpha, Type: .*, Modified: 1:3:2022  0:.*|.*|'
ExpectTold 'list item|zebra.html, Type: .*, Size: 5 Bytes, Modified: 1:1:2020  0:.*||'
ExpectTold 'list item|.*|focused|'

# In the address field Escape belongs to what was typed.
EnterAddressField elsewhere
ExpectTold 'text|Location|.*|elsewhere'
Keys Escape
ExpectTold "text|Location|editable|C:${data//\//.}"
ExpectTold "list|C:${data//\//.}|focused|"

# The tree of folders follows the list and leads it.
Step "folder-tree" Keys alt+v f
Keys shift+Tab
ExpectTold "table cell|${data##*/}|focused,selected|"
Step "tree-opened" Keys Right
ExpectTold 'table cell|Alpha||'
Keys Down
WaitForFolder "$data/Alpha"
Keys Up
WaitForFolder "$data"
Keys Return
ExpectTold "list|C:${data//\//.}|focused|"
Step "folder-tree-gone" Keys alt+v f

OpenDialog "Permora Settings" Keys alt+f s
ClickInTemplate 238 166 125 41 # "Show tool tips"
CloseDialog "Permora Settings" "$window" Keys Return
Stored 37 0
Stored 36 0
OpenDialog "About ZEL" Keys alt+h a
CloseDialog "About ZEL" "$window" Keys Escape Escape Escape # those after the first are meant for it as well

Keys F5
Settle
Picture "before-the-end"
place=$(Geometry)
Quit
Stored 16 1 # not maximised
Stored 32 3 # Details

# The next start: place, view, icons and tool tips are as they were.
Start "$data"
WaitUntil "the window to be where it was" HasGeometry "$place"
Keys F5
Settle
PictureLike "started-again" "before-the-end"
Step "maximised" DoubleClickTitle
Keys Escape # one is enough where no dialog has just closed
WaitForEnd
Stored 16 3
Start "$data"
WaitUntil "the window to be maximised" IsMaximised
Settle
Picture "started-maximised"
Step "as-large-as-before" DoubleClickTitle
WaitUntil "the window to be where it was" HasGeometry "$place"

# However it is sized, the address can be seen whole.
goButton=$(GoButton)
for round in {1..10}; do
    for state in IsMaximised IsNotMaximised; do
        DoubleClickTitle
        WaitUntil "the window to change, round $round" $state
        WaitUntil "the go button, round $round" ShowsGoButton
    done
done
xdotool windowsize --sync "$window" 420 300
WaitUntil "the go button of a narrow window" ShowsGoButton
Picture "narrow"

# A place that is larger than the screen.
xdotool windowmove --sync "$window" 0 0 windowsize --sync "$window" 1280 900
Quit
Start "$data"
WaitUntil "the whole window to be on the screen" FitsScreen
Quit

EndRun
