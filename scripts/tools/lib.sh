# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# Shared by the scripts. When sourced, changes to the repository's root and defines functions.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

say() { printf '%s\n' "$*"; }

die() {
    printf '%s: %s\n' "$0" "$*" >&2
    exit 1
}

# The number of compile jobs; KORVALITE_JOBS overrides the number of processors.
job_count() { say "${KORVALITE_JOBS:-$(nproc 2>/dev/null || echo 2)}"; }

# is_there PROBE: whether PROBE exists: a path or pattern if it starts with /, else a command.
is_there() {
    case $1 in
        /*) compgen -G "$1" >/dev/null ;;
        *) command -v "$1" >/dev/null 2>&1 ;;
    esac
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null 2>&1; then
        sudo "$@"
    else
        die "installing packages needs root: run as root, or install sudo"
    fi
}

# install_missing "PROBE PACKAGE WHY"...: installs the Debian packages whose probe does not exist.
# If nothing is missing, does not touch the system and needs no network.
install_missing() {
    local entry probe package why
    local packages=()
    for entry in "$@"; do
        read -r probe package why <<<"$entry"
        if ! is_there "$probe"; then
            say "missing: $package ($why)"
            packages+=("$package")
        fi
    done
    [ ${#packages[@]} -eq 0 ] && return 0
    command -v apt-get >/dev/null 2>&1 ||
        die "apt-get not found: install the missing packages by hand (Debian names: ${packages[*]})"
    say "installing with apt-get: ${packages[*]}"
    as_root apt-get update -qq || die "apt-get update failed: is the network up?"
    as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${packages[@]}" ||
        die "apt-get could not install: ${packages[*]}"
}

build_tools=(
    "cmake cmake configures the build"
    "ninja ninja-build runs the build"
    "g++ g++ compiles"
)
korva_tools=(
    "/usr/include/CLI/CLI.hpp libcli11-dev korva reads its options with CLI11"
    "/usr/include/nlohmann/json.hpp nlohmann-json3-dev korva writes JSON"
    "/usr/include/stb/stb_image_write.h libstb-dev korva writes pictures with stb"
)
# clang compiles faster than g++ with sanitizers, and is a second opinion.
clang_tools=(
    "clang++ clang compiles with sanitizers"
    "/usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-*.a libclang-rt-14-dev has libFuzzer"
)
test_tools=(
    "${korva_tools[@]}"
    "/usr/include/gtest/gtest.h libgtest-dev the tests use GoogleTest"
    "/usr/include/CGAL/version.h libcgal-dev a test compares distances with CGAL"
    "python3 python3 checks the include layers"
)

# build PRESET [configure arguments]: configures and builds one preset.
build() {
    local preset=$1
    shift
    say "== build $preset"
    cmake --preset "$preset" "$@" || die "cmake could not configure the preset '$preset'"
    cmake --build --preset "$preset" --parallel "$(job_count)" ||
        die "the preset '$preset' does not build"
}

# run_tests PRESET [ctest arguments]: runs the tests, prints "tests (PRESET): ..." and returns ctest's
# status.
run_tests() {
    local preset=$1 log status=0 passed failed
    shift
    log=build/$preset/ctest.log
    say "== test $preset"
    ctest --preset "$preset" "$@" 2>&1 | tee "$log" || status=$?
    # ctest prints: "98% tests passed, 2 tests failed out of 100".
    failed=$(sed -n 's/.*tests passed, \([0-9]*\) tests failed out of.*/\1/p' "$log" | tail -1)
    passed=$(sed -n 's/.*tests failed out of \([0-9]*\).*/\1/p' "$log" | tail -1)
    failed=${failed:-0}
    passed=$((${passed:-0} - failed))
    say "tests ($preset): $((passed + failed)) run, $passed passed, $failed failed"
    return "$status"
}
