#!/usr/bin/env bash
# Runs a command with a screen for the windows of Wine: tests/windows/on_screen.sh COMMAND ARGUMENT... They have a Windows
# of their own, since one that was started without a screen makes no windows.
set -euo pipefail
root=$(readlink -f "$(dirname "$0")/../..")
folder=$(mktemp -d)
screen=
StopWine() {
    WINEPREFIX=$root/build/wine/screen /usr/lib/wine/wineserver -k >/dev/null 2>&1 || true
}
End() {
    StopWine
    [ -z "$screen" ] || kill "$screen" 2>/dev/null || true
    rm -rf "$folder"
}
trap End EXIT

# One that a killed run has left would go on with the screen of that run.
StopWine
# Whoever opens the pipe first waits for the other, and a screen that cannot start ends it.
mkfifo "$folder/display"
# The server keeps what it shows in a file, without the mouse, for scripts that wait for it to stand still.
Xvfb -displayfd 5 -screen 0 1024x768x24 -nolisten tcp -noreset -nocursor -fbdir "$folder" 5>"$folder/display" \
    >"$folder/xvfb.log" 2>&1 &
screen=$!
read -r -t 60 number <"$folder/display" || { cat "$folder/xvfb.log" >&2; exit 125; }
export WINE_SCREEN=:$number WINE_SCREEN_FILE=$folder/Xvfb_screen0
# No window manager is there, for whom Wine would wait at each window.
"$root/tools/wine.sh" reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null
"$@"
