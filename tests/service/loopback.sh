#!/usr/bin/env bash
# The arrangement of service/README.md ("Several processes") on loopback: a throwaway PostgreSQL cluster, three
# velmora-service processes sharing it, and nginx in front with packaging/nginx/velmora-service.conf. Checks that
# what one process writes every process reads, that velmora-cli checks and updates a sample app through nginx, then
# three faults: a process killed (-9) during a load run (no request may fail), the database server stopped and
# started again (503 meanwhile, then answers again by itself, no process lost), and a database that cannot be
# reached at start (a clear message after the wait).
#
#   loopback.sh BUILD_DIR
set -euo pipefail
build=$(realpath "$1")
source_dir=$(realpath "$(dirname "$0")/../..")
service=$build/service/velmora-service
for needed in "$service" "$build/src/velmora-cli" "$build/service/installed/Applications"; do
    [[ -e $needed ]] || { echo "FAIL: $needed is not built" >&2; exit 1; }
done
work=$(mktemp -d /tmp/velmora-loopback.XXXXXX)
chmod 755 "$work"
pids=()
nginx_pid=
cleanup() {
    for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
    [[ -n $nginx_pid ]] && kill "$nginx_pid" 2>/dev/null
    wait 2>/dev/null || true
    "$source_dir/tests/service/pg-cluster.sh" stop "$work/pg"
    rm -rf "$work"
}
trap cleanup EXIT
fail() {
    echo "FAIL: $*" >&2
    for log in "$work"/service-*.log; do echo "== $log" >&2; tail -n 20 "$log" >&2; done
    exit 1
}
free_port() { python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'; }
status() { curl -s -o /dev/null -w '%{http_code}' "$@"; }

"$source_dir/tests/service/pg-cluster.sh" start "$work/pg"
server=$(cat "$work/pg/url")
psql -qX "$server" -c 'CREATE DATABASE velmora'
db=${server%/postgres}/velmora
key=$work/member.key
"$service" migrate --db "$db" --key-file "$key" >/dev/null

start_process() { # index port
    "$service" serve --listen "127.0.0.1:$2" --db "$db" --key-file "$key" --workers 8 \
        --files "$work/files" >"$work/address-$1" 2>"$work/service-$1.log" &
    pids[$1]=$!
    for _ in $(seq 100); do [[ -s $work/address-$1 ]] && return; sleep 0.1; done
    fail "process $1 did not start"
}
cp -r "$build/service/files" "$work/files"
chmod -R a+rX "$work/files"
ports=()
for i in 0 1 2; do
    ports[i]=$(free_port)
    start_process "$i" "${ports[i]}"
done

# The packaged site in front, with this run's ports and folders.
url=$("$source_dir/tests/service/nginx-site.sh" "$work" "$work/files" "${ports[@]}")
"${NGINX:-nginx}" -p "$work" -c "$work/nginx.conf" -g 'daemon off;' &
nginx_pid=$!
for _ in $(seq 50); do [[ $(status "$url/vld6blacklist") == 200 ]] && break; sleep 0.1; done

# What one process writes, the others read: a member signed up through one signs in at each; a link shortened at
# one opens at each; files come from nginx with ranges.
curl -sf "http://127.0.0.1:${ports[0]}/vld6member/signup/e/lo%40example.com/p/pw1/f/Lo/l/Op" | grep -q '"id"' ||
    fail "sign-up"
email=$(printf lo@example.com | md5sum | cut -c1-32)
password=$(printf pw1 | md5sum | cut -c1-32)
for port in "${ports[@]}"; do
    curl -sf "http://127.0.0.1:$port/vld6member/jlogincheck2/u/$email/p/$password/vld/6.0.4/c/C/os/14/r/1/cpu/8/uuid/U" |
        grep -q '"id"' || fail "sign-in at port $port"
done
short=$(curl -sf "http://127.0.0.1:${ports[1]}/api-create.php?url=http://example.com/app/mac/5001/x")
for port in "${ports[@]}"; do
    [[ $(status "http://127.0.0.1:$port/s/${short##*/}") == 302 ]] || fail "short link at port $port"
done
[[ $(status -r 0-9 "$url/files/VelmoraNotes-2.0.zip") == 206 ]] || fail "range of a file through nginx"
body='vld=6.0.4&c=C&p=0&mid=0&uuid=U&type=auto&app[0][t]=x.app&app[0][p]=1&app[0][d]=x&app[0][v]=1.0'
body+='&app[0][b]=com.velmora.sample.notes&app[0][m]=0'
curl -sf --data "$body" "$url/vld603scan/automatch" | python3 -c \
    'import sys, zlib, json; assert "0" in json.loads(zlib.decompress(sys.stdin.buffer.read()))' ||
    fail "matching through nginx"

# The desktop program's own client through nginx: a check of the sample apps' old versions on a scratch volume, then
# the update of one, downloaded from nginx's /files/. It runs as a user of its own: nothing of the machine's user's
# settings or stored scan is read or written.
cli() {
    HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_DATA_HOME=$work/home/.local/share \
        XDG_CACHE_HOME=$work/home/.cache XDG_STATE_HOME=$work/home/.local/state TMPDIR=$work/tmp \
        "$build/src/velmora-cli" "$@"
}
mkdir -p "$work/home" "$work/tmp" "$work/volume/Applications"
cp -a "$build/service/installed/Applications/." "$work/volume/Applications/"
for host in serviceHost siteHost dealsHost analyticsHost shortenerHost; do
    cli defaults write "$host" -string "$url" >/dev/null
done
cli defaults write volumeRoot -string "$work/volume" >/dev/null
cli check >"$work/check.out" || fail "velmora-cli check through nginx: $(cat "$work/check.out")"
grep -qx $'Velmora Notes\t1.0\t2.0' "$work/check.out" || fail "the check did not list Velmora Notes: $(cat "$work/check.out")"
cli update "Velmora Notes" --yes >"$work/update.out" || fail "velmora-cli update through nginx"
grep -q $'^Velmora Notes\t2.0\t' "$work/update.out" || fail "Velmora Notes was not updated: $(cat "$work/update.out")"
grep -q '<string>2.0</string>' "$work/volume/Applications/Velmora Notes.app/Contents/Info.plist" ||
    fail "the installed copy is not the new version"

# Fault 1: a process killed in the middle of a load run; nginx sends its requests to the others.
printf '%s' "$body" >"$work/match.body"
cat >"$work/count.lua" <<'LUA'
local file = io.open(os.getenv("MATCH_BODY"), "rb")
wrk.method = "POST"
wrk.body = file:read("*a")
wrk.headers["Content-Type"] = "application/x-www-form-urlencoded"
LUA
MATCH_BODY=$work/match.body wrk -t2 -c8 -d6s --timeout 10s -s "$work/count.lua" "$url/vld603scan/automatch" >"$work/post.wrk" &
load=$!
wrk -t1 -c4 -d6s --timeout 10s "$url/vld6blacklist" >"$work/get.wrk" &
load_get=$!
sleep 2
kill -9 "${pids[2]}"
wait "${pids[2]}" 2>/dev/null || true
wait "$load" "$load_get"
cat "$work/post.wrk" "$work/get.wrk"
if grep -Eq 'Non-2xx|Socket errors' "$work/post.wrk" "$work/get.wrk"; then
    fail "requests failed while a process was killed"
fi
start_process 2 "${ports[2]}"

# Fault 2: the database server goes away and comes back; the processes answer 503 meanwhile and then by themselves.
"$source_dir/tests/service/pg-cluster.sh" halt "$work/pg"
# Each answer waits a few seconds for the database first, so the three are asked at once.
asking=()
for port in "${ports[@]}"; do
    status "http://127.0.0.1:$port/vld6blacklist" >"$work/away-$port" &
    asking+=($!)
done
wait "${asking[@]}"
for port in "${ports[@]}"; do
    [[ $(cat "$work/away-$port") == 503 ]] || fail "port $port answered $(cat "$work/away-$port") while the database was away"
done
"$source_dir/tests/service/pg-cluster.sh" resume "$work/pg"
for port in "${ports[@]}"; do
    for _ in $(seq 50); do [[ $(status "http://127.0.0.1:$port/vld6blacklist") == 200 ]] && break; sleep 0.2; done
    [[ $(status "http://127.0.0.1:$port/vld6blacklist") == 200 ]] || fail "port $port did not come back"
done
for pid in "${pids[@]}"; do kill -0 "$pid" || fail "a process ended"; done
curl -sf "http://127.0.0.1:${ports[2]}/vld6member/jlogincheck2/u/$email/p/$password/vld/6.0.4/c/C/os/14/r/1/cpu/8/uuid/U" |
    grep -q '"id"' || fail "sign-in at the restarted process"

# Fault 3: a server that cannot be reached at start: retried, then named.
closed=$(free_port)
if "$service" serve --listen 127.0.0.1:0 --db "postgresql://velmora@127.0.0.1:$closed/velmora" --key-file "$key" \
    --db-wait 2 >/dev/null 2>"$work/unreachable.log"; then
    fail "a service started without its database"
fi
grep -q "cannot reach the database at 127.0.0.1:$closed/velmora" "$work/unreachable.log" ||
    fail "no clear message: $(cat "$work/unreachable.log")"
echo "loopback arrangement: all checks passed"
