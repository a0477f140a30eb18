#!/usr/bin/env bash
# The matching request of 500 apps under wrk, against one velmora-service on SQLite, and nginx answering the very
# same reply bytes from a file in the same run: the limit of answering at all on this machine.
#
#   bench/service/wrk-automatch.sh [BUILD_DIR] [SECONDS] [CONNECTIONS]
#
# Prints wrk's figures for both, the service's processor time per request and its resident size afterwards.
set -euo pipefail
build=$(realpath "${1:-build}")
seconds=${2:-10}
connections=${3:-4}
here=$(dirname "$(realpath "$0")")
work=$(mktemp -d)
chmod 755 "$work" # nginx's workers read the reply file as another user
service_pid=
nginx_pid=
cleanup() {
    [[ -n $service_pid ]] && kill "$service_pid" 2>/dev/null && wait "$service_pid" 2>/dev/null
    [[ -n $nginx_pid ]] && kill "$nginx_pid" 2>/dev/null && wait "$nginx_pid" 2>/dev/null
    rm -rf "$work"
}
trap cleanup EXIT

free_port() { python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'; }
# user + system time of a process, in clock ticks
cpu_ticks() { awk '{ print $14 + $15 }' "/proc/$1/stat"; }

service=$build/service/velmora-service
"$service" import --db "$work/service.sqlite" --key-file "$work/member.key" "$build/data/catalogue.json" >/dev/null
"$service" serve --listen 127.0.0.1:0 --db "$work/service.sqlite" --key-file "$work/member.key" --no-sample \
    >"$work/address" 2>"$work/service.log" &
service_pid=$!
for _ in $(seq 100); do [[ -s $work/address ]] && break; sleep 0.1; done
url=$(head -n1 "$work/address")
"$build/bench/service/bench_service_automatch" --url "$url" --save "$work/request"

mkdir -p "$work/static"
install -m 644 "$work/request.reply" "$work/static/reply"
nginx_port=$(free_port)
cat >"$work/nginx.conf" <<CONF
worker_processes 1;
error_log $work/nginx-error.log;
pid $work/nginx.pid;
events { worker_connections 1024; }
http {
    access_log off;
    sendfile on;
    tcp_nodelay on;
    client_body_temp_path $work/tmp;
    server {
        listen 127.0.0.1:$nginx_port;
        root $work/static;
        default_type application/octet-stream;
    }
}
CONF
nginx -c "$work/nginx.conf" -p "$work" -g 'daemon off;' &
nginx_pid=$!
sleep 0.5

echo "machine load: $(cut -d' ' -f1-3 /proc/loadavg); $(nproc) processors"
echo "reply: $(stat -c %s "$work/request.reply") bytes (zlib); request: $(stat -c %s "$work/request.body") bytes"
echo
echo "== velmora-service, SQLite, 1 process, $connections connections, ${seconds}s"
before=$(cpu_ticks "$service_pid")
AUTOMATCH_BODY=$work/request.body wrk -t2 -c"$connections" -d"${seconds}s" --latency -s "$here/automatch.lua" \
    "$url/vld603scan/automatch" | tee "$work/service.wrk"
after=$(cpu_ticks "$service_pid")
requests=$(awk '/requests in/ { print $1 }' "$work/service.wrk")
awk -v t=$((after - before)) -v n="$requests" -v hz="$(getconf CLK_TCK)" \
    'BEGIN { printf "service cpu per request: %.2f ms\n", t * 1000 / hz / n }'
echo "service resident size after the run: $(awk '/VmRSS/ { print $2, $3 }' "/proc/$service_pid/status")"
echo
echo "== nginx, the same reply bytes from a file, $connections connections, ${seconds}s"
wrk -t2 -c"$connections" -d"${seconds}s" --latency "http://127.0.0.1:$nginx_port/reply"
