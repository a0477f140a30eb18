#!/usr/bin/env bash
# The packages as a user meets them (needs root; CI runs it): builds them from a clean copy of the checkout, checks
# them with lintian, installs them with apt, runs the demo with the installed programs (the installed service and its
# sample, a check and the updates through the installed velmora-cli), finds every man page, completes a command
# line with the installed bash completion, purges them, and checks that nothing of ours is left.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo "== Building the packages"
mkdir "$work/velmora"
git -C "$root" archive HEAD | tar -x -C "$work/velmora"
(cd "$work/velmora" && dpkg-buildpackage -b -us -uc >"$work/build.log" 2>&1) || { tail -50 "$work/build.log"; exit 1; }
packages=("$work"/*.deb)
printf '%s\n' "${packages[@]##*/}"

echo "== lintian"
lintian --fail-on error "${packages[@]}"

echo "== Installing"
apt-get install -y "${packages[@]}" >"$work/apt.log" 2>&1 || { cat "$work/apt.log"; exit 1; }
velmora-cli --version
man -w velmora-cli velmora-place velmora-service
[ ! -e /usr/bin/velmora ] || man -w velmora

echo "== The demo with the installed programs"
"$root/scripts/demo-run.sh" /usr/bin/velmora-cli /usr/bin/velmora-service \
    "$work/velmora/obj-$(dpkg-architecture -qDEB_HOST_GNU_TYPE)/service/installed/Applications"

echo "== bash completion of 'velmora-cli def'"
offered=$(bash -c 'source /usr/share/bash-completion/completions/velmora-cli; COMP_WORDS=(velmora-cli def);
                   COMP_CWORD=1; _velmora_cli; printf "%s\n" "${COMPREPLY[@]}"')
echo "$offered"
[ "$offered" = defaults ]

echo "== Purging"
names=()
for deb in "${packages[@]}"; do names+=("$(dpkg-deb -f "$deb" Package)"); done
apt-get purge -y "${names[@]}" >"$work/apt.log" 2>&1 || { cat "$work/apt.log"; exit 1; }
left=$(find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /home -o -path /root -o -path /tmp \
    -o -path /var/tmp -o -path "$root" -o -path /work -o -path /var/cache/apt -o -path /var/lib/apt \) -prune -o \
    -iname '*velmora*' -print 2>/dev/null || true)
if [ -n "$left" ]; then
    echo "left after purge:"
    echo "$left"
    exit 1
fi
echo "nothing of ours is left outside the users' folders"
