"""Figures of whole programs: the command, over stores of up to a million jobs, and a router.

Instructions are counted under callgrind, as the difference of two runs: starting a program costs
the same for few rows and for many.
"""

import glob
import os
import re
import resource
import subprocess
import tempfile
import time

from postgres import PostgresServer, Proxy

FEW = 1000  # jobs
MORE = 3000
MANY = 1000000
MEMORY = 4 << 30  # bytes that a program may take; with more it fails
OUTPUTS = 4000
MIB = 1 << 20
PROFILES = "/usr/share/color/icc/*.icc"
POSTGRES_JOBS = 10000
RUNS = 7  # of which the fastest counts
DELAY = 0.001  # seconds that the network takes

# The figures that are ratios of instructions.
COUNTED = ("list_jobs_xml", "list_jobs_xml_over_stream", "list_jobs_growth", "init_jobs",
           "import_icc")


class Failed(Exception):
    """A measured program ended with an error."""

    def __init__(self, command, status, errors):
        lines = errors.strip().splitlines() or ["it said nothing"]
        super().__init__(f"{' '.join(command)} ended with {status}: {lines[-1]}")


class Commands:
    def __init__(self, build, qt):
        self.tqxml = f"{build}/tools/tqxml/tqxml{'-qt5' if qt == 5 else ''}"
        self.rows = f"{build}/bench/tqxml_rows"
        self.stored = f"{build}/bench/tqxml_stored"
        self.passage = f"{build}/bench/tqxml_passage"
        self.scratch = tempfile.TemporaryDirectory()
        self.folder = self.scratch.name

    # --- Running programs ---

    def peak(self, command):
        """The most memory that a program holds, in bytes."""
        def limit():
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
        with tempfile.TemporaryFile("w+", errors="replace") as errors:
            process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=errors,
                                       preexec_fn=limit)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            if process.returncode != 0:
                errors.seek(0)
                raise Failed(command, process.returncode, errors.read())
        return usage.ru_maxrss * 1024

    def instructions(self, command, **options):
        run = subprocess.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null",
                              *command], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                             text=True, errors="replace", check=False, **options)
        if run.returncode != 0:
            raise Failed(command, run.returncode, run.stderr)
        return int(re.search(r"Collected : (\d+)", run.stderr).group(1))

    def per_job(self, make_command, few=FEW, more=MORE):
        counts = [self.instructions(make_command(jobs)) for jobs in (few, more)]
        return (counts[1] - counts[0]) / (more - few)

    # --- Stores ---

    def init(self, path, jobs):
        return [self.tqxml, "init", "--jobs", str(jobs), path]

    def store(self, jobs):
        path = f"{self.folder}/{jobs}.db"
        if not os.path.exists(path):
            subprocess.run(self.init(path, jobs), check=True, stderr=subprocess.DEVNULL)
        return path

    def sql(self, path, text):
        run = subprocess.run(["sqlite3", path], input=text, check=True, text=True,
                             capture_output=True)
        return run.stdout

    def store_of_one_output(self):
        path = f"{self.folder}/one.db"
        if not os.path.exists(path):
            subprocess.run(["cp", self.store(MANY), path], check=True)
            self.sql(path, "UPDATE tq_job SET output_id = (SELECT min(id) FROM tq_output);")
        return path

    def list(self, store, kind="jobs", form="xml"):
        return [self.tqxml, "list", kind, "--format", form, "--database", store,
                *(["--include-publications"] if kind == "jobs" else [])]

    # --- Figures: value and floor ---

    def watching_nobody(self):
        """A router over one that does not look for listeners."""
        watched = self.per_job(lambda packets: [self.passage, str(packets)])
        unwatched = self.per_job(lambda packets: [f"{self.passage}_unwatched", str(packets)])
        return watched - unwatched, 1

    def list_jobs_xml(self):
        return (self.per_job(lambda jobs: self.list(self.store(jobs))),
                self.per_job(lambda jobs: [self.rows, "pugixml", self.store(jobs)]))

    def list_jobs_xml_over_stream(self):
        return (self.per_job(lambda jobs: self.list(self.store(jobs))),
                self.per_job(lambda jobs: [self.rows, "stream", self.store(jobs)]))

    def list_jobs_memory_xml(self):
        return self.peak(self.list(self.store(MANY))), MIB

    def list_jobs_memory_table(self):
        return self.peak(self.list(self.store(MANY), form="table")), MIB

    def list_jobs_memory_one_output(self):
        return self.peak(self.list(self.store_of_one_output())), MANY * 1024

    def list_publications_memory(self):
        publications = int(self.sql(self.store(MANY), "SELECT count(*) FROM tq_publication;"))
        peak = self.peak(self.list(self.store(MANY), "publications"))
        return max(peak - publications * 1024, 1), MIB

    def list_jobs_growth(self):
        self.peak(self.list(self.store(MANY)))  # without valgrind, which would take hours to fail
        make = lambda jobs: self.list(self.store(jobs))  # noqa: E731
        return self.per_job(make, FEW, MANY), self.per_job(make)

    def list_jobs_again(self):
        """Nanoseconds after a process has listed and freed 4,000 outputs, and before."""
        store = f"{self.folder}/outputs.db"
        subprocess.run(["cp", self.store(MORE), store], check=True)
        self.sql(store, "WITH RECURSIVE more (n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM more"
                        f" WHERE n < {OUTPUTS}) INSERT INTO tq_output (id, name, technology,"
                        " resolution, colours) SELECT (SELECT max(id) FROM tq_output) + n,"
                        " 'more ' || n, 'proofer', 2400, 'Black' FROM more;")
        run = subprocess.run([self.stored, store, "again"], check=True, capture_output=True,
                             text=True)
        first, again = run.stdout.split()
        return int(again), int(first)

    def read_records(self):
        """Instructions of the store alone, by one more reading of all jobs in a process."""
        counts = [self.instructions([self.stored, self.store(MORE), "records", str(rounds)])
                  for rounds in (1, 2)]
        return (counts[1] - counts[0]) / MORE, 1000

    def init_jobs(self):
        numbers = iter(range(10))
        return (self.per_job(lambda jobs: self.init(f"{self.folder}/i{next(numbers)}.db", jobs)),
                self.per_job(self.import_by_sqlite))

    def import_by_sqlite(self, jobs):
        """The command that fills an empty store with the same rows from files."""
        source = self.store(jobs)
        tables = self.sql(source, "SELECT name FROM sqlite_master WHERE type = 'table';").split()
        script = f"{self.folder}/{jobs}.sql"
        with open(script, "w", encoding="utf-8") as out:
            out.write(self.sql(source, ".schema") + ".mode csv\n")
            for table in tables:
                rows = f"{self.folder}/{jobs}.{table}.csv"
                self.sql(source, f".mode csv\n.once {rows}\nSELECT * FROM {table};")
                out.write(f".import {rows} {table}\n")
        return ["sqlite3", f"{self.folder}/{jobs}.imported.db", f".read {script}"]

    def import_icc(self):
        return self.import_profiles(MANY), self.import_profiles(FEW)

    def import_profiles(self, jobs):
        """Instructions for all profiles but the first one."""
        files = sorted(glob.glob(PROFILES))
        counts = []
        for chosen in (files[:1], files):
            store = f"{self.folder}/icc.db"
            subprocess.run(["cp", self.store(jobs), store], check=True)
            self.sql(store, "UPDATE tq_job SET profile_id = NULL; DELETE FROM tq_icc_profile;")
            counts.append(self.instructions([self.tqxml, "import-icc", store, *chosen]))
        return counts[1] - counts[0]

    def list_jobs_round_trips(self):
        with PostgresServer() as server, Proxy(server.port) as proxy:
            store = self.store_on(server, proxy)
            subprocess.run(self.list(store), check=True, stdout=subprocess.DEVNULL,
                           env=server.environment)
            return max(proxy.round_trips - server.outputs("jobs"), 1), 1

    def list_jobs_waiting(self):
        """Milliseconds that each owner takes longer over a slow network."""
        with PostgresServer() as server, Proxy(server.port) as proxy:
            store = self.store_on(server, proxy)
            seconds = []
            for proxy.delay in (0, DELAY):
                seconds.append(min(self.seconds(self.list(store), server.environment)
                                   for _ in range(RUNS)))
            return 1000 * (seconds[1] - seconds[0]), server.outputs("jobs")

    def seconds(self, command, environment):
        started = time.monotonic()
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL, env=environment)
        return time.monotonic() - started

    def store_on(self, server, proxy):
        """The URL, through the proxy, of a store that is made past it."""
        subprocess.run(["createdb", "jobs"], check=True, env=server.environment)
        url = "postgresql://tester@127.0.0.1:{}/jobs"
        subprocess.run(self.init(url.format(server.port), POSTGRES_JOBS), check=True,
                       env=server.environment, stderr=subprocess.DEVNULL)
        return url.format(proxy.port)
