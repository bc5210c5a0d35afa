# The security editor worked with the mouse; only names are typed. Sourced, not run.
# shellcheck shell=bash

# Away from everything, so that nothing is lit up under the pointer when a picture is taken.
PutMouseAway() { xdotool mousemove --sync 1278 898; }

# ClickPlace X Y [CLICK...]: in the dialog, in pixels.
ClickPlace() { ClickIn "$dialog" "$@" && PutMouseAway; }
DoubleClick=(--repeat 2 --delay 50 1)

InNotice() { ClickInTemplate 260 84 "$@" && PutMouseAway; }
InPicker() { ClickInTemplate 230 292 "$@" && PutMouseAway; }
InEntry() { ClickInTemplate 316 278 "$@" && PutMouseAway; }
# InEntryRow ROW COLUMN: a box.
InEntryRow() { InEntry "$2" $((63 + 12 * $1)); }
allowColumn=167 denyColumn=207

# A dialog unit of the sheet, in thousandths of a pixel: learnt from the notice before it.
LearnUnit() {
    Measure "$dialog"
    unitWide=$((1000 * WIDTH / 260)) unitHigh=$((1000 * HEIGHT / 84))
}
# FromSheetCorner X Y [CLICK...]: dialog units from the lower right corner, where the buttons are.
FromSheetCorner() {
    dialog=$sheet
    Measure "$sheet"
    ClickPlace $((WIDTH - $1 * unitWide / 1000)) $((HEIGHT - $2 * unitHigh / 1000)) "${@:3}"
}
# InPage X Y [CLICK...]: on the page of the sheet, whose template is 368 by 236 units; its lower right corner is
# the margin, the row of buttons and the tabs' frame of two pixels away from the sheet's.
InPage() { FromSheetCorner $((368 - $1 + 8)) $((236 - $2 + 29)) "${@:3}"; }

# The names in order: by a click on the list's first header.
ShowInOrder() {
    Step "details" Keys alt+v d
    ClickAt 60 66
    Settle
}
SelectFolders() {
    ClickAt 45 84
    xdotool keydown ctrl
    ClickAt 45 102
    xdotool keyup ctrl
}
ChoosePermissions() {
    ClickAt 156 36 # the key in the toolbar
    PutMouseAway
}

TickDoNotShowAgain() { InNotice 41 51; }
CloseNotice() { LearnUnit && InNotice 228 70; }

ClickInherit() { InPage 13 186; }
AnswerYes() { Measure "$dialog" && ClickPlace $((WIDTH - 222)) $((HEIGHT - 22)); }
PressAdd() { InPage 32 165; }
TickReplace() { InPage 60 208; } # the upper part of its first line
PressApply() { FromSheetCorner 32 14; }
ApplyAllTheSame() { ClickInTemplate 420 246 334 232 && PutMouseAway; }
CancelSheet() { FromSheetCorner 86 14; }
AcceptSheet() { FromSheetCorner 140 14; }
RemoveFirstEntry() { InPage 60 35 && InPage 86 165; }
EditFirstEntry() { InPage 60 35 "${DoubleClick[@]}"; }

PressFind() { InPicker 198 48; }
ChooseFoundAccount() { InPicker 60 90; } # the first one
AcceptAccount() { InPicker 60 90 "${DoubleClick[@]}"; }
TypeAccount() {
    InPicker 80 48
    Keys ctrl+a
    xdotool type --delay 20 "$1"
    InPicker 144 278
}

PressChange() { InEntry 284 14; }
TickAllowFullControl() { InEntryRow 0 $allowColumn; }
TickDenyDelete() { InEntryRow 10 $denyColumn; }
TickAllowReadAttributes() { InEntryRow 3 $allowColumn; }
TickAllowReadPermissions() { InEntryRow 11 $allowColumn; }
ChooseFilesOnly() { InEntry 142 32 --repeat 5 --delay 50 5; } # with the wheel
TickChildrenOnly() { InEntry 12 235; }
PressClearAll() { InEntry 32 264; }
AcceptEntry() { InEntry 230 264; }
