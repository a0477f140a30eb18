#!/usr/bin/env bash
# Resident size of one velmora-service (SQLite) after many large matching requests, with glibc's default arenas (as
# the systemd unit runs it) and with MALLOC_ARENA_MAX=2: each of its worker threads that allocates at once may get
# an arena of its own, which keeps what a large request left behind until the process gives its heap back.
#
#   bench/service/wrk-memory.sh [BUILD_DIR] [SECONDS] [CONNECTIONS] [APPS]
#
# Defaults: 20 s, 16 connections (as many as the service's workers), 5,000 apps a request.
set -euo pipefail
build=$(realpath "${1:-build}")
seconds=${2:-20}
connections=${3:-16}
apps=${4:-5000}
# shellcheck source=bench/service/wrk-lib.sh
. "$(dirname "$0")/wrk-lib.sh"

load_catalogue "$work/service.sqlite"
echo "$(nproc) processors; $apps apps a request, $connections connections, ${seconds}s a run"
table_head
for arenas in "" MALLOC_ARENA_MAX=2; do
    serve "memory${arenas:+-arenas}" "$work/service.sqlite" ${arenas:+"$arenas"}
    before=$(resident "$service_pid")
    [[ -f $work/request.body ]] ||
        "$build/bench/service/bench_service_automatch" --url "$service_url" --apps "$apps" --save "$work/request"
    measure "${arenas:-default arenas}" "$service_pid" "" "" -s "$here/automatch.lua" \
        "$service_url/vld603scan/automatch"
    echo "resident size: $before at the start, $(resident "$service_pid") after $(awk '/requests in/ { print $1 }' "$work/last.wrk") requests"
    kill "$service_pid"
    wait "$service_pid" 2>/dev/null || true
done
