#!/usr/bin/env bash
# Installs what is missing, builds Tessera four times and tests each build: a
# normal build, one against Qt 6 and one with AddressSanitizer and
# UndefinedBehaviorSanitizer run the whole test suite; the fuzz targets, built
# with clang, run for a minute each on our seed corpus.
#
# Everything runs inside a private network namespace (private-network.sh), so
# that discovery broadcasts and connections never leave the machine. Tests of
# the ALSA sequencer run on this machine's sequencer where its kernel has one,
# and otherwise in a small virtual machine that has one (alsa-vm.sh).
set -euo pipefail
source "$(dirname "$0")/common.sh"
cd "$TESSERA_ROOT"
FUZZ_SECONDS=${TESSERA_FUZZ_SECONDS:-60}

sequencer_here() {
    [[ -r /dev/snd/seq && -w /dev/snd/seq ]]
}

packages=("${TESSERA_BUILD_PACKAGES[@]}" "${TESSERA_QT6_PACKAGES[@]}" "${TESSERA_TEST_PACKAGES[@]}")
sequencer_here || packages+=("${TESSERA_VM_PACKAGES[@]}")
# Downloads happen here, outside the namespace: inside it there is no way out.
tessera_install_missing "${packages[@]}"

in_private_network() {
    bash "$TESSERA_ROOT/scripts/private-network.sh" "$@"
}

run_suite() {
    local dir=$1
    local ctest=(ctest --test-dir "$dir" --output-on-failure --timeout 600 --parallel "$(nproc)")
    if sequencer_here; then
        echo "=== Tests in $dir (private network namespace, this machine's ALSA sequencer)"
        in_private_network "${ctest[@]}"
    else
        echo "=== Tests in $dir (private network namespace)"
        in_private_network "${ctest[@]}" --label-exclude alsa
        echo "=== ALSA tests in $dir (virtual machine)"
        bash "$TESSERA_ROOT/scripts/alsa-vm.sh" --timeout 1500 -- "${ctest[@]}" --label-regex alsa
    fi
}

tessera_build "$TESSERA_ROOT/build"
run_suite "$TESSERA_ROOT/build"

tessera_build "$TESSERA_ROOT/build-qt6" -DTESSERA_QT=6 -DTESSERA_BENCH=OFF
run_suite "$TESSERA_ROOT/build-qt6"

tessera_build "$TESSERA_ROOT/build-asan" -DTESSERA_SANITIZE=ON -DTESSERA_BENCH=OFF
run_suite "$TESSERA_ROOT/build-asan"

tessera_build "$TESSERA_ROOT/build-fuzz" -DTESSERA_FUZZ=ON -DTESSERA_GUI=OFF -DTESSERA_ALSA=OFF -DTESSERA_BENCH=OFF \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
in_private_network bash "$TESSERA_ROOT/scripts/run-fuzzers.sh" "$TESSERA_ROOT/build-fuzz" "$FUZZ_SECONDS"
