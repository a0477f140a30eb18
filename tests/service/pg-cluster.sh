#!/usr/bin/env bash
# A throwaway PostgreSQL cluster for the service's tests, on a free loopback port.
#
#   pg-cluster.sh start STATE_DIR   initdb and start; writes STATE_DIR/url (postgresql://velmora@127.0.0.1:PORT/postgres)
#   pg-cluster.sh halt STATE_DIR    stop the server, keeping the cluster
#   pg-cluster.sh resume STATE_DIR  start it again on the same port
#   pg-cluster.sh stop STATE_DIR    stop and remove the cluster
#
# The server refuses to run as root, so as root the cluster belongs to the postgres user (under /tmp, where that user
# can reach it); STATE_DIR/data names its folder.
set -euo pipefail
action=$1
state=$2
bin=$(ls -d /usr/lib/postgresql/*/bin | sort -V | tail -n1)
as_owner() {
    if [[ $(id -u) == 0 ]]; then runuser -u postgres -- "$@"; else "$@"; fi
}
pg_ctl() { as_owner "$bin/pg_ctl" -D "$(cat "$state/data")/cluster" -l "$(cat "$state/data")/server.log" "$@"; }

case $action in
start)
    mkdir -p "$state"
    data=$(mktemp -d /tmp/velmora-pg.XXXXXX)
    [[ $(id -u) == 0 ]] && chown postgres: "$data"
    echo "$data" >"$state/data"
    port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
    as_owner "$bin/initdb" -D "$data/cluster" -U velmora --auth=trust -E UTF8 --locale=C.UTF-8 >"$data/initdb.log"
    cat >>"$data/cluster/postgresql.conf" <<CONF
port = $port
listen_addresses = '127.0.0.1'
unix_socket_directories = '$data'
fsync = off
max_connections = 200
CONF
    pg_ctl -w start >/dev/null
    echo "postgresql://velmora@127.0.0.1:$port/postgres" >"$state/url"
    ;;
halt)
    pg_ctl -w -m fast stop >/dev/null
    ;;
resume)
    pg_ctl -w start >/dev/null
    ;;
stop)
    if [[ -f $state/data ]]; then
        pg_ctl -w -m fast stop >/dev/null || true
        rm -rf "$(cat "$state/data")"
    fi
    rm -rf "$state"
    ;;
*)
    echo "usage: $0 start|halt|resume|stop STATE_DIR" >&2
    exit 2
    ;;
esac
