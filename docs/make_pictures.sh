#!/usr/bin/env bash
# Makes the pictures of the guide anew: the real program, worked by keyboard on a sample volume.
#   docs/make_pictures.sh [PROGRAM-FOLDER]
# Without a folder of programs the optimised ones are built. Wants root: the volume, the machine's name, its accounts and its
# shares are made up for the pictures, in namespaces of their own, so that every machine makes the same ones. The pictures
# of a domain are made on the member server of the tests' domain.
set -euo pipefail
self=$(readlink -f "$0")
project=$(dirname "$(dirname "$self")")
# shellcheck source=tools/packages.sh
source "$project/tools/packages.sh"
# shellcheck source=tools/build.sh
source "$project/tools/build.sh"

if [ "${1:-}" != --inside ] && [ "${1:-}" != --in-domain ]; then
    EnsurePackages "${buildPackages[@]}" "${volumePackages[@]}" "${screenPackages[@]}" "${browserPackages[@]}"
    programFolder=${1:-$project/build/release/bin}
    [ $# -gt 0 ] || (cd "$project" && BuildPreset release permora permora-cli)
    unshare --mount --uts "$self" --inside "$(readlink -f "$programFolder")"
    exec "$project/tests/support/domain.sh" run "$self" --in-domain "$(readlink -f "$programFolder")"
fi

export LC_ALL=C.UTF-8 TZ=UTC
# shellcheck source=tests/end_to_end/program.sh
source "$project/tests/end_to_end/program.sh"
# shellcheck source=tests/end_to_end/editor_by_keyboard.sh
source "$project/tests/end_to_end/editor_by_keyboard.sh"

# Another machine: its name, its people, a letter for the volume, and shares of its own.
BecomeFileServer() {
    local layers=$work/layers
    mount --make-rprivate /
    mkdir "$layers"
    mount -t tmpfs tmpfs "$layers"
    mkdir "$layers/upper" "$layers/work"
    mount -t overlay overlay -o "lowerdir=/etc,upperdir=$layers/upper,workdir=$layers/work" /etc ||
        Fail "the machine's settings cannot be covered"
    hostname fileserver
    rm -rf /etc/samba /etc/permora
    mkdir /etc/permora
    printf '%s\n' root:x:0:0::/root:/bin/sh anna:x:1000:1000::/home/anna:/bin/sh ben:x:1001:1001::/home/ben:/bin/sh >/etc/passwd
    printf '%s\n' root:x:0: anna:x:1000: ben:x:1001: accounting:x:1002:anna >/etc/group
    printf 'Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SYSTEM\\MountedDevices]\n"\\\\DosDevices\\\\D:"="%s"\n' \
        /media/disk >/etc/permora/registry.reg
}

# Lists that show what the guide tells of.
MakeLists() {
    MakeSample
    mountpoint --quiet "$sample" || Fail "no volume can be mounted here"
    # The history shows paths from the root of the system.
    mount -t tmpfs tmpfs /media
    mkdir /media/disk
    mount --bind "$sample" /media/disk
    sample=/media/disk FillSample "$programs/permora-cli"
    {
        echo "To be sent in March." >"$sample/Projects/letter.txt"
        "$programs/permora-cli" inherit /media/disk/Projects/letter.txt --on
        "$programs/permora-cli" grant /media/disk/Projects/Archive --account 'FILESERVER\anna' \
            --rights "Read permissions, List folder / Read data, Traverse folder / Execute file"
    } >/dev/null
    find "$sample" -mindepth 1 -exec touch --date "2024-03-05 09:30" {} +
}

# Take NAME [WINDOW]: the window, with its frame, as a file of the guide.
Take() {
    xdotool mousemove --sync 1278 898
    Settle
    import -silent -frame -window "${2:-$window}" -strip -define png:exclude-chunk=date,time -depth 8 -define png:compression-level=9 \
        "$project/docs/pictures/$1.png"
}
# TakeDialog NAME TITLE COMMAND...: the window of that title, which the command opens.
TakeDialog() {
    local name=$1 title=$2
    shift 2
    "$@"
    WaitForDialog "$title"
    Take "$name" "$dialog"
}
# TakePage NAME FILE: a page as a browser shows it.
TakePage() {
    chromium --headless --no-sandbox --disable-gpu --user-data-dir="$work/browser" --hide-scrollbars --window-size=1280,1150 \
        --screenshot="$project/docs/pictures/$1.png" "file://$2" 2>/dev/null
    mogrify -strip -define png:exclude-chunk=date,time -define png:compression-level=9 "$project/docs/pictures/$1.png"
}
TypeText() { xdotool type --delay 20 "$1"; }

End() {
    [ ! -v sample ] || umount --lazy "$sample" 2>/dev/null || true
    umount --lazy /etc "$work/layers" /media/disk /media 2>/dev/null || true
    CleanUp
}

TakeDomainPictures() {
    local folder=/srv/data/Plans
    mkdir "$folder"
    "$programs/permora-cli" assign "$folder" --account 'EXAMPLE\Engineering' --combination Modify
    "$programs/permora-cli" grant "$folder" --account 'EXAMPLE\anna' --rights 'Change permissions'
    "$programs/permora-cli" deny "$folder" --account 'EXAMPLE\carla' --rights 'Delete'
    smbclient //FILES/data --user 'EXAMPLE\anna%Passw0rd!' --command 'ls' >/dev/null

    Start /srv/data
    WaitForFolder /srv/data
    xdotool windowmove --sync "$window" 60 40 windowsize --sync "$window" 820 420
    Step "details" Keys alt+v d
    Step "a-folder" Keys P
    OpenDialog "Security Editor - Plans" Keys alt+p
    sheet=$dialog
    sleep 1 # who obeys the list is asked for meanwhile
    Settle
    Take domain-permissions "$sheet"
    OpenDialog "Select Account Name" PressAdd
    TypeText eng
    Keys Tab space
    sleep 1 # the domain is searched after a pause in typing
    Settle
    Take domain-account "$dialog"
    CloseDialog "Select Account Name" "$sheet" Keys Escape
    Step "owner-page" Keys ctrl+Tab
    Step "effective-page" Keys ctrl+Tab
    OpenDialog "Select Account Name" Keys Tab space
    CloseDialog "Select Account Name" "$sheet" TypeAccount 'EXAMPLE\anna'
    Take domain-effective "$sheet"
    CloseDialog "Security Editor - Plans" "$window" Keys Escape
    Quit
    EndRun >/dev/null
}

steps=$(mktemp -d)
if [ "$1" = --in-domain ]; then
    BeginRun "$2" "$steps" light
    trap 'CleanUp; rm -rf "$steps"' EXIT
    TakeDomainPictures
    exit
fi
rm -rf "$project/docs/pictures"
mkdir "$project/docs/pictures"
BeginRun "$2" "$steps" light
trap 'End; rm -rf "$steps"' EXIT
# shellcheck source=tools/sample.sh
source "$project/tools/sample.sh"
PrepareSampleFolder || Fail "there is no place for the sample"
BecomeFileServer
MakeLists

"$programs/permora-cli" report /media/disk --members --html "$work/report.html"
TakePage report-page "$work/report.html"

Start "/media/disk/Projects"
WaitForFolder "/media/disk/Projects"
xdotool windowmove --sync "$window" 60 40 windowsize --sync "$window" 820 420
Step "details" Keys alt+v d
Step "a-folder" Keys A
Take main-window

TakeDialog permissions "Security Editor - Archive" Keys alt+p
sheet=$dialog
TakeDialog inherited-entries "Inherited entries" Keys Tab Tab Tab Tab space
CloseDialog "Inherited entries" "$sheet" Keys Escape

Keys shift+Tab shift+Tab shift+Tab
OpenDialog "Select Account Name" Keys space
Keys Tab space
Take account "$dialog"
Keys shift+Tab
TypeAccount Users
WaitForDialog "Permissions"
# From the scope to what reading takes: each right has two boxes.
Keys Tab Tab Tab space Tab Tab space Tab Tab space Tab Tab space
Times 14 Tab && Keys space
Take entry "$dialog"
CloseDialog "Permissions" "$sheet" Keys Escape

Step "owner-page" Keys ctrl+Tab
Take owner "$sheet"
Step "effective-page" Keys ctrl+Tab
OpenDialog "Select Account Name" Keys Tab space
CloseDialog "Select Account Name" "$sheet" TypeAccount 'FILESERVER\anna'
Take effective "$sheet"
CloseDialog "Security Editor - Archive" "$window" Keys Escape

# What is found in the window beside the main one.
OpenDialog "Find" Keys ctrl+f
TypeText Users
Keys Return
WaitUntil "what is found" HasWindowLike "Find - "
Settle
xdotool windowsize --sync "$found" 980 300
Take find "$found"
Keys ctrl+w
WaitUntil "the main window to be active" IsActive "$window"

# A mnemonic presses its button for a moment.
OpenDialog "Report" Keys alt+s r
Keys alt+f
Settle
Keys Return
WaitUntil "the report" HasWindowLike "Report - "
Settle
xdotool windowsize --sync "$found" 980 300
Take report-window "$found"
Keys ctrl+w
WaitUntil "the main window to be active" IsActive "$window"

# Shares: of each folder, as its dialog makes them.
Step "shares" Keys alt+e h
for name in Projects Inbox; do
    Step "file-menu" Keys alt+f
    OpenDialog "Create a Shared Folder" Keys n
    TypeText "D:\\$name"
    Keys alt+n && TypeText "$name"
    Keys alt+c && TypeText "Of the whole house"
    Keys Tab
    [ "$name" != Projects ] || Take new-share "$dialog"
    CloseDialog "Create a Shared Folder" "$window" Keys Return
done
Step "a-share" Keys P
Take shares
Step "files-again" Keys alt+e h

# The wizard on both folders and files, and a deletion.
Step "all-items" Keys ctrl+a
OpenDialog "Security Wizard" Keys alt+w
sheet=$dialog
OpenDialog "Information" Keys Return
CloseDialog "Information" "$sheet" Keys space Tab Return
Take wizard-permissions "$sheet"
CloseDialog "Security Wizard" "$window" Keys Escape

Step "some-items" Keys Home l
TakeDialog deletion "Secure deletion" Keys ctrl+Delete
CloseDialog "Secure deletion" "$window" Keys Escape
Step "all-items-again" Keys ctrl+a
OpenDialog "Security Wizard" Keys alt+w
sheet=$dialog
Step "other-task" Keys Down
OpenDialog "Secure deletion" Keys Return
CloseDialog "Secure deletion" "$sheet" Keys alt+y
WaitUntil "the deletion" test ! -e "$sample/Projects/plan.txt"
Take wizard-deletion "$sheet"
CloseDialog "Security Wizard" "$window" Keys Return

TakeDialog settings "Permora Settings" Keys alt+f s
CloseDialog "Permora Settings" "$window" Keys Escape
TakeDialog history "History" Keys alt+s h
CloseDialog "History" "$window" Keys Escape
Quit
EndRun >/dev/null
echo "The pictures are in $project/docs/pictures."
