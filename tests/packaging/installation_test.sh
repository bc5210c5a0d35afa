#!/usr/bin/env bash
# Installs what was built into a folder of its own, as cmake --install does it for whoever installs, and starts the
# installed program, which must find its help without the build tree.
#   installation_test.sh CMAKE BUILD_FOLDER
# Root's installation is for all users, so it gets a copy of /etc in a namespace of its own.
set -euo pipefail
cmake=$1
build=$2

if [ "$(id -u)" = 0 ] && [ "${INSTALLATION_TEST_INSIDE:-}" != yes ]; then
    if ! unshare --mount true 2>/dev/null; then
        echo "[  SKIPPED ] root may not mount anything here"
        exit
    fi
    INSTALLATION_TEST_INSIDE=yes exec unshare --mount --propagation private bash "$0" "$@"
fi

stage=$(mktemp -d)
program=
Finish() {
    if [ -n "$program" ]; then
        kill "$program" 2>/dev/null || true
        wait "$program" 2>/dev/null || true
    fi
    rm -rf "$stage"
}
trap Finish EXIT
Fail() {
    echo "$1" >&2
    cat "$stage/log" >&2
    exit 1
}

export HOME=$stage/home XDG_CONFIG_HOME=$stage/home/.config XDG_RUNTIME_DIR=$stage/run QT_QPA_PLATFORM=offscreen
mkdir -p "$XDG_CONFIG_HOME" "$XDG_RUNTIME_DIR" "$stage/shown"
chmod 700 "$XDG_RUNTIME_DIR"
registry=$XDG_CONFIG_HOME/permora/registry.reg
if [ "$(id -u)" = 0 ]; then
    cp -a /etc "$stage/etc"
    rm -rf "$stage/etc/permora"
    mount --bind "$stage/etc" /etc
    registry=/etc/permora/registry.reg
fi

"$cmake" --install "$build" --prefix "$stage/prefix" --strip >"$stage/log" 2>&1 || Fail "The installation failed."
folder=$stage/prefix/lib/permora
grep -qF '"Path"="C:'"${folder//\//\\\\}"'"' "$registry" || Fail "The program was not told its folder."
python3 "$(dirname "$(readlink -f "$0")")/desktop_test.py" "$stage/prefix" >>"$stage/log" 2>&1 || Fail "The desktop would not take it."
for file in ZELHELP.chm help/index.html help/support.html; do
    [ -s "$folder/$file" ] || Fail "The help is not there: $file"
done
! grep -lF "$build" "$folder"/permora "$stage/prefix/bin/permora-cli" || Fail "The programs name the folder that they were built in."

# It has read its settings and its folder when it enters the folder that it is to show.
cd /
"$stage/prefix/bin/permora" "$stage/shown" >>"$stage/log" 2>&1 &
program=$!
for _ in {1..600}; do
    [ "$(readlink "/proc/$program/cwd")" != "$stage/shown" ] || exit 0
    sleep 0.1
done
Fail "The installed program did not come to show a folder."
