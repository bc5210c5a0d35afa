#!/usr/bin/env bash
# The Debian packages on a machine that has nothing yet: installed, used, upgraded, removed and purged, after which only what
# the user made is left. Each question about the machine is asked in an empty root that is made for it.
#   package_test.sh PACKAGE-FOLDER [RELEASE]
set -euo pipefail
packages=$(readlink -f "$1")
release=${2:-$(. /etc/os-release && echo "$VERSION_CODENAME")}
here=$(dirname "$(readlink -f "$0")")
# shellcheck source=tools/clean_root.sh
source "$here/../../tools/clean_root.sh"
# shellcheck source=tests/end_to_end/desktop.sh
source "$here/../end_to_end/desktop.sh"

if [ "$(id -u)" != 0 ]; then
    echo "[  SKIPPED ] only root can make another root"
    exit
fi
work=$(mktemp -d)
root=$work/root
# shellcheck disable=SC2034 # where Fail of desktop.sh leaves a picture
pictures=$work
desktopPids=()
CleanUp() {
    StopDesktop
    rm -rf --one-file-system "$work"
}
trap CleanUp EXIT

Run() { InRoot "$root" "$@"; }
# Apt ARGUMENT...: shown only if it fails.
Apt() {
    Run apt-get --quiet --yes --no-install-recommends -o Dpkg::Options::=--force-unsafe-io "$@" >"$work/apt.log" 2>&1 || {
        cat "$work/apt.log" >&2
        Fail "apt-get $*"
    }
}
# Older PACKAGE: the same as a version before all others.
Older() {
    local unpacked=$work/older-$1
    dpkg-deb --raw-extract "$packages/$1"_*.deb "$unpacked"
    sed -i 's/^Version: .*/Version: 0.0.0~before/' "$unpacked/DEBIAN/control"
    dpkg-deb --build --root-owner-group "$unpacked" "$root/packages/older-$1.deb" >/dev/null
}
# Files: all there are but for what package tools keep of their work, caches, and what ends with the system.
Files() {
    (cd "$root" && find . \( -path ./proc -o -path ./sys -o -path ./dev -o -path ./run -o -path ./tmp -o -path ./packages -o -path ./var/cache \
        -o -path ./var/log -o -path ./var/lib/apt -o -path ./var/lib/dpkg \) -prune -o -print | LC_ALL=C sort)
}
IsThere() { [ -e "$root/$1" ] || [ -L "$root/$1" ]; }
AwaitWindow() {
    WaitUntil "the window \"$1\"" HasWindow "$1"
    WaitUntil "\"$1\" to be active" IsActive "$found"
    Settle
}
# GiveEverything EDITOR ACCOUNT: a new entry in the editor of that title, by the keyboard, and its OK.
GiveEverything() {
    local editor=$1
    Keys Tab space
    AwaitWindow "Select Account Name"
    xdotool type --delay 20 "$2"
    Keys Return
    AwaitWindow "Permissions"
    Keys Tab space Return # full control
    AwaitWindow "$editor"
    Keys Return
}
Grants() { List "$1" | grep -F "$2"; }
# List PATH: the list of it as text.
List() { Run permora-cli show --sddl "$1"; }

echo "Making an empty $release"
MakeRoot "$release" "$root"
mkdir "$root/packages"
for package in permora permora-cli; do
    cp "$packages/$package"_*.deb "$root/packages/$package.deb"
done
Older permora-cli
Apt update
Files >"$work/before"

echo "The terminal program"
Apt install /packages/older-permora-cli.deb
Run dpkg-query --list >"$work/installed"
! grep -E '^ii +lib(qt|x11|gl)' "$work/installed" || Fail "it brings graphical libraries"
mkdir -p "$root/srv/data/below"
echo text >"$root/srv/data/below/file"
List /srv/data/below/file >"$work/first"
Run permora-cli grant /srv/data --account 'BUILTIN\Users' --rights 'Read permissions' >/dev/null
Run permora-cli show /srv/data | grep -E 'Users .*Read permissions' || Fail "what was granted is not shown"
Run permora-cli reset /srv/data --yes >/dev/null
List /srv/data/below/file | grep -E 'D:AI\(A;ID;0x120000;;;BU\)$' || Fail "what was granted is not all that is inherited"

