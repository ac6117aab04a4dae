# Database servers of our own for tools/with-servers and tools/with-cluster, which source this file.
# They set $here, the folder that it is in.
# shellcheck shell=bash disable=SC2154

# Installs packages; servers that they bring are not started by their installation. Tests that run side by side wait for
# each other here.
install_without_starting() {
    local policy=/usr/sbin/policy-rc.d made=no status=0 lock
    exec {lock}<"$here/servers.sh"
    flock "$lock"
    if [[ $(id -u) -eq 0 && ! -e $policy ]]; then
        printf '#!/bin/sh\nexit 101\n' >"$policy"
        chmod +x "$policy"
        made=yes
    fi
    "$here/install-packages" "$@" || status=$?
    [[ $made == no ]] || rm -f "$policy"
    exec {lock}<&-
    return "$status"
}

install_postgresql() { install_without_starting postgresql odbc-postgresql unixodbc; }
install_mariadb() { install_without_starting mariadb-server odbc-mariadb unixodbc; }
install_galera() { install_without_starting mariadb-server galera-4 rsync iproute2 odbc-mariadb unixodbc; }

# The driver for SQL Server: its server is played by a test.
install_freetds() { install_without_starting tdsodbc unixodbc; }

# Makes the folder $servers for data, sockets and logs, and sees to it that everything ends with this script.
make_server_folder() {
    servers=$(mktemp -d /tmp/vantlo-servers.XXXXXX)
    chmod 755 "$servers"
    export VANTLO_SERVERS=$servers
    server_pids=()
    trap stop_servers EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM HUP
}

stop_servers() {
    local pid
    for pid in ${server_pids[@]+"${server_pids[@]}"}; do kill -QUIT "$pid" 2>/dev/null || true; done
    for pid in ${server_pids[@]+"${server_pids[@]}"}; do wait "$pid" 2>/dev/null || true; done
    rm -rf "$servers"
}

# Makes a folder that belongs to the user whom a server runs as.
folder_of() {
    mkdir -p "$2"
    [[ $(id -u) -ne 0 ]] || chown "$1:" "$2"
}

# Becomes a command, as a user if we are root (neither server agrees to run as root). It is told to stop at once if this
# script dies. For use in a subshell.
exec_as_user() {
    local user=$1
    shift
    cd /
    if [[ $(id -u) -eq 0 ]]; then
        exec setpriv --reuid="$user" --regid="$user" --init-groups --pdeathsig QUIT "$@"
    else
        exec setpriv --pdeathsig QUIT "$@"
    fi
}

# Tries a command until it succeeds, for 60 seconds at most and as long as the server lives; else shows the server's log.
wait_for() {
    local pid=$1 log=$2 attempt
    shift 2
    for ((attempt = 0; attempt < 600; ++attempt)); do
        if "$@" >/dev/null 2>&1; then return 0; fi
        kill -0 "$pid" 2>/dev/null || break
        sleep 0.1
    done
    echo "The server did not start; the end of its log:" >&2
    tail -n 20 "$log" >&2
    return 1
}

start_postgresql() {
    local durable=$1 data=$servers/postgresql log=$servers/postgresql.log programs
    programs=$(printf '%s\n' /usr/lib/postgresql/*/bin | sort --version-sort | tail -n 1)
    folder_of postgres "$data" || return 1
    if ! (exec_as_user postgres "$programs/initdb" --pgdata="$data/data" --username=vantlo --auth=trust \
            --encoding=UTF8 --locale=C.UTF-8 --no-sync) >"$log" 2>&1; then
        cat "$log" >&2
        return 1
    fi
    local options=(-c listen_addresses= -c unix_socket_directories="$data" -c max_connections=100)
    [[ $durable == yes ]] || options+=(-c fsync=off -c synchronous_commit=off -c full_page_writes=off)
    (exec_as_user postgres "$programs/postgres" -D "$data/data" "${options[@]}") >>"$log" 2>&1 &
    server_pids+=($!)
    wait_for $! "$log" "$programs/psql" --host="$data" --username=vantlo --dbname=postgres \
        --command="create database vantlo" || return 1
    export VANTLO_POSTGRESQL="Driver={PostgreSQL Unicode};Servername=$data;Database=vantlo;UID=vantlo"
}

start_mariadb() {
    local durable=$1 data=$servers/mariadb log=$servers/mariadb.log
    make_mariadb_data "$data" "$log" || return 1
    local options=(--skip-networking --max-connections=100)
    [[ $durable == yes ]] || options+=(--innodb-flush-log-at-trx-commit=0 --skip-innodb-doublewrite)
    (exec_as_user mysql mariadbd --no-defaults --datadir="$data/data" --socket="$data/socket" \
        --pid-file="$data/pid" "${options[@]}") >>"$log" 2>&1 &
    server_pids+=($!)
    wait_for $! "$log" mariadb --no-defaults --socket="$data/socket" --user=root --execute="$make_mariadb_user" || return 1
    export VANTLO_MARIADB="Driver={MariaDB Unicode};Socket=$data/socket;Database=vantlo;UID=vantlo;PWD=vantlo"
}

make_mariadb_data() {
    local data=$1 log=$2
    folder_of mysql "$data" || return 1
    if ! (exec_as_user mysql mariadb-install-db --no-defaults --datadir="$data/data" --skip-test-db \
            --auth-root-authentication-method=normal) >"$log" 2>&1; then
        cat "$log" >&2
        return 1
    fi
}

make_mariadb_user="create database vantlo character set utf8mb4; create user vantlo identified by 'vantlo';
    grant all on *.* to vantlo with grant option;"
