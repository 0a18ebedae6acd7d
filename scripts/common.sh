# Shared by the scripts of this folder; sourced by bash. Leaves the shell in the project's root.

cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1

say() { printf '\n== krtbss: %s\n' "$*"; }

fail() {
    printf '\n== krtbss: FAILED: %s\n' "$*" >&2
    exit 1
}

# The Debian packages behind each job.
packages_of() {
    case $1 in
    build) echo g++ cmake ninja-build ccache libboost-dev zlib1g-dev libfftw3-dev libssl-dev unixodbc-dev libsqliteodbc googletest libcli11-dev nlohmann-json3-dev ;;
    test) echo pkg-config python3 postgresql odbc-postgresql binutils-mingw-w64-x86-64 binutils-mingw-w64-i686 ;;
    fuzz) echo clang libclang-rt-14-dev ;;
    lint) echo clang-format clang-tidy python3 git ;;
    windows) echo g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix libz-mingw-w64-dev wine64 ;;
    bench) echo libboost-serialization-dev libcereal-dev libbenchmark-dev libgsl-dev libcminpack-dev libkissfft-dev libsoci-dev libsqlite3-dev pkg-config python3 ;;
    esac
}

is_installed() { dpkg-query -W -f '${db:Status-Status}\n' "$1" 2>/dev/null | grep -qx installed; }

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        sudo "$@"
    fi
}

# try_packages JOB...: installs what is missing for the jobs. On failure says why in the variable `why` and returns 1.
try_packages() {
    missing=
    for job in "$@"; do
        for package in $(packages_of "$job"); do
            is_installed "$package" || missing="$missing $package"
        done
    done
    missing=$(echo $missing | tr ' ' '\n' | sort -u | tr '\n' ' ')
    missing=${missing% }
    [ -n "$missing" ] || return 0
    if ! command -v apt-get >/dev/null; then
        why="this machine has no apt-get; install what these Debian packages hold yourself: $missing"
        return 1
    fi
    if [ "$(id -u)" -ne 0 ] && ! command -v sudo >/dev/null; then
        why="neither root nor sudo here; ask somebody to install: $missing"
        return 1
    fi
    say "installing missing packages: $missing"
    for attempt in 1 2 3; do
        as_root apt-get update -q || echo "(apt-get update was not whole; going on with the lists there are)"
        if as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends $missing; then
            return 0
        fi
        [ "$attempt" = 3 ] || { echo "(attempt $attempt of 3 did not succeed)"; sleep 5; }
    done
    why="apt-get could not install: $missing (its messages are above: no network, no rights, or no such package)"
    return 1
}

need_packages() {
    why=
    try_packages "$@" || fail "$why"
}

jobs() { nproc 2>/dev/null || echo 2; }

configure_preset() {
    mkdir -p build
    if ! cmake --preset "$1" >"build/configure-$1.log" 2>&1; then
        cat "build/configure-$1.log"
        fail "CMake could not configure the preset $1 (its messages are above)"
    fi
}

# build_preset PRESET [TARGET...]. The compiler's lines are shown only where a build fails.
build_preset() {
    local preset=$1 start=$SECONDS
    shift
    say "configuring and building: $preset"
    configure_preset "$preset"
    if ! cmake --build --preset "$preset" -j "$(jobs)" ${1:+--target "$@"} >"build/build-$preset.log" 2>&1; then
        grep -vE '^\[[0-9]+/[0-9]+\] (Building|Linking|Generating)' "build/build-$preset.log"
        fail "the preset $preset does not build (its messages are above)"
    fi
    echo "built in $((SECONDS - start)) s"
}

# run_tests PRESET LABEL [PROGRAM...]: runs the tests of a built preset, all or those of some programs; the last line has
# the counts. Returns 1 if any failed.
run_tests() {
    local preset=$1 label=$2 failed=0
    shift 2
    say "running the tests: $label"
    rm -rf "build/$preset/test-results"
    local pattern
    pattern="^($(echo "${*:-.*}" | tr ' ' '|'))\$"
    # Under Wine one program after the other: those that kill processes disturb the start of others.
    local programs_at_once
    case $preset in
    mingw*) programs_at_once=1 ;;
    *) programs_at_once=$(jobs) ;;
    esac
    ctest --preset "$preset" -j "$programs_at_once" -R "$pattern" || failed=1
    scripts/count-tests "$label" "build/$preset" "$pattern" || failed=1
    return $failed
}
