# Sourced by the commands: finds tools, and installs Debian's packages for those that are missing
# when this account may.

# missing_packages PACKAGE... prints those that aren't installed.
missing_packages() {
    local package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || printf '%s ' "$package"
    done
}

# have_packages WHAT PACKAGE... : true when all are there, after an attempt to install the missing
# ones; else one line that names them.
have_packages() {
    local what=$1 missing log
    shift
    missing=$(missing_packages "$@")
    [ -z "$missing" ] && return 0
    if [ "$(id -u)" = 0 ] && command -v apt-get >/dev/null; then
        log=$(mktemp)
        echo "installing $missing" >&2
        # shellcheck disable=SC2086
        { apt-get update && DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing; } >"$log" 2>&1
        missing=$(missing_packages "$@")
        [ -z "$missing" ] && rm -f "$log" && return 0
        tail -n 3 "$log" >&2
        rm -f "$log"
    fi
    echo "$what needs these packages: $missing(apt-get install $missing)" >&2
    return 1
}

host_packages=(cmake ninja-build g++ libgtest-dev libexpat1-dev libedit-dev binutils-mingw-w64-x86-64)
windows_packages=(cmake ninja-build g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 libgtest-dev)
wine_packages=(wine64 wine)
picture_packages=(xvfb xauth imagemagick fonts-liberation fonts-wine)
fuzz_packages=(clang libclang-rt-14-dev)
style_packages=(clang-format clang-tidy)

# build PRESET [TARGET...]: configures when needed and builds, quietly unless it fails.
build() {
    local preset=$1 log=build/$1.log
    shift
    mkdir -p build
    if ! { cmake --preset "$preset" && cmake --build --preset "$preset" "${@/#/--target=}"; } >"$log" 2>&1; then
        cat "$log" >&2
        return 1
    fi
}
