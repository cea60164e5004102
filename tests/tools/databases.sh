#!/usr/bin/env bash
# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# Tests qxrs against real servers through ODBC: tests/tools/databases.sh QXRS. PostgreSQL and MariaDB
# are started in a folder of their own, on loopback ports that are free, and stopped again.
set -euo pipefail
qxrs=$(realpath "$1")
work=$(mktemp -d)
chmod 755 "$work"
stop() {
  for file in "$work/pg/data/postmaster.pid" "$work/maria/pid"; do
    [[ -e $file ]] || continue
    server=$(head -n 1 "$file")
    kill "$server" 2> /dev/null || true
    while kill -0 "$server" 2> /dev/null; do sleep 0.1; done
  done
  rm -rf "$work"
}
trap stop EXIT

free_port() { python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'; }
# Servers refuse to run as root.
as() {
  local user=$1
  shift
  if ((EUID == 0)); then runuser -u "$user" -- "$@"; else "$@"; fi
}
folder_of() {
  mkdir "$work/$1"
  ((EUID != 0)) || chown "$2" "$work/$1"
}
fail() {
  echo "FAILED: $*" >&2
  exit 1
}

# A driver by the file of its library: nothing has to be registered.
driver() { find /usr/lib -name "$1" | head -n 1; }

start_postgresql() {
  local bin port=$1
  bin=$(find /usr/lib/postgresql -type d -name bin | sort -V | tail -n 1)
  folder_of pg postgres
  as postgres "$bin/initdb" -D "$work/pg/data" -A trust -U qxrs -E UTF8 --locale=C.UTF-8 > "$work/pg.log"
  as postgres "$bin/postgres" -D "$work/pg/data" -c listen_addresses=127.0.0.1 -p "$port" -k "$work/pg" \
    >> "$work/pg.log" 2>&1 &
}

start_mariadb() {
  local port=$1
  folder_of maria mysql
  as mysql mariadb-install-db --no-defaults --datadir="$work/maria/data" --auth-root-authentication-method=normal \
    > "$work/maria.log" 2>&1
  echo 'CREATE DATABASE qxrs CHARACTER SET utf8mb4;' > "$work/init.sql"
  as mysql mariadbd --no-defaults --init-file="$work/init.sql" --datadir="$work/maria/data" --bind-address=127.0.0.1 --port="$port" \
    --socket="$work/maria/socket" --pid-file="$work/maria/pid" --character-set-server=utf8mb4 --skip-grant-tables \
    --skip-networking=0 >> "$work/maria.log" 2>&1 &
}

# check NAME CONNECTION: rows and kinds come back, a failure leaves no half table.
check() {
  local name=$1 database="odbc:$2" rows=$work/rows.jsonl
  printf '%s\n' '{"id":1,"r":0.5,"b":true,"t":"é 😀 \"x\""}' '{"id":-9223372036854775807,"r":-2.25,"b":false,"t":""}' \
    '{"id":3,"r":null,"b":null,"t":null}' > "$rows"
  for ((i = 0; i < 100; i++)); do
    "$qxrs" from-sql "$database" 'SELECT 1 AS one' > /dev/null 2> "$work/error" && break
    sleep 0.2
  done
  "$qxrs" to-sql --key id "$database" things "$rows" || fail "$name: to-sql"
  "$qxrs" convert "$database" - --query 'SELECT * FROM things ORDER BY id' --to jsonl > "$work/back" || fail "$name: reading"
  "$qxrs" sort --by id --to jsonl "$rows" | sed -E 's/:(true|1)\b/:1/; s/:false/:0/' > "$work/wanted"
  sed -E 's/"b":true/"b":1/; s/"b":false/"b":0/' "$work/back" > "$work/got"
  sed -E -i 's/"b":true/"b":1/; s/"b":false/"b":0/' "$work/wanted"
  cmp "$work/wanted" "$work/got" || { cat "$work/back"; fail "$name: the rows differ"; }
  echo '{"id":4}' | "$qxrs" to-sql --append "$database" things || fail "$name: append"
  echo '{"id":4}' | "$qxrs" to-sql --append "$database" things 2> /dev/null && fail "$name: the key is none"
  printf '{"id":5}\n{"id":' | "$qxrs" convert --from jsonl - "$database" --to-table half 2> /dev/null && fail "$name: half"
  "$qxrs" from-sql "$database" 'SELECT * FROM half' 2> /dev/null && fail "$name: half a table is left"
  [[ $("$qxrs" from-sql "$database" 'SELECT count(*) AS n FROM things') == *4* ]] || fail "$name: the number of rows"
  echo "$name: fine"
}

port=$(free_port)
start_postgresql "$port"
check PostgreSQL "Driver=$(driver psqlodbcw.so);Servername=127.0.0.1;Port=$port;Database=postgres;Username=qxrs;BoolsAsChar=0"
port=$(free_port)
start_mariadb "$port"
check MariaDB "Driver=$(driver libmaodbc.so);Server=127.0.0.1;Port=$port;Database=qxrs;User=root;CharSet=utf8mb4"
