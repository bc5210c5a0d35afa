#!/usr/bin/env bash
# Files worked as a user works them, by keyboard: between folders, between volumes, and with another program.
#   files_test.sh PROGRAM-FOLDER PICTURE-FOLDER LOCAL-FOLDER NTFS-FOLDER
# Both folders are empty and on volumes of their own; the second is the root of an NTFS volume, and is judged by whoever
# made it.
set -euo pipefail
# shellcheck source=tests/end_to_end/program.sh
source "$(dirname "$(readlink -f "$0")")/program.sh"
local=$(readlink -f "$3") ntfs=$(readlink -f "$4")

# Names that a shell, an address or a pattern could take for something else.
oddFile="a'b %41 &c \$(d).txt" oddFolder="Ordner #1 (50%)"

MakeData() {
    mkdir -p "$local"/{Source/Inner/Deep,Back} "$ntfs"/{Store,Second}
    printf 'budget' >"$local/Source/budget.txt"
    printf '\0binary\377' >"$local/Source/Inner/data.bin"
    printf 'deep' >"$local/Source/Inner/Deep/file"
    : >"$local/Source/empty"
    touch -d '2020-01-01 10:00' "$local/Source/budget.txt" "$local/Source/Inner/Deep/file"
    cp -a "$local/Source" "$work/original"
}

# From the address field the keyboard comes to the list behind the go button.
GoTo() { TypeLocation "$1" && WaitForFolder "$1"; }
# SameAs FOLDER FOLDER: names, contents and times.
SameAs() {
    diff -r "$1" "$2" && diff <(cd "$1" && find . -type f -printf '%p %Ts\n' | sort) \
        <(cd "$2" && find . -type f -printf '%p %Ts\n' | sort)
}
IsEmpty() { [ -z "$(find "$1" -mindepth 1 -print -quit)" ]; }
Exists() { [ -e "$1" ]; }
IsGone() { [ ! -e "$1" ] && [ ! -L "$1" ]; }
IsIdle() { HasNoWindow "File Operation Progress" && IsActive "$window"; }
WaitForIdle() { WaitUntil "the operation to end" IsIdle; }
# PasteAndEnter OWNER: while the program that offers the text hands it over, the next key waits.
PasteAndEnter() {
    ClickAt "${addressField[@]}"
    kill -STOP "$1"
    Keys ctrl+a ctrl+v Return
    kill -CONT "$1"
}
# TypeName NAME: into the dialog that is open, in the place of the name that it has.
TypeName() { Keys ctrl+a && xdotool type --delay 20 "$1" && Keys Return; }
# Restore TRASH NAME TOP: as a desktop does, by what the trash says of the file; relative paths begin at TOP.
Restore() {
    local info=$1/info/$2.trashinfo path
    [ "$(sed -n 1p "$info")" = "[Trash Info]" ] || Fail "no trash information: $info"
    path=$(sed -n 's/^Path=//p' "$info")
    path=$(printf '%b' "${path//%/\\x}")
    [ "${path#/}" != "$path" ] || path=$3/$path
    mv "$1/files/$2" "$path" && rm "$info"
}
# Offered FORMAT: what the program has put on the clipboard.
Offered() { "$programs/permora-test-clipboard" get "$1"; }
NotOffered() { ! Offered "$1"; }
# TakeClipboard COMMAND...: by another program, on which the script goes on to wait.
TakeClipboard() {
    rm -f "$work/offered"
    "$programs/permora-test-clipboard" "$@" >"$work/offered" 2>&1 &
    desktopPids+=($!)
    WaitUntil "the other program's offer" grep -q offered "$work/offered"
}
Offer() { TakeClipboard put "$1" "$2"; } # FORMAT TEXT
# ServedDuring SECONDS COMMAND...: the window is served all that time, in which the command runs. Far more is allowed than
# it takes, for machines that have other things to do. The command takes no pictures: the display's server answers nobody
# meanwhile.
ServedDuring() {
    local seconds=$1 watcher
    shift
    "$programs/permora-test-window-answers" "$window" "$seconds" 1000 >"$work/longest" &
    watcher=$!
    "$@"
    wait "$watcher" || Fail "the window took $(cat "$work/longest") ms to answer"
}
HasHiddenBit() { [ $((0x$(getfattr --only-values -n system.ntfs_attrib_be "$1" | od -An -tx1 | tr -d ' ') & 2)) -ne 0 ]; }

BeginRun "$1" "$2" light
MakeData
StartAssistance
Start "$local/Source"
WaitForFolder "$local/Source"
xdotool windowmove --sync "$window" 60 40 windowsize --sync "$window" 1000 620
Settle

