# Drives the real program's window from outside. Source it after common.bash, within scripts/virtual-desktop.
# shellcheck shell=bash disable=SC2154,SC2317 # project; functions are called through WaitFor

title='^Lumenfold Screen Recorder$'
started=()
trap EndStarted EXIT

# By process id. ffplay may hang when its window and sound disappear at once.
EndStarted() {
    local process
    kill "${started[@]}" 2>/dev/null || true
    for process in "${started[@]}"; do
        HasEnded() { ! kill -0 "$process"; }
        WaitFor 3 HasEnded || kill -KILL "$process" 2>/dev/null || true
    done
}

Window() { xdotool search --onlyvisible --name "$title"; }
WindowIsHidden() { ! Window; }

# The window's content, grabbed with x11grab.
Grab() {
    local x y
    x=$(xwininfo -id "$window" | awk '/Absolute upper-left X/ { print $NF }')
    y=$(xwininfo -id "$window" | awk '/Absolute upper-left Y/ { print $NF }')
    ffmpeg -v error -y -f x11grab -draw_mouse 0 -video_size 1000x600 -i "$DISPLAY+$x,$y" \
        -frames:v 1 "$@"
}
Look() { Grab -f md5 -; }

# The window has changed and is not being painted any more.
before=
Changed() {
    local now
    now=$(Look)
    [[ $now != "$before" && $now == "$(Look)" ]]
}

# Place WIDGET: its position from scripts/ui-positions.
Place() { awk -v name="$1" '$1 == name { print $2, $3 }' "$project/scripts/ui-positions"; }

# Press X Y: clicks there. Then moves the pointer away, so that nothing is highlighted.
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

# StartRecorder BIN_FOLDER: starts a copy, to avoid the user's settings.
StartRecorder() {
    if [[ ! -d $LUMENFOLD_DESKTOP_FOLDER/bin ]]; then
        cp -r "$1" "$LUMENFOLD_DESKTOP_FOLDER/bin"
    fi
    cd "$LUMENFOLD_DESKTOP_FOLDER" || exit
    Launch "$LUMENFOLD_DESKTOP_FOLDER/bin/lumenfold-recorder" start
}

# Launch COMMAND...: starts the recorder and waits for its home page.
Launch() {
    "$@" &
    recorder=$!
    started+=("$recorder")
    WindowOrEnd() { Window || ! kill -0 "$recorder"; }
    WaitFor 30 WindowOrEnd || Fail "the window does not appear"
    window=$(Window) || Fail "the program ended without a window"
    xdotool mousemove 0 799
    WaitFor 10 Changed || Fail "the home page does not appear"
}

# On the record page, chooses the second source, computer sounds.
ChooseComputerSound() {
    PressAt record.audio
    WaitFor 10 Changed || Fail "the sound sources do not open"
    before=$(Look)
    xdotool key Home Down Return
    WaitFor 10 Changed || Fail "the sound source is not chosen"
}

# Shows and plays a test movie.
PlayTestPicture() {
    ffplay -v quiet -f lavfi -left 40 -top 40 -window_title "Test picture" \
        "testsrc2=size=960x540:rate=30[out0];sine=frequency=440:beep_factor=4[out1]" &
    started+=($!)
    PictureMoves() { xdotool search --onlyvisible --class ffplay; }
    WaitFor 10 PictureMoves || Say "No test picture: the recording shows an empty screen."
}

# Chooses Stop in the tray menu and waits until the file is finished.
StopInTray() {
    OurWindows() { xdotool search --onlyvisible --class '^lumenfold-recorder$'; }
    WaitFor 10 OurWindows || Fail "there is no tray icon"
    local icon menu WIDTH HEIGHT
    icon=$(OurWindows) # the main window is hidden
    xdotool mousemove --window "$icon" 10 10 click 3
    Menu() { OurWindows | grep -vx "$icon"; }
    WaitFor 10 Menu || Fail "the tray icon's menu does not open"
    menu=$(Menu)
    eval "$(xdotool getwindowgeometry --shell "$menu" | grep -E '^(WIDTH|HEIGHT)=[0-9]+$')"
    xdotool mousemove --window "$menu" $((WIDTH / 2)) $((HEIGHT / 2)) click 1 # the second of three entries
    WaitFor 10 Window || Fail "the window does not come back"
    ToolHasEnded() { [[ -z $(cat "/proc/$recorder/task/$recorder/children") ]]; }
    WaitFor 20 ToolHasEnded || Fail "the file is not finished"
}

# Activate: between two active windows xdotool reports a failure.
Activate() { WaitFor 10 xdotool windowactivate --sync "$window" || Fail "the window does not become active"; }

# CloseRecorder: like the title bar's close button; waits until the program has ended.
CloseRecorder() {
    Activate
    xdotool key alt+F4
    Ended() { ! kill -0 "$recorder"; }
    WaitFor 20 Ended || Fail "the program does not end"
}
