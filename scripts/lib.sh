# shellcheck shell=bash
# Shell functions shared by the commands in the root folder and in scripts/.
# Sourced, never run. Sets the strict mode for whoever sources it.

set -euo pipefail

# Where nobody sets it, for instance in a build service, the user's entry tells.
HOME=${HOME:-$(getent passwd "$(id -u)" | cut -d : -f 6 || true)}
export HOME
# What is fetched or built once for a machine, whatever becomes of this tree.
# shellcheck disable=SC2034  # for those who source this
VX_CACHE=${VX_CACHE_DIR:-${XDG_CACHE_HOME:-${HOME:-/nonexistent}/.cache}/vxdssource}

VX_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
VX_BUILD=$VX_ROOT/build
VX_LOGS=$VX_BUILD/logs

# Process groups started by start_group and not ended yet.
VX_GROUPS=()
# Whether a group is being started that is not in the list yet, and the exit code of a signal that came meanwhile.
VX_STARTING=''
VX_SIGNALLED=''

# Chosen: often enough to see that it lives, seldom enough for a log file.
VX_PROGRESS_SECONDS=15

say() { printf '%s\n' "$*"; }

# One line that names the thing and the remedy; nothing else is printed after it.
fail() {
    printf 'error: %s\n' "$*" >&2
    exit 1
}

# The second question is for a folder that is there already, in a tree that may only be read.
{ mkdir -p "$VX_LOGS" 2>/dev/null && [ -w "$VX_LOGS" ]; } ||
    fail "cannot write to $VX_LOGS: make room on its disk, or use a tree that you may write to, and run again"

# Starts a command or a function as a process group of its own (which is what job control does), so
# that it can be ended together with whatever it started. The group's id is left in VX_STARTED.
start_group() {
    VX_STARTING=1
    set -m
    "$@" &
    VX_STARTED=$!
    set +m
    VX_GROUPS+=("$VX_STARTED")
    VX_STARTING=''
    [ -z "$VX_SIGNALLED" ] || exit "$VX_SIGNALLED"
}

forget_group() {
    local kept=() group
    for group in "${VX_GROUPS[@]}"; do
        [ "$group" = "$1" ] || kept+=("$group")
    done
    VX_GROUPS=("${kept[@]}")
}

# Chosen: long enough for a group that has to end groups of its own.
VX_STOP_SECONDS=10

# Ends one group: asks first, insists when it takes too long.
stop_group() {
    local group=$1 tenths=0
    kill -TERM -- "-$group" 2>/dev/null || true
    while kill -0 -- "-$group" 2>/dev/null && [ "$tenths" -lt "${VX_STOP_SECONDS}0" ]; do
        sleep 0.1
        tenths=$((tenths + 1))
    done
    kill -KILL -- "-$group" 2>/dev/null || true
    wait "$group" 2>/dev/null || true
    forget_group "$group"
}

