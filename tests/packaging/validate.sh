#!/usr/bin/env bash
# Installs the build under a temporary root, as the Debian package lays it
# out, and runs one validator over what desktops and software centres read.
# Exits 77 (skipped) when the validator is not installed.
#   validate.sh BUILD_DIR desktop|appstream|man
set -uo pipefail
build=$1 check=$2
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT

need() {
    command -v "$1" >/dev/null || { echo "SKIP: $1 is missing (Debian package $2)"; exit 77; }
}

case $check in
desktop) need desktop-file-validate desktop-file-utils ;;
appstream) need appstreamcli appstream ;;
man) need man man-db ;;
esac
log=$(DESTDIR=$root cmake --install "$build" --prefix /usr 2>&1) || { echo "$log"; exit 1; }

case $check in
desktop) desktop-file-validate "$root"/usr/share/applications/*.desktop ;;
# The tree check also finds the menu entry and icon that the metainfo names.
# The screenshots are not fetched: the tests never use the network.
appstream) appstreamcli validate-tree --no-net --strict "$root" ;;
# Warnings from groff fail the check, as they would fail Debian's lintian.
man)
    for page in "$root"/usr/share/man/man1/*; do
        warnings=$(LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)
        [[ -z $warnings ]] || { echo "$page: $warnings"; exit 1; }
    done ;;
esac
