#!/usr/bin/env bash
# Installs the build as a user would and starts the installed program the way
# the desktop's menu entry does. The layout must hold the programs, the maps,
# the manual, the menu entry, the icon (drawn and in pixel sizes), the
# AppStream data, the copyright file and the manual pages; the installed program must find its maps and manual through it, write
# a login entry that starts it and take it back, and quit with status 0.
#   installed_layout.sh BUILD_DIR       cmake --install into a temporary prefix
#   installed_layout.sh BUILD_DIR deb   cpack's Debian package, unpacked with dpkg -x
source "$(dirname "$0")/x11-session.sh"
build=$1

if [[ ${2:-} == deb ]]; then
    for tool in dpkg-shlibdeps file; do
        command -v "$tool" >/dev/null || { echo "SKIP: cpack needs $tool (Debian packages dpkg-dev, file)"; exit 77; }
    done
    cpack -G DEB -B "$X11_WORK/package" --config "$build/CPackConfig.cmake" >"$X11_WORK/cpack.log" 2>&1 ||
        x11_fail "cpack failed: $(cat "$X11_WORK/cpack.log")"
    package=$(echo "$X11_WORK"/package/tessera_*.deb)
    depends=$(dpkg-deb -f "$package" Depends)
    if [[ ${TESSERA_QT:-5} == 6 ]]; then
        dependencies=(libqt6widgets6 libqt6svg6 qt6-qpa-plugins)
    else
        dependencies=(libqt5widgets5 libqt5svg5)
    fi
    [[ -n ${TESSERA_BUILT_WITHOUT_ALSA:-} ]] || dependencies+=(libasound2)
    for dependency in "${dependencies[@]}"; do
        [[ $depends == *"$dependency"* ]] || x11_fail "the package does not depend on $dependency: $depends"
    done
    root=$X11_WORK/root prefix=/usr
    dpkg -x "$package" "$root" || x11_fail "dpkg -x $package failed"
else
    root='' prefix=$X11_WORK/prefix
    cmake --install "$build" --prefix "$prefix" >"$X11_WORK/install.log" 2>&1 ||
        x11_fail "cmake --install failed: $(cat "$X11_WORK/install.log")"
fi

for path in bin/tessera bin/tessera-rules lib/tessera/Resources/Maps/mixer_map.json share/tessera/HelpManual.pdf \
    share/applications/com.kestrel.Tessera.desktop share/metainfo/com.kestrel.Tessera.metainfo.xml \
    share/icons/hicolor/scalable/apps/com.kestrel.Tessera.svg share/icons/hicolor/16x16/apps/com.kestrel.Tessera.png \
    share/icons/hicolor/256x256/apps/com.kestrel.Tessera.png share/doc/tessera/copyright \
    share/man/man1/tessera.1.gz share/man/man1/tessera-rules.1.gz share/man/man1/mixer-sim.1.gz; do
    [[ -s $root$prefix/$path ]] || x11_fail "$path is not installed"
done

entry=$root$prefix/share/applications/com.kestrel.Tessera.desktop
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
PATH=$X11_WORK/bin:$PATH x11_start_in_tray "$root$program"

x11_tray_menu "$X11_ICON" h
x11_wait_until test -s "$X11_WORK/opened" || x11_fail "\"&Help\" opened nothing"
url=$(head -n 1 "$X11_WORK/opened")
[[ $url == file://* && $(realpath "${url#file://}") == "$(realpath "$root$prefix/share/tessera/HelpManual.pdf")" ]] ||
    x11_fail "\"&Help\" opened $url"

# "Start at Login" is the fourth entry from the bottom, above "&Help",
# "&About" and "&Quit". The login entry starts the installed executable itself.
autostart=$XDG_CONFIG_HOME/autostart/com.kestrel.Tessera.desktop
x11_tray_menu "$X11_ICON" Up Up Up Up Return
x11_wait_until test -s "$autostart" || x11_fail "\"Start at Login\" wrote no login entry"
grep -qxF "Exec=\"$root$prefix/lib/tessera/bin/tessera\"" "$autostart" ||
    x11_fail "the login entry does not start the installed program: $(cat "$autostart")"
if command -v desktop-file-validate >/dev/null; then
    desktop-file-validate "$autostart" || x11_fail "the login entry is not a valid desktop entry"
else
    echo "desktop-file-validate is missing (Debian package desktop-file-utils): the login entry is not validated"
fi
x11_tray_menu "$X11_ICON" Up Up Up Up Return
x11_wait_until test ! -e "$autostart" || x11_fail "unticking \"Start at Login\" left the login entry"

x11_tray_menu "$X11_ICON" q
x11_expect_exit 0
! grep -q 'Could not open file' "$X11_WORK/tessera.log" ||
    x11_fail "the installed program misses a file: $(grep 'Could not open file' "$X11_WORK/tessera.log")"
echo "PASS: ${2:-prefix} install complete; the installed program found its maps and manual, wrote and removed its login entry and quit with status 0"
