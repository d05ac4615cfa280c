#!/usr/bin/env bash
# Installs what is missing, builds Tessera and starts it in the system tray.
set -euo pipefail
source "$(dirname "$0")/common.sh"
cd "$TESSERA_ROOT"

tessera_install_missing "${TESSERA_BUILD_PACKAGES[@]}"
tessera_build "$TESSERA_ROOT/build" -DTESSERA_BENCH=OFF
exec "$TESSERA_ROOT/build/bin/tessera" "$@"