# Copied twice onto the other volume; the third time there is something already.
Keys ctrl+a ctrl+c
for target in Store Second; do
    GoTo "$ntfs/$target"
    Keys ctrl+v
    WaitUntil "the copies in $target" SameAs "$work/original" "$ntfs/$target"
    WaitForIdle
done
Picture "copied"
OpenDialog "File Operation Progress" Keys ctrl+v
Judge "File Operation Progress"
CloseDialog "File Operation Progress" "$window" Keys Escape
SameAs "$work/original" "$ntfs/Second"

# Cut, and pasted back once.
Keys ctrl+a ctrl+x
GoTo "$local/Back"
Keys ctrl+v
WaitUntil "the files to come back" SameAs "$work/original" "$local/Back"
WaitUntil "nothing to stay" IsEmpty "$ntfs/Second"
WaitForIdle
Picture "moved"
Keys ctrl+v F5
SameAs "$work/original" "$local/Back"

# New names.
Keys b
OpenDialog "Rename" Keys F2
CloseDialog "Rename" "$window" TypeName "$oddFile"
WaitUntil "the new name" Exists "$local/Back/$oddFile"
OpenDialog "New Folder" Keys alt+f n
CloseDialog "New Folder" "$window" TypeName "$oddFolder"
WaitUntil "the new folder" test -d "$local/Back/$oddFolder"
Picture "odd-names"

# To the trash, each volume's own, and back.
TrashOne() { # FOLDER KEY NAME
    GoTo "$1"
    OpenDialog "File Operation Progress" Keys "$2" Delete
    CloseDialog "File Operation Progress" "$window" Keys alt+m
    WaitUntil "\"$3\" to be gone" IsGone "$1/$3"
    WaitForIdle
}
TrashOne "$local/Back" a "$oddFile"
Restore "$HOME/.local/share/Trash" "$oddFile" /
[ "$(cat "$local/Back/$oddFile")" = budget ] || Fail "the file from the trash is another"
TrashOne "$ntfs/Store" i Inner
Restore "$ntfs/.Trash-$(id -u)" Inner "$ntfs"
SameAs "$work/original" "$ntfs/Store"

# Attributes of several files, of which the first one's are shown.
Keys F5 ctrl+a alt+e a
WaitUntil "the attributes" HasWindowLike "File Attributes - "
dialog=$found
Settle
Picture "attributes"
Keys Tab Tab space Return # "Hidden"
WaitUntil "the attributes to be set" HasHiddenBit "$ntfs/Store/empty"
WaitUntil "the main window" IsActive "$window"
HasHiddenBit "$ntfs/Store/Inner" || Fail "the folder is not hidden"

# What a folder is, and what is in it.
Keys i
OpenDialog "Properties - Inner" Keys alt+e e
CloseDialog "Properties - Inner" "$window" Keys Escape

# With another program, both ways.
GoTo "$local/Source"
Keys b ctrl+c
WaitUntil "an offer to other programs" Offered text/uri-list
[ "$(Offered text/uri-list | tr -d '\r')" = "file://$local/Source/budget.txt" ] || Fail "another offer"
[ "$(Offered x-special/gnome-copied-files | head -n 1)" = copy ] || Fail "it is not offered as a copy"
GoTo "$local/Back/$oddFolder"
Offer x-special/gnome-copied-files "cut
file://$ntfs/Store/budget.txt"
Keys ctrl+v
WaitUntil "the other program's file" Exists "$local/Back/$oddFolder/budget.txt"
WaitUntil "it to be moved" IsGone "$ntfs/Store/budget.txt"
WaitUntil "the clipboard to be emptied" NotOffered x-special/gnome-copied-files
Offer text/uri-list "file://elsewhere.example/etc/passwd"
OpenDialog "Permora Error" Keys ctrl+v
CloseDialog "Permora Error" "$window" Keys Return

# Texts between the address field and other programs, and within it.
GoTo "$local/Source"
Offer text/plain "C:$local/Back"
PasteAndEnter $!
WaitForFolder "$local/Back"
ClickAt "${addressField[@]}"
Keys ctrl+a ctrl+c
xdotool type --delay 20 "C:/"
Keys Return
WaitForFolder /
ClickAt "${addressField[@]}"
Keys ctrl+a ctrl+v Return
WaitForFolder "$local/Back"

# With one that has taken the clipboard and hangs.
TakeClipboard hold
ServedDuring 5 Keys ctrl+v
OpenDialog "Permora Error" true
CloseDialog "Permora Error" "$window" Keys Return
Step "context-menu-of-a-silent-clipboard" ServedDuring 1 Keys shift+F10
Keys Escape
ClickAt "${addressField[@]}"
ServedDuring 5 Keys ctrl+v
OpenDialog "Clipboard" true
CloseDialog "Clipboard" "$window" Keys Return

TypeLocation / # the volume is left before it is unmounted
WaitForFolder /
Quit
EndRun