# Ends the groups in the reverse order of their start: what was started last may need the others.
stop_all_groups() {
    local index
    for ((index = ${#VX_GROUPS[@]} - 1; index >= 0; index--)); do
        stop_group "${VX_GROUPS[index]}"
    done
}

# Calls the given function once at the end, however the script ends.
at_end() {
    # shellcheck disable=SC2064  # the name is wanted now, not when the signal comes
    trap "$1" EXIT
    trap 'end_by_signal 130' INT
    trap 'end_by_signal 143' TERM HUP
}

# A group that starts just now is ended, too: its start is finished first, or it would be in no list.
end_by_signal() {
    if [ -n "$VX_STARTING" ]; then VX_SIGNALLED=$1; else exit "$1"; fi
}

# The newest "[done/total]" of a build log, or nothing.
progress_of() { tail -c 4096 "$1" 2>/dev/null | grep -oE '^\[ *[0-9]+[/%][^]]*\]' | tail -n 1 || true; }

# run_step TITLE LOG COMMAND...: runs a long command or function with its output in LOG, says now and
# then that it is still alive, and ends with the seconds it took. On failure the end of the log is shown, and the error
# names the remedy in VX_REMEDY, if the caller has set one (VX_REMEDY=... run_step ...).
run_step() {
    local title=$1 log=$2 started=$SECONDS said=$SECONDS status=0 group
    shift 2
    mkdir -p "$(dirname "$log")"
    start_group "$@" >"$log" 2>&1 </dev/null
    group=$VX_STARTED
    while kill -0 "$group" 2>/dev/null; do
        sleep 0.2
        if [ $((SECONDS - said)) -ge "$VX_PROGRESS_SECONDS" ]; then
            said=$SECONDS
            say "    $title: $((said - started)) s $(progress_of "$log")"
        fi
    done
    wait "$group" || status=$?
    forget_group "$group"
    if [ "$status" -ne 0 ]; then
        tail -n "${VX_TAIL_LINES:-25}" "$log" >&2
        fail "$title failed${VX_REMEDY:+: $VX_REMEDY}; the whole output is in $log"
    fi
    say "  $title: done in $((SECONDS - started)) s"
}

# The remedy of steps that fetch something.
# shellcheck disable=SC2034  # for those who source this
VX_CHECK_NETWORK="check the network and run again"

# need_disk DIRECTORY GIBIBYTES: the directory's nearest existing parent decides.
need_disk() {
    local directory=$1 wanted=$2 free
    while [ ! -d "$directory" ]; do directory=$(dirname "$directory"); done
    free=$(df --output=avail -B 1M "$directory" | tail -n 1)
    [ "$free" -ge $((wanted * 1024)) ] ||
        fail "only $free MiB are free under $directory, $wanted GiB are needed: make room and run again"
}

# Chosen: both presets with their tests take 1.5 GiB.
VX_BUILD_GIB=2

# is_built FOLDER [TARGET...]: whether building would write nothing. A step that checks something has to be done each
# time and is known by its first word.
is_built() {
    local plan
    plan=$(ninja -C "$1" -n "${@:2}" 2>/dev/null) || return 1
    ! grep -E '^\[[0-9]+/[0-9]+\] ' <<<"$plan" | grep -qvE '^\S+ Checking '
}

# build_preset PRESET [TARGET...]: configures when needed and builds. Asks for room only when there is something to do.
build_preset() {
    local preset=$1 folder=$VX_BUILD/$1 targets=() options=() inputs
    shift
    [ $# -eq 0 ] || targets=(--target "$@")
    # Only ./demo does without the libraries that tests and benchmarks are built with.
    [ -d "$VX_BUILD/third-party/windows/include/gtest" ] || options=(-DBUILD_TESTING=OFF -DVX_BENCHMARKS=OFF)
    # Ninja runs CMake again by itself when a CMake file changed; these decide how a folder starts.
    inputs=$({
        cat "$VX_ROOT/CMakePresets.json" "$VX_ROOT/cmake/mingw-w64.cmake"
        readlink "$VX_BUILD/third-party"
    } | sha256sum)
    if [ ! -f "$folder/build.ninja" ] || [ "$(cat "$folder/vx-inputs" 2>/dev/null)" != "$inputs" ]; then
        need_disk "$VX_BUILD" "$VX_BUILD_GIB"
        run_step "configure $preset" "$VX_LOGS/configure-$preset.log" \
            cmake -S "$VX_ROOT" --preset "$preset" --fresh "${options[@]}"
        printf '%s\n' "$inputs" >"$folder/vx-inputs"
    elif ! is_built "$folder" "${targets[@]:1}"; then
        need_disk "$VX_BUILD" "$VX_BUILD_GIB"
    fi
    run_step "build $preset" "$VX_LOGS/build-$preset.log" \
        cmake --build "$folder" --parallel "$(nproc)" "${targets[@]}"
}

# What a world of its own is made of: network, process numbers, and what /proc shows of them.
VX_NAMESPACES=(--net --pid --fork --kill-child --mount-proc)
[ "$(id -u)" -eq 0 ] || VX_NAMESPACES+=(--map-root-user)

in_own_namespaces() { unshare "${VX_NAMESPACES[@]}" "$@"; }

# Ends with an error where no network of our own can be made. Asked before the long steps, too.
need_own_network() {
    [ -z "${VX_HOST_NETWORK:-}" ] ||
        fail "VX_HOST_NETWORK is for ./demo only, this looks for cameras on every network it sees: unset it"
    in_own_namespaces true 2>/dev/null ||
        fail "this system allows no network of our own, and nothing may be sent to yours: run as root, in a" \
            "container that may make namespaces (--privileged), or allow unprivileged user namespaces"
}

# run_in_own_world [--or-host-network] COMMAND...: runs a command inside scripts/own-world; ends it, too, when this
# script has to end.
run_in_own_world() {
    local status=0
    start_group "$VX_ROOT/scripts/own-world" "$@" </dev/null
    wait "$VX_STARTED" || status=$?
    forget_group "$VX_STARTED"
    return "$status"
}
