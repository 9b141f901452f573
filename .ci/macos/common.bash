# Shared by the scripts of .github/workflows/macos.yml. They run with the bash of macOS, version 3.2, and against a
# stand-in for Apple's capture on Linux.
# shellcheck shell=bash

Fail() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# WaitFor SECONDS COMMAND...
WaitFor() {
    local left=$(($1 * 10))
    shift
    until "$@" >/dev/null 2>&1; do
        [[ $left -gt 0 ]] || return 1
        left=$((left - 1))
        sleep 0.1
    done
}

# Devices TOOL KIND: the numbers of the "video" or "audio" devices that it lists, with their names.
Devices() {
    { "$1" -f avfoundation -list_devices true -i " " 2>&1 || true; } |
        awk -v kind="$2" '/AVFoundation (video|audio) devices:/ { listed = $0 ~ kind; next } listed' |
        sed -n 's/^\[[^]]*\] \[\([0-9]*\)\] /\1 /p'
}

# Screen TOOL: the number of the first screen.
Screen() {
    Devices "$1" video | awk '/Capture screen/ { print $1; exit }'
}

# Record TOOL FILE INPUT [SECOND_INPUT]: starts a recording as the recorder does; keys are read from descriptor 8,
# messages are in FILE.log. Sets `recording` to its process.
Record() {
    local tool=$1 file=$2 first=$3 second=${4-}
    rm -f "$file" "$file.keys"
    mkfifo "$file.keys"
    "$tool" -f avfoundation -framerate 30 -i "$first" ${second:+-f avfoundation -i "$second"} -ar 44100 -r 29.97 \
        -preset ultrafast -max_muxing_queue_size 9999 -async 1 -pix_fmt yuv420p "$file" \
        <"$file.keys" >"$file.log" 2>&1 &
    recording=$!
    exec 8>"$file.keys"
}

HasBegunOrEnded() { [[ -s $1 ]] || ! kill -0 "$recording"; }

# Begins FILE
Begins() {
    WaitFor 40 HasBegunOrEnded "$1" || true
    [[ -s $1 ]] || Fail "the recording does not begin: $(cat "$1.log")"
}

# Stop: as the recorder's menu does.
Stop() {
    printf 'q\r\n' >&8
    wait "$recording" || Fail "the recording ends with code $?"
    exec 8>&-
}

# Streams FILE KIND: how many there are.
Streams() {
    ffprobe -v error -select_streams "$2" -show_entries stream=index -of csv=p=0 "$1" | grep -c .
}

# Lasts FILE SECONDS MOST: whether its length is between these.
Lasts() {
    ffprobe -v error -show_entries format=duration -of csv=p=0 "$1" |
        awk -v least="$2" -v most="$3" '{ exit !($1 >= least && $1 <= most) }'
}

Plays() {
    ffmpeg -nostdin -v error -xerror -i "$1" -f null - || Fail "$1 does not play"
}
