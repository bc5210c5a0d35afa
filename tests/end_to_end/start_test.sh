#!/usr/bin/env bash
# The ways to start the program: windows for objects alone, wrong use, and as administrator with a stand-in for who asks.
#   start_test.sh PROGRAM-FOLDER PICTURE-FOLDER
# Runs as the user nobody, who owns the files of whoever runs it but has no rights of the administrator.
set -euo pipefail
if [ "$(id -u)" = 0 ]; then
    if ! unshare --user --map-user=65534 true 2>/dev/null; then
        echo "[  SKIPPED ] root may not make a user without its rights here"
        exit
    fi
    exec unshare --user --map-user=65534 --map-group=65534 bash "$0" "$@"
fi
# shellcheck source=tests/end_to_end/program.sh
source "$(dirname "$(readlink -f "$0")")/program.sh"

# StartAlone TITLE ARGUMENT...: the window of that title, and no other of the program.
StartAlone() {
    local title=$1
    shift
    "$programs/permora" "$@" >>"$work/output" 2>&1 &
    programPid=$!
    WaitForDialog "$title"
    HasNoWindow Permora || Fail "there is a main window"
}
# EndsWith CODE KEY...: the keys, and the exit code of the program.
EndsWith() {
    local expected=$1 status=0
    shift
    Keys "$@"
    WaitUntil "the program to end" HasEnded
    wait "$programPid" || status=$?
    programPid=
    [ "$status" = "$expected" ] || Fail "the program ended with $status, not $expected: $(cat "$work/output")"
}
# Refuses TEXT ARGUMENT...: without a screen.
Refuses() {
    local text=$1 status=0 said
    shift
    said=$(env -u DISPLAY "$programs/permora" "$@" 2>&1 >/dev/null) || status=$?
    if [ "$status" != 2 ] || [[ $said != *"$text"* ]]; then Fail "permora $*: $status: $said"; fi
}
# AskerDoes LINE: how the stand-in goes on, which notes its arguments.
AskerDoes() {
    printf '#!/bin/sh\nprintf "%%s\\n" "$@" >"%s/asked"\n%s\n' "$work" "$1" >"$work/bin/pkexec"
    chmod 755 "$work/bin/pkexec"
}
ExpectAsked() { grep -qxF -- "$1" "$work/asked" || Fail "asked for: $(cat "$work/asked")"; }

BeginRun "$1" "$2/start" light
data=$work/data
mkdir -p "$data/folder" "$data/closed" "$work/bin"
touch "$data/a.txt" "$data/-x" "$data/folder/b.txt"
cd "$data"

[[ $(env -u DISPLAY "$programs/permora" --version) == permora\ [0-9]* ]] || Fail "no version"
[[ $(env -u DISPLAY "$programs/permora" --help) == *--permissions* ]] || Fail "no help"
Refuses "--unknown" --unknown
Refuses "only one PATH" a.txt folder
Refuses "-x: a file here is called so" --permissions -x
Refuses "another user's display" --wayland-display /run/display

StartAlone "Security Editor - -x" --permissions -- -x
Picture editor
EndsWith 0 Escape
StartAlone Information --permissions a.txt "$data/folder/b.txt"
Picture several-objects
Keys Return
WaitForDialog "Security Editor - a.txt"
EndsWith 0 Escape
StartAlone "Permora Error" --permissions gone a.txt
Picture gone
Keys Return
WaitForDialog "Security Editor - a.txt"
EndsWith 1 Escape
StartAlone "Properties - a.txt" --properties a.txt folder
Keys Escape
WaitForDialog "Properties - folder"
EndsWith 0 Escape
StartAlone "Security Wizard" --wizard a.txt folder
Picture wizard
EndsWith 0 Escape
"$programs/permora-cli" save folder --output saved.lists >/dev/null
"$programs/permora" -style fusion saved.lists >>"$work/output" 2>&1 &
programPid=$!
WaitForDialog "Permora Information"
Picture saved-list
Keys Return
WaitUntil "the main window" HasWindow Permora
window=$found
WaitUntil "the main window to be active" IsActive "$window"
Quit

# As administrator: by the command line, and from the window, which then makes room.
PATH=$work/bin:$PATH
AskerDoes 'shift; exec "$@"'
StartAlone "Security Editor - a.txt" --administrator --permissions -- a.txt
for word in "$programs/permora" --permissions "$data/a.txt"; do ExpectAsked "$word"; done
EndsWith 0 Escape
AskerDoes 'exit 126'
StartAlone "Permora Error" --administrator
Picture dismissed
EndsWith 1 Return

StartAssistance
Start "$data"
chmod 0 closed
Step closed-folder TypeLocation "$data/closed"
Keys Return
ExpectTold '.*Rights are missing: the Security menu can restart the program as administrator.*'
Step offer Keys alt+s
Keys a
WaitForDialog "Permora Error"
CloseDialog "Permora Error" "$window" Keys Return
AskerDoes 'shift; exec "$@"'
Keys alt+s a
WaitForEnd
WaitUntil "the new window" HasWindow Permora
programPid=$(xdotool getwindowpid "$found") # nobody's child here
HasLeft() { ! readlink "/proc/$programPid/cwd" >/dev/null; }
LeavesByEscape() { Keys Escape && HasLeft; }
WaitForFolder "$data"
WaitUntil "the new window to be active" IsActive "$found"
ExpectAsked "$data"
WaitUntil "Escape to end the program" LeavesByEscape
programPid=
EndRun
