# The program, set up for a user of its own and started on a desktop of its own. Sourced, not run.
# shellcheck shell=bash

here=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
# shellcheck source=tests/end_to_end/desktop.sh
source "$here/desktop.sh"

# For builds that look for leaks at their end.
export LSAN_OPTIONS="suppressions=$here/../support/leaks.supp:print_suppressions=0"

# BeginRun PROGRAM-FOLDER PICTURE-FOLDER light|dark|wayland: starts the desktop and sets the program up. What is made, in $work and
# elsewhere, is gone when the script ends, but for the pictures.
work=
programPid=
desktopPids=()
BeginRun() {
    programs=$(readlink -f "$1")
    pictures=$2
    rm -rf "$pictures"
    mkdir -p "$pictures"
    work=$(mktemp -d)
    trap CleanUp EXIT
    StartDesktop "$work/home" "$3"
    "$programs/permora-cli" setup "$programs" >/dev/null
}
CleanUp() {
    if [ -n "$programPid" ]; then
        kill "$programPid" 2>/dev/null || true
        wait "$programPid" 2>/dev/null || true
    fi
    StopDesktop
    rm -rf "$work"
}
EndRun() {
    [ ! -s "$work/output" ] || Fail "the program wrote: $(cat "$work/output")"
    echo "Passed; the pictures are in $pictures"
}

# Start [FOLDER]: until its window, $window, can be used.
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

# Quit: by Escape, more than once where the first is taken for one that was meant for a dialog which has just closed.
EndsByEscape() { Keys Escape && HasEnded; }
Quit() { WaitUntil "Escape to end the program" EndsByEscape && WaitForEnd; }

# The folder shown is the program's current directory.
Shows() { [ "$(readlink "/proc/$programPid/cwd")" = "$1" ]; }
WaitForFolder() { WaitUntil "the folder $1" Shows "$1"; }

# TypeLocation LOCATION: into the address field, which is there in a window that is wide enough.
addressField=(700 40)
EnterAddressField() {
    ClickAt "${addressField[@]}"
    xdotool mousemove --sync 1278 898 # where it is clicked next, a pointer that is there already is waited for in vain
    Keys ctrl+a
    xdotool type --delay 20 "$1"
}
TypeLocation() { EnterAddressField "$1" && Keys Return; }

# WaitForDialog TITLE: its id is then in $dialog.
WaitForDialog() {
    WaitUntil "the window \"$1\"" HasWindow "$1"
    dialog=$found
    WaitUntil "\"$1\" to be active" IsActive "$dialog"
    Settle
}

# OpenDialog TITLE COMMAND...: by the command, with a picture.
OpenDialog() {
    local title=$1
    shift
    "$@"
    WaitForDialog "$title"
    Picture "$(tr 'A-Z ' 'a-z-' <<<"$title" | tr -s '-')"
}

# CloseDialog TITLE OWNER COMMAND...: by the command, after which the window with the id OWNER is active again.
CloseDialog() {
    local title=$1 owner=$2
    shift 2
    "$@"
    WaitUntil "\"$title\" to close" HasNoWindow "$title"
    WaitUntil "the window behind \"$title\" to be active" IsActive "$owner"
    Settle
}

# Told LINE: whether assistive technology is told such a line of accessible.py, a basic regular expression. Wants
# StartAssistance before Start.
Told() { grep -qx "$1" <<<"$("$here/accessible.py")"; }
ExpectTold() { WaitUntil "assistive technology to be told: $1" Told "$1"; }

# ClickOn ROLE|NAME [CLICK...]: what assistive technology knows by that role and name, a regular expression.
ClickOn() {
    local thing=$1
    shift
    [ $# -gt 0 ] || set -- 1
    WaitUntil "something to click on: $thing" FindPlace "$thing"
    # shellcheck disable=SC2086 # two numbers
    xdotool mousemove $place click "$@"
}
place=
FindPlace() { place=$("$here/accessible.py" "$1"); }

# Work KEYS THING...: with the hands of the script, which are $hands: presses the keys of the "keyboard", or clicks with the
# "mouse" on one thing after the other.
Work() {
    local shortcut=$1 thing
    shift
    if [ "$hands" = keyboard ]; then
        # shellcheck disable=SC2086 # several keys
        Keys $shortcut
    else
        for thing; do ClickOn "$thing"; done
    fi
}
Accept() { Work Return "push button|OK"; }
# Leave: ends the program.
Leave() { if [ "$hands" = mouse ]; then Work "" "menu item|File" "menu item|Exit.*" && WaitForEnd; else Quit; fi; }
Type() { xdotool type --delay 20 "$1"; } # a name, with either

# Judge TITLE [ROLE [PAGE]]: whether the active window can be used without seeing it and without a mouse (judge_window.py).
# Goes through it by the keyboard, which changes what is selected in lists. Wants StartAssistance before Start.
Judge() {
    "$here/judge_window.py" "$@" >&2 || Fail "\"$1\"${3:+, page $3}, as told above"
}

# Measure WINDOW: its client area, into $WIDTH and $HEIGHT.
Measure() { eval "$(xdotool getwindowgeometry --shell "$1" | grep -E '^(WIDTH|HEIGHT)=')"; }

# ClickInTemplate WIDTH HEIGHT X Y [CLICK...]: in $dialog, whose template has that size; in dialog units, so that it hits
# with every font.
ClickInTemplate() {
    Measure "$dialog"
    ClickIn "$dialog" $(($3 * WIDTH / $1)) $(($4 * HEIGHT / $2)) "${@:5}"
}

# PictureLike NAME OTHER [WINDOW]: takes a picture that shows the same as OTHER, which was taken before. A few pixels may differ,
# such as those at the edges of the address bar, which the window manager's frame may shift by one.
PictureLike() {
    local other
    other=$(ls "$pictures"/*-"$2".png)
    NamePicture "$1"
    WaitUntil "$1 to look like $2" LooksLike "$other" "$picture" "${3:-root}"
}
LooksLike() {
    import -silent -window "$3" "$2"
    [ "$(compare -metric AE "$1" "$2" null: 2>&1 || true)" -lt 400 ]
}
