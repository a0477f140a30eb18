#!/usr/bin/env bash
# The packages as a user meets them (needs root; CI runs it): builds them from a clean copy of the checkout, checks
# them with lintian, installs them with apt, runs the demo with the installed programs (the installed service and its
# sample, a check and the updates through the installed velmora-cli), finds every man page, completes a command
# line with the installed bash completion, purges them, and checks that nothing of ours is left.
# The machine is left as it was found, on failure too: every package the run installed is purged again, and the
# build happens in a scratch folder, never in the checkout. DEB_BUILD_OPTIONS may be set; by default the build
# runs no tests (the suite runs from the checkout), makes no debug-symbol packages and uses every core.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
work=$(mktemp -d)
export DEBIAN_FRONTEND=noninteractive
export DEB_BUILD_OPTIONS=${DEB_BUILD_OPTIONS:-nocheck noautodbgsym parallel=$(nproc)}

installed_packages() { dpkg-query -W -f '${db:Status-Abbrev} ${Package}\n' | awk '$1 ~ /^.i/ { print $2 }' | sort; }
# Where a package may put files; the users' folders and the temporary ones are theirs.
files_of_ours() {
    find /etc /usr /var /opt /srv -xdev \( -path /var/tmp -o -path /var/cache/apt -o -path /var/lib/apt \) -prune \
        -o -iname '*velmora*' -print 2>/dev/null | sort || true
}
installed_packages >"$work/packages.before"
files_of_ours >"$work/files.before"

# Purges what the run installed: our packages and what apt brought in for them (recommended tools included).
purge_new_packages() {
    local new
    mapfile -t new < <(installed_packages | comm -13 "$work/packages.before" -)
    [ ${#new[@]} -eq 0 ] || apt-get purge -y "${new[@]}" >"$work/purge.log" 2>&1 || { cat "$work/purge.log"; return 1; }
}
cleanup() {
    local status=$?
    trap - EXIT
    if [ $status -ne 0 ]; then purge_new_packages || true; fi
    rm -rf "$work"
    exit $status
}
trap cleanup EXIT

echo "== Building the packages"
mkdir "$work/velmora"
git -C "$root" archive HEAD | tar -x -C "$work/velmora"
(cd "$work/velmora" && dpkg-buildpackage -b -us -uc >"$work/build.log" 2>&1) || { tail -50 "$work/build.log"; exit 1; }
packages=("$work"/*.deb)
printf '%s\n' "${packages[@]##*/}"

echo "== lintian"
lintian --fail-on error,warning "${packages[@]}"

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
purge_new_packages
left=$(files_of_ours | comm -13 "$work/files.before" -)
if [ -n "$left" ]; then
    echo "left after purge:"
    echo "$left"
    exit 1
fi
echo "nothing of ours is left outside the users' folders"
