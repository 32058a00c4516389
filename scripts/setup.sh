# Sourced by ./demo and ./check: installs what is missing. Says in one line what to do where it cannot.

# Prints what a script is doing.
say() { printf '\n== %s\n' "$*"; }

# install_missing PACKAGE...: installs the Debian packages that are not there yet.
install_missing() {
    if ! command -v dpkg-query >/dev/null 2>&1 || ! command -v apt-get >/dev/null 2>&1; then
        echo "$0: this is not a Debian system; install the equivalents of these packages and run" \
            "'cmake --preset release && cmake --build --preset release' yourself: $*" >&2
        exit 1
    fi
    local missing=()
    local package
    for package in "$@"; do
        if [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" != installed ]; then
            missing+=("$package")
        fi
    done
    if [ ${#missing[@]} -eq 0 ]; then
        return
    fi
    local as_root=()
    if [ "$(id -u)" != 0 ]; then
        if ! command -v sudo >/dev/null 2>&1; then
            echo "$0: these packages are missing and only root can install them: ${missing[*]}" >&2
            exit 1
        fi
        as_root=(sudo)
    fi
    say "Installing ${missing[*]}"
    "${as_root[@]}" apt-get update -q
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
}

# What the library and the program need ...
build_packages=(g++ cmake ninja-build ccache pkg-config qtbase5-dev libopencv-dev libfftw3-dev libsndfile1-dev libcli11-dev
    nlohmann-json3-dev libsvm-dev)
# ... and what the tests need on top.
test_packages=(libgtest-dev libbenchmark-dev libsamplerate0-dev clang-format googletest g++-mingw-w64-x86-64-posix wine64 abigail-tools binutils python3 git)
# ... and the picture of the benchmarks.
bench_packages=(gnuplot-nox)
