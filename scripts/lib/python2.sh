# SPDX-License-Identifier: MIT
# Python 2.7 for the build: an installation of pyenv or of the system when it has a shared library,
# else the packages of an older release of the system, from the machine's own mirror. They come
# through an apt directory of their own (the system's is not touched) and are only unpacked, into
# build/python2. When that fails it says so once and the bridge is left out of the build;
# `rm -r build/python2` lets the next setup try again.

python2_dir=$PWD/build/python2
python2_suite=bullseye
python2_packages=(libpython2.7 libpython2.7-minimal libpython2.7-stdlib libpython2.7-dev)

# Whether a prefix has the headers and the shared library.
has_python2() {
    [ -e "$1/include/python2.7/Python.h" ] || return 1
    compgen -G "$1/lib/libpython2.7.so.1.0" >/dev/null ||
        compgen -G "$1/lib/*/libpython2.7.so.1.0" >/dev/null
}

provide_python2() {
    local prefix
    for prefix in "${PYENV_ROOT:-${HOME:-/}/.pyenv}"/versions/2.7* /usr "$python2_dir/usr"; do
        if has_python2 "$prefix"; then
            return 0
        fi
    done
    if [ -e "$python2_dir/unavailable" ]; then
        echo "Python 2.7 is not available here ($(cat "$python2_dir/unavailable"));" \
            "building without it. To try again: rm -r build/python2"
        return 0
    fi
    say "Python 2.7: unpack the packages of $python2_suite into build/python2"
    rm -rf "$python2_dir"
    mkdir -p "$python2_dir"
    if ! download_python2 || ! unpack_python2 || ! try_python2; then
        rm -rf "$python2_dir/usr"
        echo "$python2_problem" >"$python2_dir/unavailable"
        echo "Python 2.7 could not be provided: $python2_problem. Building without it."
    fi
    rm -rf "$python2_dir/apt" "$python2_dir/packages"
}

python2_problem=

# The places that the machine's own configuration names for its release, one per line.
system_mirrors() {
    local codename
    codename=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
    {
        { cat /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null || true; } |
            sed -nE 's/^[[:space:]]*deb[[:space:]]+(\[[^]]*\][[:space:]]*)?//p' |
            awk -v codename="$codename" '$2 == codename { print $1 }'
        awk -v codename="$codename" '
            function Finish(  i) {
                if (wanted) for (i = 1; i <= count; i++) print uris[i]
                wanted = 0; count = 0; field = ""
            }
            FNR == 1 || /^[[:space:]]*$/ { Finish() }
            /^#/ { next }
            /^[A-Za-z-]+:/ { field = tolower($1); $1 = "" }
            field == "uris:" { for (i = 1; i <= NF; i++) uris[++count] = $i }
            field == "suites:" { for (i = 1; i <= NF; i++) if ($i == codename) wanted = 1 }
            END { Finish() }
        ' /dev/null $(compgen -G '/etc/apt/sources.list.d/*.sources' || true)
    } | grep -E '^(https?|ftp|file|mirror)' | awk '!seen[$0]++'
}

# apt-get with its lists, cache and state below build/python2.
private_apt() {
    local apt=$python2_dir/apt
    apt-get -qq \
        -o Dir::Etc::sourcelist="$apt/sources.list" -o Dir::Etc::sourceparts=- \
        -o Dir::State="$apt/state" -o Dir::State::status="$apt/status" \
        -o Dir::Cache="$apt/cache" -o APT::Sandbox::User= \
        -o Acquire::Check-Valid-Until=false -o Acquire::Languages=none \
        -o Acquire::Retries=2 -o Acquire::http::Timeout=30 -o Acquire::https::Timeout=30 "$@"
}

download_python2() {
    local apt=$python2_dir/apt keyring=/usr/share/keyrings/debian-archive-keyring.gpg
    local mirror options=
    command -v apt-get >/dev/null || { python2_problem="there is no apt-get"; return 1; }
    [ ! -e "$keyring" ] || options="[signed-by=$keyring] "
    mkdir -p "$apt/state/lists/partial" "$apt/cache/archives/partial" "$python2_dir/packages"
    : >"$apt/status"
    python2_problem="the machine's apt configuration names no mirror of its release"
    while read -r mirror; do
        echo "deb $options$mirror $python2_suite main" >"$apt/sources.list"
        python2_problem="the mirror has no packages of $python2_suite"
        private_apt update >&2 &&
            (cd "$python2_dir/packages" && private_apt download "${python2_packages[@]}" >&2) &&
            return 0
    done < <(system_mirrors)
    return 1
}

unpack_python2() {
    local package
    for package in "$python2_dir"/packages/*.deb; do
        dpkg-deb -x "$package" "$python2_dir" || {
            python2_problem="a package can't be unpacked"
            return 1
        }
    done
}

# Starts the unpacked interpreter in a process of its own, the way the library does it.
try_python2() {
    local library
    library=$(compgen -G "$python2_dir/usr/lib/*/libpython2.7.so.1.0" | head -n 1) || true
    python2_problem="the unpacked interpreter does not start"
    g++ -o "$python2_dir/try" scripts/lib/try_python2.cpp -ldl &&
        "$python2_dir/try" "$library" "$python2_dir/usr"
}
