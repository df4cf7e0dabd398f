# SPDX-License-Identifier: MIT
# What the scripts share. Sourced, never run: it moves to the top of the tree and stops at errors.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

say() {
    printf '\n== %s\n' "$*"
}

configure_preset() {
    local preset=$1
    mkdir -p build
    cmake --preset "$preset" >"build/$preset.configure.log" 2>&1 || {
        cat "build/$preset.configure.log" >&2
        return 1
    }
}

# Configures and builds a preset; further arguments go to the build (a target, say).
build_preset() {
    local preset=$1
    shift
    say "configure and build: $preset"
    configure_preset "$preset"
    grep -E '^-- Python 2.7|^CMake Warning' "build/$preset.configure.log" || true
    cmake --build --preset "$preset" -j "$(nproc)" "$@"
}

# Runs the tests of a preset; further arguments go to CTest. What it prints last is CTest's summary.
test_preset() {
    local preset=$1
    shift
    say "test: $preset"
    ctest --preset "$preset" -j "$(nproc)" "$@"
}
