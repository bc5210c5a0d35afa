# The security editor worked with the keyboard alone: Tab goes through the controls in the order of their templates.
# Sourced, not run.
# shellcheck shell=bash

# The volume lists its names in order.
ShowInOrder() { Step "details" Keys alt+v d; }
SelectFolders() { Keys A shift+Down; }
ChoosePermissions() { Keys alt+p; }

TickDoNotShowAgain() { Keys space; }
CloseNotice() { Keys Return; }

# The sheet begins with its list; Add, Remove, Edit, the two boxes and the buttons follow.
ClickInherit() { Keys Tab Tab Tab space; } # an inherited entry cannot be removed
AnswerYes() { Keys alt+y; }
PressAdd() { Keys Tab space; }
TickReplace() { Times 5 Tab && Keys space; }
PressApply() { Keys alt+a; }
# The button takes a key as soon as all is counted.
AppliesAllTheSame() { Keys alt+l && HasNoWindow "What will happen"; }
ApplyAllTheSame() { WaitUntil "the losses to be accepted" AppliesAllTheSame; }
CancelSheet() { Keys Escape; }
AcceptSheet() { Keys Return; }
RemoveFirstEntry() { Keys Tab Tab space; }
EditFirstEntry() { Times 3 Tab && Keys space; }

# The picker begins with the edit field; Find and the list follow.
PressFind() { Keys Tab space; }
ChooseFoundAccount() { Keys Tab && xdotool type --delay 20 Users; }
AcceptAccount() { Keys Return; }
TypeAccount() { Keys ctrl+a && xdotool type --delay 20 "$1" && Keys Return; }

# The entry begins with the combo box; fourteen pairs of boxes, six ready-made sets, the children box, Clear All, the
# buttons and Change follow.
PressChange() { Keys shift+Tab space; }
TickAllowFullControl() { Keys Tab space; }
TickDenyDelete() { Times 21 Tab && Keys space; }
TickAllowReadAttributes() { Times 8 Tab && Keys space; }
ChooseFilesOnly() { Times 7 shift+Tab && Keys End; }
AcceptEntry() { Keys Return; }
PressClearAll() { Times 4 shift+Tab && Keys space; }
TickAllowReadPermissions() { Times 13 shift+Tab && Keys space; }
TickChildrenOnly() { Times 12 Tab && Keys space; }
