#!/usr/bin/env bash
# Builds the Debian package twice as a packager would, with no date given, and
# checks it with lintian. The two must be the same bytes (the file dates come
# from the build, not from the clock), and lintian must report no error, nor,
# for a build with Debian's hardening flags, a program without them; every
# other tag it reports is printed. Exits 77 (skipped) when lintian or cpack's
# tools are missing.
#   lintian.sh BUILD_DIR [hardened]
set -uo pipefail
build=$1 hardened=${2:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for tool in lintian:lintian dpkg-shlibdeps:dpkg-dev file:file; do
    command -v "${tool%%:*}" >/dev/null || { echo "SKIP: ${tool%%:*} is missing (Debian package ${tool#*:})"; exit 77; }
done

unset SOURCE_DATE_EPOCH
for pack in 1 2; do
    cpack -G DEB -B "$work/$pack" --config "$build/CPackConfig.cmake" >"$work/cpack.log" 2>&1 ||
        { echo "FAIL: cpack failed: $(cat "$work/cpack.log")"; exit 1; }
done
package=$(echo "$work"/1/tessera_*.deb)
cmp "$package" "$work/2/${package##*/}" || { echo "FAIL: two packs of the same build differ"; exit 1; }

# Experimental and pedantic tags too, so that the log shows all that is left.
report=$(lintian --display-info --display-experimental --pedantic --tag-display-limit 0 "$package" 2>&1)
echo "$report"
! grep -q '^E: ' <<<"$report" || { echo "FAIL: lintian reports errors"; exit 1; }
[[ -z $hardened ]] || ! grep -q ' hardening-no-' <<<"$report" ||
    { echo "FAIL: programs are built without Debian's hardening flags"; exit 1; }
echo "PASS: $(basename "$package") packs to the same bytes twice, and lintian reports no error"
