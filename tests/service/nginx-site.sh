#!/usr/bin/env bash
# nginx in front of three velmora-service processes on loopback: the packaged site
# (packaging/nginx/velmora-service.conf) with this run's ports and files folder, on a free port. Writes
# WORK/nginx.conf and prints nginx's address; then run
#   nginx -p WORK -c WORK/nginx.conf -e WORK/nginx-error.log -g 'daemon off;'
# The requests nginx answers itself (files, refusals before any process) go to WORK/service-front.log in the
# service's own line format, so that every request's line is in one of the WORK/service-*.log files.
#
#   nginx-site.sh WORK FILES PORT PORT PORT
set -euo pipefail
(($# == 5)) || { echo "usage: $0 WORK FILES PORT PORT PORT" >&2; exit 2; }
work=$1
files=$2
source_dir=$(realpath "$(dirname "$0")/../..")
front=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
sed -e "s/127.0.0.1:8651/127.0.0.1:$3/; s/127.0.0.1:8652/127.0.0.1:$4/; s/127.0.0.1:8653/127.0.0.1:$5/" \
    -e "s/listen 80;/listen 127.0.0.1:$front;/; /listen \[::\]:80;/d" \
    -e "s|/usr/share/velmora-service/files/|$files/|" \
    "$source_dir/packaging/nginx/velmora-service.conf" >"$work/site.conf"
# As root the workers would run as nobody, who may not read the run's folders.
[[ $(id -u) == 0 ]] && user='user root;' || user=
cat >"$work/nginx.conf" <<CONF
$user
worker_processes 1;
error_log $work/nginx-error.log;
pid $work/nginx.pid;
events { worker_connections 1024; }
http {
    map \$upstream_addr \$answered_here { "" 1; default 0; }
    # The target as sent, also when nginx refused it (\$request_uri is then empty).
    map \$request \$target { "~^\\S+ (?<sent>\\S+)" \$sent; default -; }
    log_format service '\$time_iso8601 \$remote_addr \$request_method \$target \$status \$body_bytes_sent (nginx)';
    access_log $work/service-front.log service if=\$answered_here;
    client_body_temp_path $work/nginx-body;
    proxy_temp_path $work/nginx-proxy;
    fastcgi_temp_path $work/nginx-fastcgi;
    uwsgi_temp_path $work/nginx-uwsgi;
    scgi_temp_path $work/nginx-scgi;
    include $work/site.conf;
}
CONF
echo "http://127.0.0.1:$front"