echo "Its next version, which takes back what the one before did"
Apt install /packages/permora-cli.deb
[ "$(Run permora-cli --version)" = "permora-cli $(dpkg-deb --field "$packages"/permora-cli_*.deb Version)" ] ||
    Fail "it is not the new one"
Run permora-cli undo --yes >/dev/null # of the reset
Run permora-cli undo --yes >/dev/null # of the grant
List /srv/data/below/file | diff "$work/first" - || Fail "undo did not bring the list back"

echo "The windowed program"
Apt install /packages/permora.deb
"$here/../../tools/check_hardening.sh" "$root/usr/lib/permora/permora" "$root/usr/bin/permora-cli"
StartDesktop "$work/home" light
Run permora /srv/data >"$work/output" 2>&1 &
desktopPids+=($!)
AwaitWindow Permora
Keys b alt+p
AwaitWindow "Security Editor - below"
GiveEverything "Security Editor - below" 'BUILTIN\Guests'
WaitUntil "the new entry" Grants /srv/data/below '(A;OICI;FA;;;BG)'
AwaitWindow Permora
Keys F1
AwaitWindow "Permora Help"
StopDesktop
desktopPids=()
unset DISPLAY

# A file manager and what it needs would hide what the program lacks and leave files behind, so it gets a copy.
echo "From a file manager's menu"
alone=$root
root=$work/with-file-manager
cp -a "$alone" "$root"
Apt install thunar gir1.2-thunarx-3.0 python3-gi thunarx-python
mkdir -p "$root/srv/more/"{below,"another folder"}
StartDesktop "$work/second-home" light
Run thunar /srv/more >"$work/output" 2>&1 &
desktopPids+=($!)
AwaitWindow "more - Thunar"
# Where the first folder's icon is drawn.
HasIcon() { [ "$(import -silent -window "$found" -crop 40x40+192+125 +repage png:- | identify -format %k -)" -gt 1 ]; }
WaitUntil "the folders' icons" HasIcon
Settle
Keys ctrl+a
ClickIn "$found" 212 145 3 # one of those that are selected
Settle
Keys Up Up Return # the last entry but one: before the file manager's own "Properties..."
AwaitWindow Information
Keys Return
AwaitWindow "Security Editor - another folder"
GiveEverything "Security Editor - another folder" 'BUILTIN\Power Users'
for folder in below "another folder"; do
    WaitUntil "the new entry of \"$folder\"" Grants "/srv/more/$folder" '(A;OICI;FA;;;PU)'
done
StopDesktop
desktopPids=()
unset DISPLAY
root=$alone

echo "Removing"
Run permora-cli setup --all-users /usr/lib/permora >/dev/null
Apt remove permora
for file in usr/bin/permora usr/lib/permora; do
    ! IsThere $file || Fail "$file is still there"
done
Apt purge permora
IsThere etc/permora/registry.reg || Fail "one program's purge took the other's settings"
touch "$root/usr/local/bin/permora-cli"
Run env DPKG_MAINTSCRIPT_PACKAGE=permora-cli /var/lib/dpkg/info/permora-cli.postrm purge
IsThere etc/permora/registry.reg || Fail "a purge took the settings of the installation without packages"
rm "$root/usr/local/bin/permora-cli"
Apt purge --autoremove permora-cli
Files >"$work/after"
diff "$work/before" "$work/after" >"$work/left" || true
grep -vE '^[<>] \./(srv/data|root/\.(config|cache|local))(/|$)|^[0-9]' "$work/left" && Fail "this is not what was there before"
IsThere srv/data/below/file || Fail "the user's files are gone"
echo "Passed"
