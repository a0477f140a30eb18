#!/usr/bin/env bash
# The demo itself, with programs given: starts velmora-service with its bundled sample catalogue, installs the sample
# apps' old versions on a scratch "Mac volume", and has velmora-cli check them with the service in one request: scan,
# match, keep the answers in the stored scan, list what is outdated; then updates them all and shows them current.
# scripts/demo.sh runs it with the programs it built; the package test with the installed ones.
# With the desktop program given too, it shows the outdated apps in velmora when a display is there (quit it from its
# tray menu to go on), or, with VELMORA_SCREENSHOTS=DIR, has velmora draw its views into DIR as PNG files.
# Usage: demo-run.sh VELMORA_CLI VELMORA_SERVICE OLD_APPS_FOLDER [VELMORA]
set -euo pipefail
cli=$1
service=$2
old_apps=$3
desktop=${4:-}

work=$(mktemp -d "${TMPDIR:-/tmp}/velmora-demo.XXXXXX")
service_pid=
cleanup() { [ -n "$service_pid" ] && kill "$service_pid" 2>/dev/null; wait 2>/dev/null; rm -rf "$work"; }
trap cleanup EXIT
# The demo runs as a user of its own, so it never touches your settings, scan store or service database.
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_DATA_HOME=$work/home/.local/share TMPDIR=$work/tmp
mkdir -p "$HOME" "$TMPDIR"

# The service picks a free port and says which on its first line.
coproc SERVICE { exec "$service" serve --listen 127.0.0.1:0 2>"$work/service.log"; }
service_pid=$SERVICE_PID
read -r first_line <&"${SERVICE[0]}"
address=$(grep -oE '127\.0\.0\.1:[0-9]+' <<<"$first_line")
echo "== velmora-service with the sample catalogue at http://$address"

volume=$work/volume
mkdir -p "$volume/Applications"
cp -a "$old_apps/." "$volume/Applications/"
for key in serviceHost siteHost dealsHost analyticsHost shortenerHost; do
    "$cli" defaults write "$key" -string "http://$address" >/dev/null
done
"$cli" defaults write volumeRoot -string "$volume" >/dev/null

echo "== Installed apps found by a scan of $volume"
"$cli" scan
echo "== A check with the service: the outdated apps (name, installed version, newest version)"
"$cli" check
echo "== The service's request log"
cat "$work/service.log"
echo "== The stored scan after the check (name, installed, newest, path)"
"$cli" list --installed
if [ -n "$desktop" ] && [ -n "${VELMORA_SCREENSHOTS:-}" ]; then
    echo "== velmora draws its views into $VELMORA_SCREENSHOTS"
    QT_QPA_PLATFORM=offscreen "$desktop" --screenshot "$VELMORA_SCREENSHOTS"
elif [ -n "$desktop" ] && [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    echo "== velmora shows these updates in the tray and its window; quit it (Quit Velmora Desktop) to go on"
    "$cli" defaults write startupItem -bool NO >/dev/null
    "$desktop" || true
fi
echo "== Update All: each app downloaded, checked and installed (name, installed version, path)"
update_status=0
"$cli" update-all --yes || update_status=$?
echo "== The stored scan after the updates (name, installed, newest, path)"
"$cli" list --installed
echo "== Still outdated"
"$cli" list --outdated
exit "$update_status"
