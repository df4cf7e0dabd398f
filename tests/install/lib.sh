# SPDX-License-Identifier: MIT
# What the scripts of this folder share. Expects TELV_SOURCE, TELV_BUILD and TELV_CXX.
set -euo pipefail

host=$TELV_SOURCE/tests/install/host

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# Runs a command and shows what it printed only when it fails.
quietly() {
    local out
    out=$("$@" 2>&1) || {
        printf '%s\n' "$out" >&2
        fail "$*"
    }
}

# Configures, builds and runs the host project in DIR; further arguments go to CMake.
build_host() {
    local dir=$1
    shift
    quietly cmake -S "$host" -B "$dir" -G Ninja -DCMAKE_CXX_COMPILER="$TELV_CXX" "$@"
    quietly cmake --build "$dir" -j "$(nproc)"
    quietly ctest --test-dir "$dir" --no-tests=error
}

# Builds and runs the host project in DIR with make and the pkg-config files below PREFIX.
build_pkgconfig_host() {
    local dir=$1 prefix=$2
    rm -rf "$dir"
    cp -r "$host" "$dir"
    PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name tlMacroExpander.pc)") \
        quietly make -C "$dir" CXX="$TELV_CXX" check
}
