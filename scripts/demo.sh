#!/usr/bin/env bash
# The main job on one machine: builds everything, makes a few app bundles in a scratch "Mac volume",
# and has velmora-cli read them the way a check for updates does.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
BUILD_DIR=$build "$root/scripts/build.sh" -DVELMORA_BUILD_TESTS=OFF -DVELMORA_BUILD_BENCH=OFF

work=$(mktemp -d "${TMPDIR:-/tmp}/velmora-demo.XXXXXX")
trap 'rm -rf "$work"' EXIT
# The demo runs as a user of its own, so it never touches your settings or your scan store.
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_DATA_HOME=$work/home/.local/share TMPDIR=$work/tmp
mkdir -p "$HOME" "$TMPDIR"
volume=$work/volume
cli=$build/src/velmora-cli

make_app() { # name identifier short-version bundle-version
    mkdir -p "$volume/Applications/$1.app/Contents/MacOS"
    cat > "$volume/Applications/$1.app/Contents/Info.plist" <<PLIST
<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0"><dict>
<key>CFBundleIdentifier</key><string>$2</string>
<key>CFBundleShortVersionString</key><string>$3</string>
<key>CFBundleVersion</key><string>$4</string>
<key>CFBundleExecutable</key><string>$1</string>
</dict></plist>
PLIST
    printf '#!/bin/sh\n' > "$volume/Applications/$1.app/Contents/MacOS/$1"
}
make_app "Demo Editor" com.velmora.demo.editor "2.1 (Build 455)" 455
make_app "Demo Player" com.velmora.demo.player "V3.0" 3.0.2
make_app "Demo Notes" com.velmora.demo.notes "1.0" 1.0

"$cli" defaults write volumeRoot -string "$volume" >/dev/null
echo "== Installed apps on the demo volume"
"$cli" inspect "$volume"/Applications/*.app
echo "== Is 2.1 outdated by 2.2?"
"$cli" version outdated 2.1 2.2
