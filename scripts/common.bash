# Shared by the project's scripts. Source it from bash.
# shellcheck shell=bash

project=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

Say() {
    printf '== %s\n' "$*"
}

Fail() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# As root, or through sudo.
AsRoot() {
    if [[ $EUID -eq 0 ]]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        Fail "this needs root rights and there is no sudo. As root, run: $*"
    fi
}

# InstallPackages GROUP...: installs missing packages of these groups of scripts/packages-debian. If none is
# missing, only queries the package database.
InstallPackages() {
    if [[ $(uname) == Darwin ]]; then
        InstallHomebrew
        return
    fi
    if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
        Say "No apt here: what scripts/packages-debian lists must be installed by hand."
        return
    fi
    local group package missing=()
    local -A installed=()
    while read -r package; do
        installed[$package]=1
    done < <(dpkg-query -W -f '${db:Status-Status} ${Package}\n' | sed -n 's/^installed //p')
    while read -r group package; do
        if [[ " $* " == *" $group "* && -z ${installed[$package]-} ]]; then
            missing+=("$package")
        fi
    done <"$project/scripts/packages-debian"
    if [[ ${#missing[@]} -eq 0 ]]; then
        return
    fi
    Say "Installing with apt: ${missing[*]}"
    AsRoot apt-get update -q
    AsRoot env DEBIAN_FRONTEND=noninteractive \
        apt-get install -q -y --no-install-recommends "${missing[@]}"
    installed_something=1
}

# Never run on a Mac.
InstallHomebrew() {
    command -v brew >/dev/null || Fail "Homebrew is needed: https://brew.sh"
    local formula missing=()
    for formula in qt cmake ninja ffmpeg librsvg; do
        brew list --versions "$formula" >/dev/null || missing+=("$formula")
    done
    if [[ ${#missing[@]} -gt 0 ]]; then
        Say "Installing with Homebrew: ${missing[*]}"
        brew install "${missing[@]}"
    fi
    CMAKE_PREFIX_PATH=$(brew --prefix qt)
    export CMAKE_PREFIX_PATH
}

# BuildPreset PRESET [TARGET...]: builds in build/PRESET. Configures first if that was not done yet or could
# find more now. Ninja itself configures again after a change of a CMake file.
BuildPreset() {
    local preset=$1
    local folder=$project/build/$preset
    shift
    (
        cd "$project" || exit
        if [[ ! -f $folder/build.ninja || -n ${installed_something-} ]]; then
            mkdir -p "$project/build"
            cmake --preset "$preset" >"$folder.log" 2>&1 || {
                cat "$folder.log"
                exit 1
            }
        fi
        cmake --build "$folder" ${1:+--target "$@"}
    )
}

# WaitFor SECONDS COMMAND...: waits until the command succeeds. Fails after a timeout.
WaitFor() {
    local end=$((${EPOCHREALTIME//[^0-9]/} + $1 * 1000000))
    shift
    until "$@" >/dev/null 2>&1; do
        if [[ ${EPOCHREALTIME//[^0-9]/} -ge $end ]]; then
            return 1
        fi
        sleep 0.02
    done
}
