#!/usr/bin/env bash
# Under a real X server (run by xvfb-run): velmora starts, then a second velmora with an install link hands the link
# to the first and exits, and the first takes it. Usage: check-second-start.sh VELMORA VELMORA-CLI
set -euo pipefail
velmora=$1
cli=$2
work=$(mktemp -d)
first=
cleanup() { [ -n "$first" ] && kill "$first" 2>/dev/null; wait 2>/dev/null || true; rm -rf "$work"; }
trap cleanup EXIT
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_DATA_HOME=$work/home/.local/share TMPDIR=$work/tmp
export XDG_RUNTIME_DIR=$work/run VELMORA_LOG=stderr
mkdir -p "$HOME" "$TMPDIR" "$XDG_RUNTIME_DIR/" "$work/volume/Applications"
chmod 700 "$XDG_RUNTIME_DIR"
"$cli" defaults write sendAnalytics -bool NO >/dev/null
"$cli" defaults write startupItem -bool NO >/dev/null
"$cli" defaults write volumeRoot -string "$work/volume" >/dev/null

"$velmora" --login-item 2>"$work/first.log" &
first=$!
# The first listens on a socket in the temporary folder, named with the user's id.
socket=$TMPDIR/velmora-desktop-$(id -u)
for _ in $(seq 300); do
    [ -S "$socket" ] && break
    sleep 0.2
done
[ -S "$socket" ] || { echo "the first velmora does not listen"; cat "$work/first.log"; exit 1; }
timeout 20 "$velmora" velmora://bundle/4242 2>"$work/second.log" || { echo "the second velmora did not hand over"; cat "$work/second.log"; exit 1; }
for _ in $(seq 50); do
    grep -q 'install link velmora://bundle/4242' "$work/first.log" && break
    sleep 0.2
done
kill -0 "$first" || { echo "the first velmora ended"; cat "$work/first.log"; exit 1; }
if ! grep -q 'install link velmora://bundle/4242' "$work/first.log"; then
    echo "the link did not reach the first velmora"
    cat "$work/first.log" "$work/second.log"
    exit 1
fi
echo "the second start handed its link to the first"
