#!/usr/bin/env bash
# The windowed program under Wine, by the keyboard: three files get an entry, and one of them is deleted for good.
#   tests/windows/on_screen.sh tests/windows/main_window_test.sh PROGRAM.EXE TERMINAL-PROGRAM.EXE PICTURE-FOLDER
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
program=$(readlink -f "$1")
terminal=$(readlink -f "$2")
mkdir -p "$3"
pictures=$(readlink -f "$3")
# shellcheck source=tests/end_to_end/desktop.sh
source "$here/../end_to_end/desktop.sh"
export DISPLAY=$WINE_SCREEN
screenFile=$WINE_SCREEN_FILE
desktopPids=()

# Wine UNIX-COMMAND...: in the same Windows as the program.
Wine() { "$here/../../tools/wine.sh" "$@"; }
Wine cmd /c ver >/dev/null # makes it
folder=$here/../../build/wine/screen/drive_c/permora-job
rm -rf "$folder"
mkdir "$folder"
for file in one two three; do
    echo text >"$folder/$file.txt"
    chmod 600 "$folder/$file.txt" # so that the owner alone has rights
done

# AwaitWindow TITLE: until it can be seen, and a picture of it.
AwaitWindow() {
    WaitUntil "the window \"$1\"" HasWindow "$1"
    Settle
    Picture "${1//[^a-zA-Z]/}" "$found"
}
# IsGone WINDOW: another of the same title may have come by then.
IsGone() { ! xwininfo -id "$1" | grep IsViewable; }
List() { Wine "$terminal" show --sddl "C:\\permora-job\\$1.txt"; }
# Wine keeps lists as mode bits, which know no full control.
Grants() { List "$1" | grep -E '\(A;[A-Z]*;0x1301ff;;;WD\)'; }

for file in one two three; do
    ! Grants $file || Fail "$file.txt grants everything from the beginning"
done
Wine "$program" 'C:\permora-job' &
programPid=$!
AwaitWindow Permora

Keys alt+v d # by lines, where Wine's arrow keys know the next file
Settle
Keys ctrl+a alt+p
AwaitWindow Information # that several are selected
Keys Return
AwaitWindow "Security Editor - .*"
Keys Tab space
AwaitWindow "Select Account Name"
xdotool type --delay 20 Everyone
Keys Return
AwaitWindow "Permission.*"
Keys Tab space Return # full control
AwaitWindow "Security Editor - .*"
Keys ctrl+Tab # the owner
for _ in "cannot enumerate users" "the system's reason"; do # Wine's policy has no accounts
    AwaitWindow "Permora Error"
    Keys Return
    WaitUntil "the box to close" IsGone "$found"
done
AwaitWindow "Security Editor - .*"
Keys Return
WaitUntil "the editor to close" HasNoWindow "Security Editor - .*"
for file in one two three; do
    WaitUntil "the entry of $file.txt" Grants $file
done

Settle
Keys Down alt+w # the next one alone
AwaitWindow "Security Wizard"
Keys Down Return
AwaitWindow "Secure deletion"
Keys alt+y
WaitUntil "the file to be gone" test ! -e "$folder/three.txt"
[ "$(ls "$folder")" = "$(printf 'one.txt\ntwo.txt')" ] || Fail "not that file alone is gone: $(ls "$folder")"
AwaitWindow "Security Wizard"
Keys Return # finish
WaitUntil "the wizard to close" HasNoWindow "Security Wizard"
Settle
Keys alt+F4 # an Escape so soon would be one for the wizard
wait $programPid || Fail "the program ended with $?"
echo Passed
