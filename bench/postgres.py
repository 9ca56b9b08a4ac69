"""A PostgreSQL server for measurements, and a network between it and its clients."""

import glob
import os
import select
import signal
import socket
import subprocess
import tempfile
import threading
import time


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class PostgresServer:
    """A server on a free port of the loopback interface, in a scratch folder."""

    def __enter__(self):
        self.folder = tempfile.TemporaryDirectory()
        self.port = free_port()
        programs = sorted(glob.glob("/usr/lib/postgresql/*/bin"))[-1]
        self.environment = dict(os.environ, PATH=f"{programs}:{os.environ['PATH']}",
                                PGHOST="127.0.0.1", PGPORT=str(self.port), PGUSER="tester",
                                PGPASSWORD="secret", PGSSLMODE="disable", PGGSSENCMODE="disable")
        own = []
        if os.getuid() == 0:  # which it refuses to run as
            subprocess.run(["chown", "postgres", self.folder.name], check=True)
            own = ["setpriv", "--clear-groups", "--reuid=postgres", "--regid=postgres"]
        options = {"env": self.environment, "cwd": self.folder.name,
                   "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        subprocess.run([*own, "initdb", "-D", "data", "-U", "tester", "-N", "-E", "UTF8",
                        "--no-locale", "-A", "trust"], check=True, **options)
        self.process = subprocess.Popen([*own, "postgres", "-D", "data", "-F", "-h", "127.0.0.1",
                                         "-c", "unix_socket_directories="], **options)
        while subprocess.run(["pg_isready", "-q"], check=False, env=self.environment).returncode:
            time.sleep(0.1)
        return self

    def __exit__(self, *_):
        self.process.send_signal(signal.SIGINT)
        self.process.wait()
        self.folder.cleanup()

    def outputs(self, database):
        run = subprocess.run(["psql", "-At", database, "-c", "SELECT count(*) FROM tq_output"],
                             check=True, env=self.environment, capture_output=True, text=True)
        return int(run.stdout)


class Proxy:
    """Passes connections on to a port and counts round trips: how often a client says something
    after the server has answered. Each may be held up."""

    def __init__(self, target):
        self.target = target
        self.delay = 0.0
        self.round_trips = 0
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]

    def __enter__(self):
        threading.Thread(target=self.accept, daemon=True).start()
        return self

    def __exit__(self, *_):
        self.listener.close()

    def accept(self):
        while True:
            try:
                client, _ = self.listener.accept()
            except OSError:
                return
            threading.Thread(target=self.serve, args=(client,), daemon=True).start()

    def serve(self, client):
        with client, socket.create_connection(("127.0.0.1", self.target)) as server:
            for end in (client, server):
                end.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            answered = True
            while True:
                for source in select.select([client, server], [], [])[0]:
                    data = source.recv(1 << 16)
                    if not data:
                        return
                    if source is client and answered:
                        self.round_trips += 1
                        time.sleep(self.delay)
                    answered = source is server
                    (server if source is client else client).sendall(data)
