#!/usr/bin/env bash
# Installs the build into a temporary prefix and checks what a desktop will find there: the
# executable (and that it runs), the menu entry, the icon at every size, the metainfo, and the
# Debian package when the packaging tools are present. Validators that are not installed are
# skipped with a message.
#   install_test.sh BUILD_DIR SOURCE_DIR APP_ID
set -uo pipefail
build=$1 source=$2 id=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
skip() { echo "SKIP: $*"; }

prefix=$work/usr
cmake --install "$build" --prefix "$prefix" >"$work/install.log" 2>&1 || { cat "$work/install.log"; exit 1; }

share=$prefix/share
desktop=$share/applications/$id.desktop
metainfo=$share/metainfo/$id.metainfo.xml
for f in "$desktop" "$metainfo" "$share/icons/hicolor/scalable/apps/$id.svg"; do
    [ -s "$f" ] || fail "missing ${f#"$prefix"/}"
done

# Each PNG must really be the size of the folder it sits in, or desktops scale it twice.
for size in 16 32 48 64 128 256 512; do
    png=$share/icons/hicolor/${size}x${size}/apps/$id.png
    if [ ! -s "$png" ]; then fail "missing ${png#"$prefix"/}"; continue; fi
    read -r w h < <(od -An -tu1 -j16 -N8 "$png" | awk '{print $1*16777216+$2*65536+$3*256+$4, $5*16777216+$6*65536+$7*256+$8}')
    [ "$w $h" = "$size $size" ] || fail "${png#"$prefix"/} is ${w}x${h}"
done

# The installed program runs without the build tree.
if [ -x "$prefix/bin/tock" ]; then
    out=$("$prefix/bin/tock" --selftest 2>&1)
    [[ $out == *"app checks passed"* ]] || fail "installed tock --selftest: $out"
    # The drawing modes open the window module from its installed place.
    out=$(QT_QPA_PLATFORM=offscreen "$prefix/bin/tock" --bench classic 1 0.1 2>/dev/null)
    [[ $out == "bench classic 1 timers"* ]] || fail "installed tock --bench: $out"
else
    fail "missing bin/tock"
fi

# The entry, the icon and the metainfo must name each other by the one identifier.
if [ -s "$desktop" ]; then
    grep -qx "Icon=$id" "$desktop" || fail "the desktop file's Icon is not $id"
    grep -qx "Exec=tock" "$desktop" || fail "the desktop file does not run tock"
fi
if [ -s "$metainfo" ]; then
    grep -q "<id>$id</id>" "$metainfo" || fail "the metainfo id is not $id"
    grep -q "<launchable type=\"desktop-id\">$id.desktop</launchable>" "$metainfo" ||
        fail "the metainfo does not launch $id.desktop"
fi
if grep -q '@[A-Z_]*@' "$desktop" "$metainfo" 2>/dev/null; then fail "an unfilled @placeholder@ was installed"; fi

if command -v desktop-file-validate >/dev/null; then
    # Debian 12's validator predates SingleMainWindow (entry format 1.5); any other complaint fails.
    problems=$(desktop-file-validate "$desktop" 2>&1 | grep -v 'key "SingleMainWindow"' || true)
    [ -z "$problems" ] || fail "desktop-file-validate: $problems"
else
    skip "desktop-file-validate not installed (desktop-file-utils)"
fi
if command -v appstreamcli >/dev/null; then
    appstreamcli validate --no-net "$metainfo" || fail "appstreamcli validate"
else
    skip "appstreamcli not installed (appstream)"
fi

# The screenshots the metainfo shows are the ones the tree publishes.
shots=$source/docs/screenshots
if [ -d "$shots" ]; then
    for name in $(grep -o '[a-z]*\.png</image>' "$metainfo" | sed 's/<.*//'); do
        [ -f "$shots/$name" ] || fail "the metainfo shows docs/screenshots/$name, which is not there"
    done
else
    skip "no docs/screenshots/ in this tree"
fi

# The Debian package: its files sit under /usr and it asks for the Qt it was linked with.
if command -v dpkg-deb >/dev/null && command -v dpkg-shlibdeps >/dev/null && command -v file >/dev/null; then
    if cpack -G DEB -B "$work/pkg" --config "$build/CPackConfig.cmake" >"$work/cpack.log" 2>&1; then
        deb=$(ls "$work"/pkg/tock_*.deb)
        files=$(dpkg-deb -c "$deb")
        for f in ./usr/bin/tock ./usr/lib/tock/tock-window.so "./usr/share/applications/$id.desktop" "./usr/share/metainfo/$id.metainfo.xml" \
            "./usr/share/icons/hicolor/256x256/apps/$id.png"; do
            grep -q " $f\$" <<<"$files" || fail "the package lacks $f"
        done
        depends=$(dpkg-deb -f "$deb" Depends)
        for d in libqt6core6 libqt6widgets6 qt6-qpa-plugins; do
            [[ $depends == *"$d"* ]] || fail "the package does not depend on $d: $depends"
        done
        [ "$(dpkg-deb -f "$deb" Section)" = utils ] || fail "the package's section is not utils"
    else
        cat "$work/cpack.log"
        fail "cpack -G DEB"
    fi
else
    skip "dpkg-deb, dpkg-shlibdeps or file not installed: no package check"
fi

[ "$failures" -eq 0 ] && echo "install checks passed"
exit $((failures > 0))
