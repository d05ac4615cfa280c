# Shared by start.sh and test.sh: install what is missing, then build.
# Sourced, not run.

TESSERA_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# What building and running Tessera needs on Debian 12: the manual pages are
# written with go-md2man and help2man, and cpack's Debian package takes its
# dependencies from dpkg-shlibdeps (dpkg-dev), which needs file.
TESSERA_BUILD_PACKAGES=(build-essential cmake pkg-config qtbase5-dev qtbase5-dev-tools libqt5svg5-dev
    libasound2-dev fonts-dejavu-core go-md2man help2man dpkg-dev file)
# Building against Qt 6 (-DTESSERA_QT=6) instead: Debian ships Qt 6's platform
# plugins, offscreen and xcb among them, in a package of their own.
TESSERA_QT6_PACKAGES=(qt6-base-dev qt6-base-dev-tools qt6-svg-dev qt6-qpa-plugins)
# What the test suite needs on top: benchmarks are built with the project,
# fuzzers with clang and its libFuzzer runtime, network tests in a private
# namespace (iproute2), window tests under Xvfb with a small tray host, driven
# with xdotool and inspected with xwininfo (x11-utils) and python3; the menu
# entry, AppStream data, manual pages and the package are checked with their
# validators and lintian, the user manual's PDF with poppler's tools; ALSA
# tests run against ALSA's own tools (aconnect, aseqdump, aplaymidi, amidi).
TESSERA_TEST_PACKAGES=(libbenchmark-dev clang libclang-rt-14-dev iproute2 util-linux xvfb xauth trayer
    xdotool x11-utils python3 desktop-file-utils appstream man-db lintian poppler-utils alsa-utils)
# Where the kernel has no ALSA sequencer, its tests run in a small VM: qemu
# boots Debian's kernel (it has the sound modules), busybox mounts this
# machine's files in it and kmod loads the modules.
TESSERA_VM_PACKAGES=(qemu-system-x86 linux-image-amd64 busybox-static kmod cpio)

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

# The network of the private namespace and of the test VM: loopback, and a
# pair of linked virtual interfaces (10.213.0.1 and 10.213.0.2) of which the
# first holds the default route. Broadcasts and connections to any other
# address leave by it as on a LAN and reach nobody. Tests rely on these
# addresses. Refuses to go on if the namespace holds any other interface.
tessera_private_link() {
    ip link set lo up
    ip link add tessera0 type veth peer name tessera1
    ip address add 10.213.0.1/24 dev tessera0
    ip address add 10.213.0.2/24 dev tessera1
    ip link set tessera0 up
    ip link set tessera1 up
    ip route add default dev tessera0
    if ! tessera_in_private_network; then
        echo "private network: unexpected interfaces: $(ip -o link show | awk -F': ' '{ print $2 }' | tr '\n' ' ')" >&2
        return 1
    fi
}

# Whether this process's network is the one tessera_private_link makes, told
# by what it holds: exactly loopback and the two ends of one link, each
# naming the other (an end whose peer lies in another namespace would not),
# with their IPv4 addresses and no others. Whatever is sent there cannot
# leave the machine. Tests that send datagrams or connect beyond loopback
# refuse to run anywhere else.
tessera_in_private_network() {
    local links addresses
    links=$(ip -o link show | awk -F': ' '{ print $2 }' | sort | tr '\n' ' ')
    addresses=$(ip -o -4 address show | awk '{ print $2 "=" $4 }' | sort | tr '\n' ' ')
    [[ $links == "lo tessera0@tessera1 tessera1@tessera0 " &&
        $addresses == "lo=127.0.0.1/8 tessera0=10.213.0.1/24 tessera1=10.213.0.2/24 " ]]
}

# For tests that send datagrams or connect beyond loopback, scripts and test
# programs alike: ends the shell with status 1, saying how to run the test
# named by $1, unless it runs in the private network. To be called before
# anything is started.
tessera_require_private_network() {
    tessera_in_private_network && return
    cat >&2 <<MESSAGE
$1: refused: it sends datagrams or connects beyond loopback, and this is not
the private network namespace (loopback and tessera0/tessera1 only). Run the
tests with: bash scripts/test.sh
or one command inside the namespace: bash scripts/private-network.sh COMMAND...
MESSAGE
    exit 1
}
