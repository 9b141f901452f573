# The real program's window, pressed and looked at from outside; to be sourced after common.bash, within
# scripts/virtual-desktop.
# shellcheck shell=bash disable=SC2154,SC2317 # project; functions are called through WaitFor

title='^Lumenfold Screen Recorder$'
started=()
trap 'kill "${started[@]}" 2>/dev/null || true' EXIT

Window() { xdotool search --onlyvisible --name "$title"; }
WindowIsHidden() { ! Window; }

# The window's inside, as x11grab wants it.
Grab() {
    local x y
    x=$(xwininfo -id "$window" | awk '/Absolute upper-left X/ { print $NF }')
    y=$(xwininfo -id "$window" | awk '/Absolute upper-left Y/ { print $NF }')
    ffmpeg -v error -y -f x11grab -draw_mouse 0 -video_size 1000x600 -i "$DISPLAY+$x,$y" \
        -frames:v 1 "$@"
}
Look() { Grab -f md5 -; }

# The window shows something else than before, and is not being drawn any more.
before=
Changed() {
    local now
    now=$(Look)
    [[ $now != "$before" && $now == "$(Look)" ]]
}

# Place WIDGET: one of scripts/ui-positions.
Place() { awk -v name="$1" '$1 == name { print $2, $3 }' "$project/scripts/ui-positions"; }

# Press X Y: in the window. The pointer leaves, so that nothing is lit by it.
Press() {
    before=$(Look)
    xdotool mousemove --window "$window" "$1" "$2" click 1 mousemove 0 799
}

# PressAt WIDGET [PIXELS BELOW IT]
PressAt() {
    local x y
    read -r x y < <(Place "$1")
    Press "$x" $((y + ${2:-0}))
}

# PressBetween WIDGET WIDGET PERCENT: of the way from one to the other.
PressBetween() {
    local x y end
    read -r x y < <(Place "$1")
    read -r end _ < <(Place "$2")
    Press $((x + (end - x) * $3 / 100)) "$y"
}

# StartRecorder BIN_FOLDER: a copy, so that no settings of the user's lie beside it.
StartRecorder() {
    if [[ ! -d $LUMENFOLD_DESKTOP_FOLDER/bin ]]; then
        cp -r "$1" "$LUMENFOLD_DESKTOP_FOLDER/bin"
    fi
    cd "$LUMENFOLD_DESKTOP_FOLDER" || exit
    "$LUMENFOLD_DESKTOP_FOLDER/bin/lumenfold-recorder" start &
    recorder=$!
    started+=("$recorder")
    WaitFor 30 Window || Fail "the window does not come"
    window=$(Window)
    xdotool mousemove 0 799
    WaitFor 10 Changed || Fail "the home page does not come"
}
