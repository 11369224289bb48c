"""What the tests of the command share: a home in a directory of its own, and the command run in it."""

import os
import resource
import shutil
import sqlite3
import subprocess
import tempfile
import unittest

ORMEL = os.environ["ORMEL"]
EXAMPLES = os.environ["ORMEL_EXAMPLES"]  # the directory of the built example programs
SOURCE = os.environ["ORMEL_SOURCE"]
POSTGRES = os.environ.get("ORMEL_POSTGRES_PORT")  # of the server that with_postgres.py started; None: the embedded engine
PATIENCE = "20000"  # for a server on a machine that has other things to do

# Runs the command as on a disk that fails where a file gets long. SIGXFSZ stays ignored, as Python has it.
FAILING_DISK = {"restore_signals": False,
                "preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (65536, 65536))}


class DirectoryTest(unittest.TestCase):
    """A test in a fresh directory, the working directory of what it runs."""

    def setUp(self):
        self.directory = os.path.realpath(tempfile.mkdtemp(prefix="ormel-cli-"))
        self.addCleanup(shutil.rmtree, self.directory)
        self.write("password", "secret\n")

    def path(self, name):
        return os.path.join(self.directory, name)

    def write(self, name, content):
        with open(self.path(name), "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())
        return name

    def read(self, name):
        with open(self.path(name), encoding="utf-8", newline="") as file:
            return file.read()

    def run_ormel(self, *arguments, **options):
        options.setdefault("cwd", self.directory)
        options.setdefault("stdin", subprocess.DEVNULL)
        return subprocess.run([ORMEL, *arguments], capture_output=True, encoding="utf-8", timeout=200, **options)

    def succeed(self, *arguments, notes="", **options):
        """Runs the command, which says nothing on standard error but the notes; its standard output."""
        done = self.run_ormel(*arguments, **options)
        self.assertEqual((done.returncode, done.stderr), (0, notes), done.stdout)
        return done.stdout

    def fail_with(self, code, *arguments, **options):
        """Runs the command, which fails with one line and without output; the line behind "ormel: "."""
        done = self.run_ormel(*arguments, **options)
        self.assertEqual((done.returncode, done.stdout), (code, ""), done.stderr)
        lines = done.stderr.splitlines()
        self.assertEqual(len(lines), 1, done.stderr)
        self.assertTrue(lines[0].startswith("ormel: "), lines[0])
        return lines[0][len("ormel: "):]

    def configure(self, key, value, home="home"):
        """Gives a key of the home's configuration another value."""
        file = home + "/conf/db.conf"
        lines = self.read(file).splitlines()
        self.assertIn(key, [line.split("=")[0] for line in lines])
        changed = [f"{key}={value}" if line.split("=")[0] == key else line for line in lines]
        self.write(file, "\n".join(changed) + "\n")

    def check(self, home="home"):
        """Runs ormel check; its exit code, what it tells by its labels, and standard error."""
        done = self.run_ormel("--home", home, "check")
        return done.returncode, {line[:14].strip(): line[14:] for line in done.stdout.splitlines()}, done.stderr


class HomeTest(DirectoryTest):
    """A test with a home, in which self.ormel and self.refused run a command."""

    def setUp(self):
        super().setUp()
        words = []
        if POSTGRES:
            self.write("password", os.environ["ORMEL_POSTGRES_PASSWORD"] + "\n")
            words = ["--engine", "postgres", "--host", "127.0.0.1", "--port", POSTGRES, "--dbname", "postgres",
                     "--user", "postgres"]
        self.succeed("new", "home", "--password-file", "password", *words)
        self.configure("client.connect_timeout_ms", PATIENCE)

    def ormel(self, *arguments, **options):
        return self.succeed("--home", "home", *arguments, **options)

    def refused(self, code, *arguments, **options):
        return self.fail_with(code, "--home", "home", *arguments, **options)

    def sql(self, text):
        return self.ormel("sql", text)

    def database(self):
        """The database as another program sees it."""
        connection = sqlite3.connect(self.path("home/data/ormel.db"), isolation_level=None)
        self.addCleanup(connection.close)
        return connection


def fill(test, target, count):
    """Inserts rows for i from 1 to count: "t (id) SELECT i"."""
    test.database().executescript(f"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < {count}) "
                                  f"INSERT INTO {target} FROM n")
