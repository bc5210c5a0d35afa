# A desktop of the test's own: an X server without a screen and a window manager, or a Wayland compositor without one; and
# a home. Sourced, not run.
#
# Nothing here sleeps for a fixed time: every wait is for something that can be seen, and has a limit.
# shellcheck shell=bash

# Fail TEXT: ends the test with a picture of what there is.
Fail() {
    echo "FAILED: $1" >&2
    [ -z "${DISPLAY:-}" ] || import -silent -window root "$pictures/failure.png" || true
    exit 1
}

# WaitUntil TEXT COMMAND...: until the command succeeds.
waitLimit=60
WaitUntil() {
    local text=$1 deadline=$((SECONDS + waitLimit))
    shift
    until "$@" >/dev/null 2>&1; do
        [ $SECONDS -lt $deadline ] || Fail "waited $waitLimit seconds in vain: $text"
        sleep 0.05
    done
}

# StartDesktop FOLDER (light|dark|wayland): the home, its settings and the server's socket go into the folder.
StartDesktop() {
    local home=$1 colours=$2
    mkdir -p "$home/config" "$home/run"
    chmod 700 "$home/run"
    export HOME=$home XDG_CONFIG_HOME=$home/config XDG_STATE_HOME=$home/config/permora-state XDG_RUNTIME_DIR=$home/run QT_QPA_PLATFORM=xcb
    # No session bus here, and the toolkit would complain of it.
    export QT_LOGGING_RULES="qt.qpa.theme.dbus=false"
    unset DISPLAY WAYLAND_DISPLAY XDG_DATA_HOME XDG_CURRENT_DESKTOP QT_STYLE_OVERRIDE
    [ "$colours" != dark ] || UseDarkColours
    [ "$colours" != wayland ] || { StartWayland && return; }
    # The server keeps what it shows in a file, which tells sooner than a question whether it changed; the mouse is not in it.
    # Without -noreset the server starts anew when its last client leaves, and drops whoever is just connecting: the
    # window manager, if one of the programs that wait for it came and went before it.
    Xvfb -displayfd 5 -screen 0 1280x900x24 -nolisten tcp -noreset -nocursor -fbdir "$home" 5>"$home/display" >"$home/xvfb.log" 2>&1 &
    desktopPids=($!)
    screenFile=$home/Xvfb_screen0
    WaitUntil "the X server" test -s "$home/display"
    DISPLAY=:$(cat "$home/display")
    export DISPLAY
    openbox >"$home/openbox.log" 2>&1 &
    desktopPids+=($!)
    WaitUntil "the window manager" HasWindowManager
}

# StartWayland: a compositor that paints, but has neither keys nor a mouse. Only with --debug programs may take pictures.
StartWayland() {
    export QT_QPA_PLATFORM=wayland WAYLAND_DISPLAY=wayland-test
    weston --backend=headless-backend.so --use-pixman --width=1280 --height=900 --socket="$WAYLAND_DISPLAY" --debug \
        --idle-time=0 --no-config >"$HOME/weston.log" 2>&1 &
    desktopPids=($!)
    WaitUntil "the compositor" test -S "$XDG_RUNTIME_DIR/$WAYLAND_DISPLAY"
}

# StartAssistance: a session bus, over which programs tell assistive technology what they show.
StartAssistance() {
    dbus-daemon --session --nofork --nopidfile --print-address=5 5>"$HOME/bus" >"$HOME/bus.log" 2>&1 &
    desktopPids+=($!)
    WaitUntil "the session bus" test -s "$HOME/bus"
    DBUS_SESSION_BUS_ADDRESS=$(cat "$HOME/bus")
    export DBUS_SESSION_BUS_ADDRESS QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
    gdbus call --session --dest org.a11y.Bus --object-path /org/a11y/bus --method org.a11y.Bus.GetAddress >/dev/null ||
        Fail "there is no bus for assistive technology"
}

