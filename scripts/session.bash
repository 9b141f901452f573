# Shared by scripts/virtual-desktop, wayland-desktop and gnome-desktop: the servers of a session of their own.
# Source it from bash.
# shellcheck shell=bash
# shellcheck disable=SC2317 # functions are called by traps and through WaitFor
# shellcheck source-path=SCRIPTDIR source=common.bash
source "$(dirname "${BASH_SOURCE[0]}")/common.bash"

servers=()
command=

# NeedPrograms NAME...
NeedPrograms() {
    local program
    for program in "$@" pulseaudio pactl setpriv; do
        command -v "$program" >/dev/null || Fail "$program is not installed"
    done
}

# MakeSession: a folder for what the session's servers leave, and an environment that knows nothing of the
# user's session.
MakeSession() {
    folder=$(mktemp -d "${TMPDIR:-/tmp}/lumenfold-desktop.XXXXXX")
    trap CleanUp EXIT
    trap 'Interrupt 1' HUP
    trap 'Interrupt 2' INT
    trap 'Interrupt 15' TERM
    mkdir -m 700 "$folder/home" "$folder/runtime"
    export XDG_RUNTIME_DIR=$folder/runtime
    unset DBUS_SESSION_BUS_ADDRESS SESSION_MANAGER DISPLAY WAYLAND_DISPLAY WAYLAND_SOCKET XAUTHORITY \
        XDG_CURRENT_DESKTOP XDG_SESSION_TYPE XDG_CONFIG_HOME XDG_CACHE_HOME QT_QPA_PLATFORM QT_QPA_PLATFORMTHEME \
        QT_STYLE_OVERRIDE QT_SCALE_FACTOR PULSE_SINK PULSE_SOURCE
    # No message bus: the tray icon should be an X11 one, not that of a desktop shell.
    export DBUS_SESSION_BUS_ADDRESS=unix:path=$folder/no-bus DBUS_SYSTEM_BUS_ADDRESS=unix:path=$folder/no-bus
    export NO_AT_BRIDGE=1 LC_ALL=C.UTF-8
    export LUMENFOLD_DESKTOP_FOLDER=$folder
}

# Ends what was started, in reverse order, by process id.
CleanUp() {
    trap '' HUP INT TERM
    local i
    for ((i = ${#servers[@]} - 1; i >= 0; --i)); do
        kill -TERM "${servers[i]}" 2>/dev/null || continue
        WaitFor 3 Ended "${servers[i]}" || kill -KILL "${servers[i]}" 2>/dev/null || true
        wait "${servers[i]}" 2>/dev/null || true
    done
    rm -rf "$folder"
}
Ended() { ! kill -0 "$1"; }

# Passes a signal on to the command. The desktop ends when the command has.
Interrupt() {
    if [[ -n $command ]]; then
        kill -TERM "$command" 2>/dev/null || true
        wait "$command" || true
    fi
    exit $((128 + $1))
}

# Start NAME COMMAND...: in the background. The kernel ends it if this script is killed.
Start() {
    local name=$1
    shift
    HOME=$folder/home setsid "${as_user[@]}" setpriv --pdeathsig TERM "$@" >"$folder/$name.log" 2>&1 </dev/null &
    servers+=($!)
}
as_user=() # what changes the user of what is started

# NeedsReady NAME COMMAND...: waits until the command succeeds. Shows the server's log if it never does.
NeedsReady() {
    local name=$1
    shift
    if ! WaitFor 30 "$@"; then
        cat "$folder/$name.log" >&2
        Fail "$name did not get ready"
    fi
}

# StartSound, and later AwaitSound: an output "speaker" and a microphone "microphone", which hears what is played
# to the output "mic_in".
StartSound() {
    export PULSE_SERVER=unix:$XDG_RUNTIME_DIR/sound PULSE_COOKIE=$folder/cookie
    cat >"$folder/pulse.pa" <<END
load-module module-native-protocol-unix auth-anonymous=1 socket=$XDG_RUNTIME_DIR/sound
load-module module-null-sink sink_name=speaker sink_properties=device.description=Speaker
load-module module-null-sink sink_name=mic_in sink_properties=device.description=Voice
load-module module-remap-source source_name=microphone master=mic_in.monitor source_properties=device.description=Microphone
set-default-sink speaker
set-default-source microphone
END
    Start pulseaudio pulseaudio -n --file="$folder/pulse.pa" --daemonize=no --use-pid-file=no \
        --system=false --exit-idle-time=-1 --disallow-exit --realtime=false --high-priority=no \
        --log-target=stderr
}
MicrophoneListens() { pactl list short sources | grep -qw microphone; }
AwaitSound() { NeedsReady pulseaudio MicrophoneListens; }

# StartBus: a session bus in the runtime directory, as a login makes it.
StartBus() {
    export DBUS_SESSION_BUS_ADDRESS=unix:path=$XDG_RUNTIME_DIR/bus
    Start dbus-daemon dbus-daemon --session --nofork --nopidfile --address="$DBUS_SESSION_BUS_ADDRESS"
    NeedsReady dbus-daemon OnBus org.freedesktop.DBus
}
# OnBus NAME: whether somebody has this name.
OnBus() {
    "${as_user[@]}" dbus-send --session --print-reply=literal --dest=org.freedesktop.DBus / \
        org.freedesktop.DBus.NameHasOwner string:"$1" 2>&1 | grep -qw true
}

# StartPipeWire, for pictures: PulseAudio keeps the sound.
StartPipeWire() {
    Start pipewire pipewire
    NeedsReady pipewire test -S "$XDG_RUNTIME_DIR/pipewire-0"
    Start wireplumber wireplumber
}

# StartPortal NAME COMMAND...: the desktop's portal with this backend, an XDG_CURRENT_DESKTOP in lower case.
StartPortal() {
    local name=$1
    shift
    mkdir "$folder/portals"
    cp "/usr/share/xdg-desktop-portal/portals/$name.portal" "$folder/portals"
    Start portal-backend "$@"
    NeedsReady portal-backend OnBus "org.freedesktop.impl.portal.desktop.$name"
    export LUMENFOLD_PORTAL_BACKEND=${servers[-1]}
    Start portal env XDG_DESKTOP_PORTAL_DIR="$folder/portals" /usr/libexec/xdg-desktop-portal --verbose
    NeedsReady portal OnBus org.freedesktop.portal.Desktop
}

# RunCommand COMMAND...: runs it in the session and exits with its exit code.
RunCommand() {
    # Background jobs of a script ignore interrupts by default.
    env --default-signal=INT,QUIT "$@" <&0 &
    command=$!
    local result=0
    wait "$command" || result=$?
    command=
    exit "$result"
}
