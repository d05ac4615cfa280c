#!/usr/bin/env bash
# Installs the build into a temporary prefix and starts the installed program
# the way the desktop's menu entry does: the layout must hold the program, the
# maps, the manual, the menu entry and the icon, and the installed program must
# find its maps and manual through that layout, start in the tray and quit
# with status 0.
#   installed_layout.sh BUILD_DIR
source "$(dirname "$0")/x11-session.sh"
build=$1
prefix=$X11_WORK/prefix

cmake --install "$build" --prefix "$prefix" >"$X11_WORK/install.log" 2>&1 ||
    x11_fail "cmake --install failed: $(cat "$X11_WORK/install.log")"
for path in bin/tessera Resources/Maps/mixer_map.json Resources/HelpManual.pdf \
    share/applications/com.kestrel.Tessera.desktop \
    share/icons/hicolor/scalable/apps/com.kestrel.Tessera.svg \
    share/icons/hicolor/16x16/apps/com.kestrel.Tessera.png; do
    [[ -s $prefix/$path ]] || x11_fail "$path is not installed"
done

entry=$prefix/share/applications/com.kestrel.Tessera.desktop
grep -qx 'Icon=com.kestrel.Tessera' "$entry" || x11_fail "the menu entry does not name the installed icon"
exec_line=$(grep '^Exec=' "$entry")
program=${exec_line#Exec=}
program=${program//\"/}
[[ $program == "$prefix/bin/tessera" ]] || x11_fail "the menu entry starts $program"

# The desktop's URL handler is replaced by one that notes what it was asked
# to open, so that the tray menu's "&Help" can be followed to the file.
mkdir -p "$X11_WORK/bin"
printf '#!/bin/sh\nprintf "%%s\\n" "$1" >>"%s"\n' "$X11_WORK/opened" >"$X11_WORK/bin/xdg-open"
chmod +x "$X11_WORK/bin/xdg-open"
PATH=$X11_WORK/bin:$PATH x11_start_in_tray "$program"

x11_tray_menu "$X11_ICON" h
waited=0
until [[ -s $X11_WORK/opened ]]; do
    ((waited++ < X11_TIMEOUT * 10)) || x11_fail "\"&Help\" opened nothing"
    sleep 0.1
done
url=$(head -n 1 "$X11_WORK/opened")
[[ $url == file://* && $(realpath "${url#file://}") == "$(realpath "$prefix/Resources/HelpManual.pdf")" ]] ||
    x11_fail "\"&Help\" opened $url"

x11_tray_menu "$X11_ICON" q
x11_expect_exit 0
! grep -q 'Could not open file' "$X11_WORK/tessera.log" ||
    x11_fail "the installed program misses a file: $(grep 'Could not open file' "$X11_WORK/tessera.log")"
echo "PASS: installed layout complete, the installed program found its maps and manual and quit with status 0"