StopDesktop() {
    local pid
    for pid in "${desktopPids[@]}"; do
        kill "$pid" 2>/dev/null || true
        wait "$pid" 2>/dev/null || true
    done
}

HasWindowManager() { xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'; }

# The colours of a desktop by night, in the form in which Plasma tells them to its programs.
UseDarkColours() {
    export XDG_CURRENT_DESKTOP=KDE KDE_SESSION_VERSION=5
    local section
    {
        for section in Window View Button Tooltip; do
            printf '[Colors:%s]\nBackgroundNormal=35,38,41\nBackgroundAlternate=42,46,50\n' "$section"
            printf 'ForegroundNormal=239,240,241\nForegroundInactive=161,169,177\nForegroundLink=110,180,240\n\n'
        done
        printf '[Colors:Selection]\nBackgroundNormal=61,122,180\nForegroundNormal=255,255,255\n\n'
    } >"$XDG_CONFIG_HOME/kdeglobals"
}

# The whole screen as one number.
screenFile=
Screen() { sha1sum <"$screenFile"; }

# Whether the program or a part of its desktop is at work: what it works on may not be on the screen yet. Of each, the first
# thread counts, which is the one that draws.
IsBusy() {
    local pid state
    for pid in ${programPid:-} "${desktopPids[@]}"; do
        state=
        { read -r state <"/proc/$pid/stat"; } 2>/dev/null # number (name) state ...
        [[ ${state##*) } != [RD]* ]] || return 0
    done
    return 1
}

# Settle: until the screen stands still for a while and nobody is about to change it; its number is then in $shown.
shown=
timesStill=0
IsStill() {
    local now
    now=$(Screen)
    timesStill=$((timesStill + 1))
    [ "$now" = "$shown" ] && ! IsBusy || timesStill=0
    shown=$now
    [ $timesStill -ge 3 ]
}
Settle() { shown=; WaitUntil "the screen to stand still" IsStill; }

# Changed BEFORE: whether the screen is another than at that time.
Changed() { [ "$(Screen)" != "$1" ]; }

# Step NAME COMMAND...: does something that must change what is on the screen, waits until it has, and takes a picture.
pictureCount=0
Step() {
    local name=$1 before
    shift
    Settle
    before=$shown
    "$@"
    WaitUntil "a change by: $name" Changed "$before"
    Settle
    Picture "$name"
}

# Picture NAME [WINDOW]: of the window alone, or of the whole screen.
Picture() {
    NamePicture "$1"
    import -silent -window "${2:-root}" "$picture"
}
# NamePicture NAME: the file of the next one is then $picture.
picture=
NamePicture() {
    pictureCount=$((pictureCount + 1))
    picture=$pictures/$(printf '%02d' $pictureCount)-$1.png
}

Keys() { xdotool key --delay 20 "$@"; }
# Times N KEY: the key N times, which may be none.
Times() {
    local keys=() i
    for ((i = 0; i < $1; i++)); do keys+=("$2"); done
    [ ${#keys[@]} = 0 ] || Keys "${keys[@]}"
}

# ClickIn WINDOW X Y [CLICK...]: pixels from the window's top left corner; how to click, if not once and left, in the
# words of xdotool.
ClickIn() {
    local window=$1 x=$2 y=$3
    shift 3
    [ $# -gt 0 ] || set -- 1
    xdotool mousemove --sync --window "$window" "$x" "$y" click "$@"
}
ClickAt() { ClickIn "$window" "$@"; }

# HasWindow TITLE: a visible window of exactly this title; its id is then in $found.
found=
HasWindow() { found=$(xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | tail -n 1); [ -n "$found" ]; }
# HasWindowLike BEGINNING: the same of one whose title begins so.
HasWindowLike() { HasWindow "$1.*"; }
HasNoWindow() { ! HasWindow "$1"; }
IsActive() { [ "$(xdotool getactivewindow 2>/dev/null)" = "$1" ]; }
