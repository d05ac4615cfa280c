#!/usr/bin/env bash
# Installs the build under a temporary root, as the Debian package lays it
# out, and runs one validator over what desktops and software centres read,
# or over the user manual that "Help" opens, against its Markdown source.
# Exits 77 (skipped) when the validator is not installed.
#   validate.sh BUILD_DIR desktop|appstream|man
#   validate.sh BUILD_DIR manual docs/manual.md
set -uo pipefail
build=$1 check=$2 source=${3:-}
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT

need() {
    command -v "$1" >/dev/null || { echo "SKIP: $1 is missing (Debian package $2)"; exit 77; }
}

case $check in
desktop) need desktop-file-validate desktop-file-utils ;;
appstream) need appstreamcli appstream ;;
man) need man man-db ;;
manual) need pdftohtml poppler-utils ;;
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
# Every heading is a bookmark; every line of code reads as written, never
# broken (a JSON example copied from the page stays JSON); every picture fits
# between the margins of an A4 page, 170 mm, at the resolution it is shown in.
manual)
    pdf=$root/usr/share/tessera/HelpManual.pdf
    outline=$(pdftohtml -xml -stdout -i -q "$pdf") || exit 1
    while read -r heading; do
        grep -qF ">$heading</item>" <<<"$outline" || { echo "no bookmark for \"$heading\""; exit 1; }
    done < <(sed -n 's/^#\+ //p' "$source")
    text=$(pdftotext -raw "$pdf" - | tr -s ' ')
    while read -r line; do
        grep -qF -- "$line" <<<"$text" || { echo "code line broken or missing: $line"; exit 1; }
    done < <(sed -n 's/^    \+//p' "$source" | tr -s ' ')
    pdfimages -list "$pdf" | awk 'NR > 2 && $4 / $13 > 170 / 25.4 {
        print "picture " $2 " on page " $1 " is wider than the page: " $4 " pixels at " $13 " ppi"; bad = 1 }
        END { exit bad }' ;;
esac
