#!/usr/bin/env bash
# Runs a Windows program under Wine, with a Windows of its own below build/wine: tools/wine.sh PROGRAM ARGUMENT...
# With WINE_SCREEN=:NUMBER its windows are shown there (tests/windows/on_screen.sh).
set -euo pipefail
folder=$(dirname "$(dirname "$(readlink -f "$0")")")/build/wine
wine=$(command -v wine64 || echo /usr/lib/wine/wine64)
name=prefix
[ -z "${WINE_SCREEN:-}" ] || name=screen
export WINEPREFIX=$folder/$name WINEARCH=win64 WINEDEBUG=${WINEDEBUG--all}
# Nothing of the desktop is needed: no menu entries, no offers to download a browser engine or a runtime.
# Names are UTF-8, wherever this is started from.
export LC_ALL=C.UTF-8
export WINEDLLOVERRIDES='winemenubuilder.exe,mscoree,mshtml=d'
unset DISPLAY WAYLAND_DISPLAY
[ -z "${WINE_SCREEN:-}" ] || export DISPLAY=$WINE_SCREEN

# The first one makes the prefix; others that start meanwhile wait for it.
mkdir -p "$folder"
exec 9>"$folder/$name.lock"
flock 9
if [ ! -e "$folder/$name.ready" ]; then
    "$wine" wineboot --init >"$folder/$name.log" 2>&1 9>&- || { cat "$folder/$name.log" >&2; exit 125; }
    touch "$folder/$name.ready"
fi
exec 9>&-
exec "$wine" "$@"
