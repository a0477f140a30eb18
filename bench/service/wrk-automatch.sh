#!/usr/bin/env bash
# The matching request of 500 apps under wrk, against one velmora-service on SQLite, and nginx answering the very
# same reply bytes from a file in the same run: the limit of answering at all on this machine. With --processes,
# also N service processes on one PostgreSQL database behind nginx (the packaged site), for each N of the list, run
# as the systemd unit runs them.
#
#   bench/service/wrk-automatch.sh [--processes 1,2,4] [--rounds R] [--site-directives TEXT] [BUILD_DIR] [SECONDS]
#                                  [CONNECTIONS]
#
# --site-directives adds nginx directives to the site's server block, to measure a change to it before making it.
# Prints a table row per configuration and round (the rounds interleave, so that a change in the machine's load
# shows in every configuration), then each service process's resident size after the runs.
set -euo pipefail
processes=
rounds=1
site_directives=
while [[ ${1:-} == --* ]]; do
    case $1 in
    --processes) processes=${2//,/ } ;;
    --rounds) rounds=$2 ;;
    --site-directives) site_directives=$2 ;;
    *) echo "usage: $0 [--processes 1,2,4] [--rounds R] [--site-directives TEXT] [BUILD_DIR] [SECONDS] [CONNECTIONS]" >&2; exit 2 ;;
    esac
    shift 2
done
build=$(realpath "${1:-build}")
seconds=${2:-10}
connections=${3:-4}
# shellcheck source=bench/service/wrk-lib.sh
. "$(dirname "$0")/wrk-lib.sh"

load_catalogue "$work/service.sqlite"
serve sqlite "$work/service.sqlite"
sqlite_pid=$service_pid
sqlite_url=$service_url
"$build/bench/service/bench_service_automatch" --url "$sqlite_url" --save "$work/request"

mkdir -p "$work/static" "$work/file-nginx"
install -m 644 "$work/request.reply" "$work/static/reply"
file_port=$(free_port)
cat >"$work/file-nginx/nginx.conf" <<CONF
worker_processes 1;
error_log $work/file-nginx/nginx-error.log;
pid $work/file-nginx/nginx.pid;
events { worker_connections 1024; }
http {
    access_log off;
    sendfile on;
    tcp_nodelay on;
    client_body_temp_path $work/file-nginx/tmp;
    server {
        listen 127.0.0.1:$file_port;
        root $work/static;
        default_type application/octet-stream;
    }
}
CONF
start_nginx "$work/file-nginx" "http://127.0.0.1:$file_port/reply"
file_nginx=$(server_pids "$nginx_pid")

# The processes on PostgreSQL, as many as the largest N, and a front of the packaged site for each N.
pg_pids=()
ports=()
declare -A front_url front_pids
if [[ -n $processes ]]; then
    "$source_dir/tests/service/pg-cluster.sh" start "$work/pg"
    server=$(cat "$work/pg/url")
    psql -qX "$server" -c 'CREATE DATABASE velmora'
    db=${server%/postgres}/velmora
    load_catalogue "$db"
    most=$(tr ' ' '\n' <<<"$processes" | sort -n | tail -n1)
    for i in $(seq "$most"); do
        serve "pg-$i" "$db"
        pg_pids+=("$service_pid")
        ports+=("${service_url##*:}")
    done
    mkdir -p "$work/files"
    for n in $processes; do
        front=$work/front-$n
        mkdir -p "$front"
        # nginx-site.sh writes the site for three processes; its upstream's server line is repeated once per process.
        front_url[$n]=$("$source_dir/tests/service/nginx-site.sh" "$front" "$work/files" "${ports[0]}" "${ports[0]}" "${ports[0]}")
        awk -v ports="${ports[*]:0:n}" -v directives="$site_directives" '
            /^ *server 127\.0\.0\.1:[0-9]+ / {
                if (!written) {
                    count = split(ports, port, " ")
                    for (i = 1; i <= count; ++i) { line = $0; sub(/:[0-9]+ /, ":" port[i] " ", line); print line }
                    written = 1
                }
                next
            }
            { print }
            /^ *server_name / && directives != "" { print "    " directives }' "$front/site.conf" >"$front/site.new"
        mv "$front/site.new" "$front/site.conf"
        start_nginx "$front" "${front_url[$n]}/vld6blacklist"
        front_pids[$n]=$(server_pids "$nginx_pid")
    done
fi

# Each process reads the catalogue at its first request; that belongs to no round.
for port in "${ports[@]}"; do
    curl -sfo /dev/null --data-binary "@$work/request.body" "http://127.0.0.1:$port/vld603scan/automatch"
done

echo "$(nproc) processors; reply: $(stat -c %s "$work/request.reply") bytes (zlib); request: $(stat -c %s "$work/request.body") bytes; $connections connections, ${seconds}s a run"
table_head
for round in $(seq "$rounds"); do
    measure "SQLite, 1 process (round $round)" "$sqlite_pid" "" "" -s "$here/automatch.lua" "$sqlite_url/vld603scan/automatch"
    measure "nginx, the reply from a file (round $round)" "" "$file_nginx" "" "http://127.0.0.1:$file_port/reply"
    for n in $processes; do
        measure "PostgreSQL, $n behind nginx (round $round)" "${pg_pids[*]:0:n}" "${front_pids[$n]}" \
            "$(server_pids "$(head -n1 "$(cat "$work/pg/data")/cluster/postmaster.pid")")" \
            -s "$here/automatch.lua" "${front_url[$n]}/vld603scan/automatch"
    done
done
echo
echo "resident size after the runs: SQLite process $(resident "$sqlite_pid")"
for i in "${!pg_pids[@]}"; do echo "  PostgreSQL process $((i + 1)): $(resident "${pg_pids[i]}")"; done
