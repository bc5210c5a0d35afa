# Configures once and builds. Sourced, not run.
# shellcheck shell=bash disable=SC2034

# How many tests run at a time: they mostly wait.
testsAtATime=$((2 * $(nproc)))

# From nothing, a build that joins the sources of each target takes a third of the time.
joined=(-DCMAKE_UNITY_BUILD=ON -DCMAKE_UNITY_BUILD_BATCH_SIZE=0)

# Configure PRESET [OPTION...] shows the chatter only when it fails.
Configure() {
    local log=build/$1-configuring.log
    mkdir -p build
    cmake --preset "$@" >"$log" 2>&1 || { cat "$log" >&2; return 1; }
}

# BuildPreset PRESET [TARGET...]: ninja itself configures again when a CMake file has changed, so a build that is up
# to date costs one look at the time stamps. The compiler's chatter is shown only when it fails.
BuildPreset() {
    local preset=$1 log
    shift
    mkdir -p "build/$preset"
    log="build/$preset/build.log"
    if [ ! -e "build/$preset/build.ninja" ]; then
        echo "Configuring the $preset build"
        cmake --preset "$preset" >"$log" 2>&1 || { cat "$log" >&2; return 1; }
        echo "Building it, which takes a few minutes"
    fi
    cmake --build --preset "$preset" ${1:+--target "$@"} >"$log" 2>&1 || { cat "$log" >&2; return 1; }
}

# CopyTree FOLDER: the sources as they are, committed or not, without what was built.
CopyTree() { mkdir -p "$1" && tar --create --exclude=./build --exclude=./.git . | tar --extract --directory="$1"; }
