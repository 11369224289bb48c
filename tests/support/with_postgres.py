#!/usr/bin/env python3
"""Runs a command beside a PostgreSQL server of its own.

The server runs as the user postgres (or as oneself, without root), in a temporary directory, on a free port of the
loopback address, with passwords and TLS on, and is stopped by its process id, also when this script is killed. The
command finds it by the environment: ORMEL_POSTGRES_PORT, ORMEL_POSTGRES_PASSWORD, ORMEL_POSTGRES_CERTIFICATES, a
directory with root.crt, the authority that the server's certificate for localhost comes from, foreign.crt, another one,
and the server's socket; and ORMEL_POSTGRES_CONTROL, a socket to restart the server by: a connection that sends the name
of a signal (SIGQUIT: an immediate stop) is closed when the server was ended by it and takes connections again.
"""
import ctypes
import glob
import os
import pathlib
import secrets
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

LIBC = ctypes.CDLL(None)
PR_SET_PDEATHSIG = 1
PATIENCE = 60  # seconds

SETTINGS = """
listen_addresses = '127.0.0.1'
unix_socket_directories = '{certificates}'
max_connections = 200
fsync = off
ssl = on
ssl_cert_file = '{certificates}/server.crt'
ssl_key_file = '{certificates}/server.key'
logging_collector = off
log_min_messages = fatal
"""


def binaries():
    found = sorted(glob.glob("/usr/lib/postgresql/*/bin/initdb"))
    if not found:
        sys.exit("with_postgres.py: there is no PostgreSQL server; scripts/setup installs one")
    return os.path.dirname(found[-1])


def server_user():
    """Servers refuse to run as root."""
    return {"user": "postgres", "group": "postgres", "extra_groups": []} if os.geteuid() == 0 else {}


def run_as_server(directory, *command):
    done = subprocess.run(command, capture_output=True, encoding="utf-8", cwd=directory, **server_user())
    if done.returncode != 0:
        sys.exit(f"with_postgres.py: {command[0]} failed: {done.stdout}{done.stderr}")


def make_certificates(directory):
    """An authority, a certificate of it for localhost, and an authority that has nothing to do with it."""
    directory.mkdir()
    if os.geteuid() == 0:
        shutil.chown(directory, "postgres", "postgres")
    openssl = ["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2"]
    for name in ("root", "foreign"):
        run_as_server(directory, *openssl, "-subj", f"/CN={name}", "-keyout", name + ".key", "-out", name + ".crt")
    run_as_server(directory, *openssl, "-subj", "/CN=localhost", "-addext", "subjectAltName=DNS:localhost",
                  "-addext", "basicConstraints=CA:FALSE", "-CA", "root.crt", "-CAkey", "root.key",
                  "-keyout", "server.key", "-out", "server.crt")
    (directory / "server.key").chmod(0o600)


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def make_cluster(directory, password):
    data, certificates = directory / "data", directory / "certificates"
    (directory / "password").write_text(password)
    run_as_server(directory, binaries() + "/initdb", "-D", str(data), "-U", "postgres", "-E", "UTF8", "--locale=C.UTF-8",
                  "--auth=scram-sha-256", "--pwfile", str(directory / "password"), "--no-sync")
    return data, certificates


def end_with_parent():
    """Run in the child: an immediate stop when the parent is gone."""
    LIBC.prctl(PR_SET_PDEATHSIG, signal.SIGQUIT)


class Server:
    """The server process, and the socket that restarts it."""

    def __init__(self, directory, data, port):
        self.directory, self.data, self.port = directory, data, port
        self.process = None
        self.start()
        self.control = socket.socket(socket.AF_UNIX)
        self.control.bind(self.control_path())
        self.control.listen()
        threading.Thread(target=self.serve, daemon=True).start()

    def control_path(self):
        return str(self.directory / "control")

    def start(self):
        # One that was killed leaves processes behind, which its successor must not meet; they end by themselves.
        deadline = time.monotonic() + PATIENCE
        while time.monotonic() < deadline:
            self.process = subprocess.Popen([binaries() + "/postgres", "-D", str(self.data), "-p", str(self.port)],
                                            cwd=self.directory, preexec_fn=end_with_parent, **server_user())
            if self.is_ready():
                return
        sys.exit("with_postgres.py: the server did not become ready")

    def is_ready(self):
        command = [binaries() + "/pg_isready", "-q", "-h", "127.0.0.1", "-p", str(self.port)]
        while self.process.poll() is None:
            if subprocess.run(command, check=False).returncode == 0:
                return True
            time.sleep(0.05)
        time.sleep(0.05)
        return False

    def end(self, signal_number):
        self.process.send_signal(signal_number)
        self.process.wait(PATIENCE)

    def serve(self):
        while True:
            with self.control.accept()[0] as asker:
                self.end(signal.Signals[asker.recv(16).decode()])
                self.start()


def main():
    if len(sys.argv) < 2:
        sys.exit(f"usage: {sys.argv[0]} COMMAND [ARGUMENT]...")
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))
    directory = pathlib.Path(tempfile.mkdtemp(prefix="ormel-postgres-"))
    server = None
    try:
        directory.chmod(0o755)
        if os.geteuid() == 0:
            shutil.chown(directory, "postgres", "postgres")
        password, port = secrets.token_hex(8), free_port()
        data, certificates = make_cluster(directory, password)
        make_certificates(certificates)
        with open(data / "postgresql.conf", "a", encoding="utf-8") as settings:
            settings.write(SETTINGS.format(certificates=certificates))
        server = Server(directory, data, port)
        environment = dict(os.environ, ORMEL_POSTGRES_PORT=str(port), ORMEL_POSTGRES_PASSWORD=password,
                           ORMEL_POSTGRES_CERTIFICATES=str(certificates),
                           ORMEL_POSTGRES_CONTROL=server.control_path())
        return subprocess.run(sys.argv[1:], env=environment, check=False).returncode
    finally:
        if server is not None:
            server.end(signal.SIGINT)
        shutil.rmtree(directory, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
