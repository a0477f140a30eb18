# shellcheck shell=bash disable=SC2034,SC2154,SC2086
# Shared by the wrk benchmarks of the matching request (sourced): a scratch folder cleaned up on exit, service
# processes on free ports, a throwaway PostgreSQL cluster, nginx, and one table row of figures per wrk run.
#
# The sourcing script sets build, seconds and connections first.
here=$(dirname "$(realpath "${BASH_SOURCE[0]}")")
source_dir=$(realpath "$here/../..")
service=$build/service/velmora-service
work=$(mktemp -d)
chmod 755 "$work" # nginx's workers read the run's files as another user
pids=()
cleanup() {
    for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
    wait 2>/dev/null || true
    [[ -f $work/pg/data ]] && "$source_dir/tests/service/pg-cluster.sh" stop "$work/pg"
    rm -rf "$work"
}
trap cleanup EXIT

free_port() { python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'; }
# user + system time of processes, in clock ticks
cpu_ticks() {
    local pid ticks=0
    # a database server's connection that ended during the run is left out
    for pid; do ticks=$((ticks + $(awk '{ print $14 + $15 }' "/proc/$pid/stat" 2>/dev/null || echo 0))); done
    echo "$ticks"
}
resident() { awk '/VmRSS/ { printf "%d MB", $2 / 1024 }' "/proc/$1/status"; }
# a server's main process and its children (nginx's workers, PostgreSQL's connections), whose time is what counts
server_pids() { echo "$1" $(pgrep -P "$1"); }

# Imports the real-world catalogue into DB (a path or postgresql://...).
load_catalogue() {
    "$service" migrate --db "$1" --key-file "$work/member.key" >/dev/null
    "$service" import --db "$1" --key-file "$work/member.key" "$build/data/catalogue.json" >/dev/null
}

# serve NAME DB [VARIABLE=VALUE...]: a service on a free port, in the background, with the environment given; sets
# service_pid and service_url.
serve() {
    local name=$1 db=$2
    shift 2
    env "$@" "$service" serve --listen 127.0.0.1:0 --db "$db" --key-file "$work/member.key" --no-sample \
        >"$work/$name.address" 2>"$work/$name.log" &
    service_pid=$!
    pids+=("$service_pid")
    for _ in $(seq 100); do [[ -s $work/$name.address ]] && break; sleep 0.1; done
    [[ -s $work/$name.address ]] || { echo "$name did not start: $(tail -n 5 "$work/$name.log")" >&2; exit 1; }
    service_url=$(head -n1 "$work/$name.address")
}

# start_nginx CONF_DIR URL: nginx on CONF_DIR/nginx.conf, once URL answers; sets nginx_pid.
start_nginx() {
    nginx -p "$1" -c "$1/nginx.conf" -g 'daemon off;' 2>>"$1/nginx-error.log" &
    nginx_pid=$!
    pids+=("$nginx_pid")
    for _ in $(seq 50); do curl -so /dev/null "$2" && return; sleep 0.1; done
    echo "nginx did not start: $(tail -n 5 "$1/nginx-error.log")" >&2
    exit 1
}

table_head() {
    echo "| configuration | load average | req/s | p50 | p99 | cpu per request: service | nginx | PostgreSQL | failed |"
    echo "|---|---|---|---|---|---|---|---|---|"
}

# measure LABEL "SERVICE_PIDS" "NGINX_PIDS" "DATABASE_PIDS" WRK_ARGUMENTS...: one wrk run of $seconds with
# $connections connections, printed as a table row with the machine's load average when it started and the processor
# time the service processes, nginx and the database server spent per request.
measure() {
    local label=$1 services=$2 fronts=$3 database=$4
    shift 4
    local load service_before nginx_before database_before
    load=$(cut -d' ' -f1 /proc/loadavg)
    service_before=$(cpu_ticks $services)
    nginx_before=$(cpu_ticks $fronts)
    database_before=$(cpu_ticks $database)
    AUTOMATCH_BODY=$work/request.body wrk -t2 -c"$connections" -d"${seconds}s" --timeout 10s --latency "$@" >"$work/last.wrk"
    awk -v label="$label" -v load="$load" -v hz="$(getconf CLK_TCK)" \
        -v service="$(($(cpu_ticks $services) - service_before))" -v has_service="$services" \
        -v nginx="$(($(cpu_ticks $fronts) - nginx_before))" -v has_nginx="$fronts" \
        -v database="$(($(cpu_ticks $database) - database_before))" -v has_database="$database" '
        function per_request(ticks) { return sprintf("%.2f ms", ticks * 1000 / hz / requests) }
        $1 == "50%" { p50 = $2 }
        $1 == "99%" { p99 = $2 }
        /requests in/ { requests = $1 }
        /Requests\/sec/ { rate = $2 }
        /Non-2xx/ { failed += $NF }
        /Socket errors/ { gsub(",", ""); failed += $4 + $6 + $8 + $10 }
        END {
            printf "| %s | %s | %.0f | %s | %s | %s | %s | %s | %d |\n", label, load, rate, p50, p99,
                has_service == "" ? "-" : per_request(service), has_nginx == "" ? "-" : per_request(nginx),
                has_database == "" ? "-" : per_request(database), failed
        }' "$work/last.wrk"
}
