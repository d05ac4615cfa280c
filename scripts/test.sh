#!/usr/bin/env bash
# Installs what is missing, builds Tessera twice (a normal build and one with
# AddressSanitizer and UndefinedBehaviorSanitizer) and runs the whole test
# suite on each, then builds the fuzz targets with clang and runs each for a
# minute on our seed corpus.
#
# Everything that may open a socket runs inside netns-run (a private network
# namespace: discovery broadcasts never leave the machine); tests that need the
# ALSA sequencer run inside alsa-vm-run. Both tools live in ../shared/tools.
set -euo pipefail
source "$(dirname "$0")/common.sh"
cd "$TESSERA_ROOT"

TOOLS=${TESSERA_TOOLS_DIR:-$TESSERA_ROOT/../shared/tools}
if [[ ! -x $TOOLS/netns-run || ! -x $TOOLS/alsa-vm-run ]]; then
    echo "test.sh: netns-run and alsa-vm-run are expected in $TOOLS (set TESSERA_TOOLS_DIR)" >&2
    exit 2
fi
TOOLS=$(cd "$TOOLS" && pwd)
FUZZ_SECONDS=${TESSERA_FUZZ_SECONDS:-60}

# Downloads happen here, outside the namespace: inside it there is no route out.
tessera_install_missing "${TESSERA_BUILD_PACKAGES[@]}" "${TESSERA_TEST_PACKAGES[@]}"
"$TOOLS/alsa-vm-run" --setup

run_suite() {
    local dir=$1
    echo "=== Tests in $dir (private network namespace)"
    "$TOOLS/netns-run" ctest --test-dir "$dir" --label-exclude alsa --output-on-failure --timeout 600
    echo "=== ALSA tests in $dir (virtual machine)"
    # The VM's console is a terminal; piping keeps ctest's summary free of colour codes.
    "$TOOLS/alsa-vm-run" --timeout 1500 -- bash -o pipefail -c \
        "ctest --test-dir '$dir' --label-regex alsa --output-on-failure --timeout 1200 | cat"
}

tessera_build "$TESSERA_ROOT/build"
run_suite "$TESSERA_ROOT/build"

tessera_build "$TESSERA_ROOT/build-asan" -DTESSERA_SANITIZE=ON -DTESSERA_BENCH=OFF
run_suite "$TESSERA_ROOT/build-asan"

tessera_build "$TESSERA_ROOT/build-fuzz" -DTESSERA_FUZZ=ON -DTESSERA_GUI=OFF -DTESSERA_BENCH=OFF \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
"$TOOLS/netns-run" bash "$TESSERA_ROOT/scripts/run-fuzzers.sh" "$TESSERA_ROOT/build-fuzz" "$FUZZ_SECONDS"
