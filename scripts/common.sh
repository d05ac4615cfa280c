# Shared by start.sh and test.sh: install what is missing, then build.
# Sourced, not run.

TESSERA_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# What building and running Tessera needs on Debian 12: the manual pages are
# written with go-md2man and help2man, and cpack's Debian package takes its
# dependencies from dpkg-shlibdeps (dpkg-dev), which needs file.
TESSERA_BUILD_PACKAGES=(build-essential cmake pkg-config qtbase5-dev qtbase5-dev-tools libqt5svg5-dev
    libasound2-dev fonts-dejavu-core go-md2man help2man dpkg-dev file)
# What the test suite needs on top: benchmarks are built with the project,
# fuzzers with clang and its libFuzzer runtime, network tests in a private
# namespace (iproute2), window tests under Xvfb with a small tray host, driven
# with xdotool and inspected with xwininfo (x11-utils) and python3; the menu
# entry, AppStream data and manual pages are checked with their validators.
TESSERA_TEST_PACKAGES=(libbenchmark-dev clang libclang-rt-14-dev iproute2 util-linux xvfb xauth trayer
    xdotool x11-utils python3 desktop-file-utils appstream man-db)

tessera_as_root() {
    if [[ $(id -u) == 0 ]]; then "$@"; else sudo "$@"; fi
}

tessera_install_missing() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "ok installed" || missing+=("$package")
    done
    if [[ ${#missing[@]} -gt 0 ]]; then
        echo "Installing: ${missing[*]}"
        tessera_as_root env DEBIAN_FRONTEND=noninteractive apt-get update -qq
        tessera_as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
    fi
}

# tessera_build DIR [CMAKE OPTIONS...]
tessera_build() {
    local dir=$1
    shift
    cmake -S "$TESSERA_ROOT" -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@"
    cmake --build "$dir" --parallel "$(nproc)"
}
