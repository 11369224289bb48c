"""ormel check, on the embedded engine and where there is no database."""

import os
import socket
import time
import unittest

from harness import ORMEL, DirectoryTest, HomeTest

WRONG = "ormel: the database does not do all that it should: {} failed\n"


class Check(HomeTest):
    def test_tells_what_the_database_is(self):
        code, told, errors = self.check()
        self.assertEqual((code, errors), (0, ""))
        self.assertEqual(list(told), ["engine", "file", "version", "journal mode", "writing", "round trip"])
        self.assertEqual(told["engine"], "sqlite")
        self.assertEqual(told["file"], self.path("home/data/ormel.db"))
        self.assertRegex(told["version"], r"^3\.\d+\.\d+$")
        self.assertEqual(told["journal mode"], "wal")
        self.assertEqual(told["writing"], "possible")
        self.assertRegex(told["round trip"], r"^\d+ us$")

    def test_changes_nothing(self):
        self.ormel("check")
        other = self.database()
        other.execute("PRAGMA user_version = -7")
        before = other.execute("PRAGMA data_version").fetchall()
        self.assertEqual(self.check()[0], 0)
        self.assertEqual(other.execute("PRAGMA data_version").fetchall(), before, "nobody else wrote")
        self.assertEqual(other.execute("PRAGMA user_version").fetchall(), [(-7,)])

    def test_the_engine_is_the_embedded_one_where_none_is_named(self):
        self.configure("db.driver", "")
        self.assertEqual(self.check()[1]["engine"], "sqlite")

    def test_an_engine_is_read_as_the_library_reads_it(self):
        self.configure("db.driver", " sqlite \r=nonesuch")
        self.assertEqual(self.check()[1]["engine"], "sqlite")

    def test_a_step_that_fails_is_told_and_the_others_are_done(self):
        self.configure("client.busy_timeout_ms", "50")
        self.ormel("check")
        self.database().execute("BEGIN IMMEDIATE")
        code, told, errors = self.check()
        self.assertEqual((code, errors), (1, WRONG.format("1 step")))
        self.assertRegex(told["writing"], "^not known: .*database is locked[^;]*; it was waited for [^;]*; another "
                                          "process is at work in it: try again when it is done$")
        self.assertRegex(told["round trip"], r"^\d+ us$")

    def test_a_file_that_cannot_be_written(self):
        self.sql("CREATE TABLE t (a INTEGER)")
        with open(self.path("home/data/ormel.db"), "r+b") as file:
            file.seek(18)  # the version of the format that a writer must know
            file.write(b"\x03")
        code, told, errors = self.check()
        self.assertEqual((code, errors), (1, WRONG.format("1 step")))
        self.assertRegex(told["writing"], "^not known: .*readonly database.*; let the user of this process write the "
                                          "file and its directory$")

    def test_a_file_that_is_no_database(self):
        self.write("home/data/ormel.db", "this is no database file\n" * 100)
        self.assertIn("file is not a database", self.refused(1, "check"))

    def test_an_engine_that_is_not_there(self):
        self.configure("db.driver", "nonesuch")
        self.assertIn("nonesuch", self.refused(1, "check"))


class NoClientLibrary(HomeTest):
    """A host without libpq: whoever needs it looks for a library of another name, and finds none."""

    def setUp(self):
        super().setUp()
        built = os.path.join(os.path.dirname(ORMEL), "..", "lib")
        os.makedirs(self.path("lib/ormeldb/engines"))
        for name in ["libormeldb.so.0", "libqdclient.so", "ormeldb/engines/sqlite.so", "ormeldb/engines/postgres.so"]:
            with open(os.path.join(built, name), "rb") as file:
                library = file.read()
            self.write(f"lib/{name}", library.replace(b"\0libpq.so.5\0", b"\0libpq.so.-\0"))
        self.environment = {**os.environ, "LD_LIBRARY_PATH": self.path("lib")}

    def test_is_needed_by_the_embedded_engine(self):
        self.assertIn("sqlite", self.ormel("check", env=self.environment))
        self.ormel("sql", "CREATE TABLE t (a INTEGER)", env=self.environment)

    def test_is_named_with_the_remedy_where_it_is_needed(self):
        self.configure("db.driver", "postgres")
        line = self.refused(1, "check", env=self.environment)
        self.assertIn("the database engine postgres cannot be loaded: libpq.so.-: cannot open shared object file", line)
        self.assertIn("; install what it needs, or set db.driver in ../conf/db.conf to an engine that is installed", line)


class NoServer(DirectoryTest):
    def new(self, host, port):
        self.succeed("new", "home", "--password-file", "password", "--engine", "postgres", "--host", host, "--port",
                     str(port), "--dbname", "shop", "--user", "clerk")

    def listener(self):
        """A socket that takes connections and never says a word."""
        listener = socket.create_server(("127.0.0.1", 0))
        self.addCleanup(listener.close)
        return listener

    def test_that_answers(self):
        port = self.listener().getsockname()[1]
        self.new("127.0.0.1", port)
        begin = time.monotonic()
        line = self.fail_with(1, "--home", "home", "check")
        self.assertLess(time.monotonic() - begin, 30)
        self.assertIn(f"no answer from 127.0.0.1, port {port}, within client.connect_timeout_ms", line)
        self.assertIn("see that the server runs", line)

    def test_on_the_port(self):
        listener = self.listener()
        port = listener.getsockname()[1]
        listener.close()
        self.new("127.0.0.1", port)
        line = self.fail_with(1, "--home", "home", "check")
        self.assertIn(f"cannot open the database that {self.path('home/conf/db.conf')} names: ", line)
        self.assertIn("Connection refused", line)
        self.assertIn("see that the server runs", line)

    def test_of_that_name(self):
        self.new("no.such.host.invalid", 5432)
        line = self.fail_with(1, "--home", "home", "check")
        self.assertIn("no.such.host.invalid", line)
        self.assertTrue(os.path.exists(self.path("home/var/log/slot-900")))


if __name__ == "__main__":
    unittest.main()
