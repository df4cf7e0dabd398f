# SPDX-License-Identifier: MIT
# Finds out what is missing for a preset and installs the packages for it. Something counts as there
# when its command or file is, wherever it came from.

missing=()

need_command() {
    command -v "$1" >/dev/null || missing+=("$2")
}

need_file() {
    [ -e "$1" ] || missing+=("$2")
}

# True for a CMake that can read the presets.
cmake_is_recent() {
    local version
    version=$(cmake --version 2>/dev/null | sed -n '1s/[^0-9]*//p')
    [ -n "$version" ] && [ "$(printf '3.25\n%s\n' "$version" | sort -V | head -n 1)" = 3.25 ]
}

find_missing() {
    need_command g++ g++
    need_command clang++-14 clang-14 # whose messages and findings tests read
    need_command clang-format-14 clang-format-14 # a test compares the sources with what it makes
    cmake_is_recent || missing+=(cmake)
    need_command ninja ninja-build
    need_command make make
    need_command git git
    need_command script bsdutils
    need_command python3 python3
    need_command zsh zsh
    need_command fish fish
    need_command mandoc mandoc
    need_command m4 m4
    python3 -c 'import jinja2' 2>/dev/null || missing+=(python3-jinja2)
    need_command pkg-config pkg-config
    need_command abidiff abigail-tools
    need_command meson meson
    need_command localedef libc-bin
    need_file /usr/include/gtest/gtest.h libgtest-dev
    python3 -c 'import jsonschema' 2>/dev/null || missing+=(python3-jsonschema)
    need_file /usr/include/nlohmann/json.hpp nlohmann-json3-dev
    need_file /usr/include/benchmark/benchmark.h libbenchmark-dev
    need_file /usr/include/csv.h libcsv-dev
    need_file /usr/include/zlib.h zlib1g-dev
    case $1 in
        coverage) need_command gcovr gcovr ;;
        memcheck) need_command valgrind valgrind ;;
        docs)
            need_command pandoc pandoc
            need_command doxygen doxygen
            need_command chromium chromium
            ;;
        page)
            need_command node nodejs
            need_command npm npm
            need_command chromium chromium
            ;;
        editors)
            need_command vim vim
            need_command node nodejs
            need_command npm npm
            ;;
        fuzz | clang) need_clang ;;
        scale)
            need_command bazel bazel-bootstrap
            need_file /usr/sbin/nginx nginx
            ;;
        package)
            need_command lintian lintian
            need_command dpkg-shlibdeps dpkg-dev
            need_command fakeroot fakeroot
            [ "${TELV_DEBOOTSTRAP-}" != 1 ] || need_command debootstrap debootstrap
            ;;
        tidy)
            need_clang
            need_command clang-tidy-14 clang-tidy-14
            ;;
    esac
}

need_clang() {
    need_command clang++-14 clang-14
    compgen -G '/usr/lib/llvm-14/lib/clang/*/lib/linux/libclang_rt.fuzzer-*.a' >/dev/null ||
        missing+=(libclang-rt-14-dev)
}

install_missing() {
    find_missing "$1"
    install_packages
}

install_packages() {
    [ ${#missing[@]} -gt 0 ] || return 0
    if [ "$(id -u)" != 0 ]; then
        echo "Missing packages. As root: apt-get install ${missing[*]}" >&2
        return 1
    fi
    say "install: ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq
    apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

# The tools that scripts/bench compares with: from the system's packages, and in build/peers from
# npm's, by the lock file.
install_peers() {
    missing=()
    need_command m4 m4
    need_command gpp gpp
    need_command mcpp mcpp
    need_command cpp cpp
    need_command php php-cli
    need_command node nodejs
    need_command npm npm
    need_file /usr/lib/python3/dist-packages/jinja2 python3-jinja2
    need_file /usr/lib/python3/dist-packages/mako python3-mako
    install_packages
    if ! cmp -s bench/peers/package-lock.json build/peers/installed; then
        say "install: eta, ejs, nunjucks into build/peers"
        mkdir -p build/peers
        cp bench/peers/{package.json,package-lock.json,.npmrc} build/peers/
        npm --prefix build/peers ci --no-audit --no-fund
        cp bench/peers/package-lock.json build/peers/installed
    fi
}
