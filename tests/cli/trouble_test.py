"""What is wrong outside the command line: each time one line that says what, where and what to do."""

import os
import socket
import unittest

from harness import FAILING_DISK, HomeTest, fill


class Trouble(HomeTest):
    def setUp(self):
        super().setUp()
        self.sql("CREATE TABLE t (id INTEGER)")

    def count(self):
        return self.refused(1, "count", "t")

    def test_no_configuration(self):
        os.remove(self.path("home/conf/db.conf"))
        self.assertEqual(self.count(), f"cannot read the configuration {self.path('home/conf/db.conf')}: No such file or "
                                       "directory; put the file in order, or make a new home with: ormel new DIR")

    def test_a_configuration_that_is_no_file(self):
        reason = (f"the configuration {self.path('home/conf/db.conf')} is not a regular file; put the file in order, or "
                  "make a new home with: ormel new DIR")
        os.remove(self.path("home/conf/db.conf"))
        os.mkdir(self.path("home/conf/db.conf"))
        self.assertEqual(self.count(), reason)
        os.rmdir(self.path("home/conf/db.conf"))
        with socket.socket(socket.AF_UNIX) as listener:
            self.addCleanup(os.chdir, os.getcwd())
            os.chdir(self.path("home/conf"))  # a socket's whole name may be too long
            listener.bind("db.conf")
        self.assertEqual(self.count(), reason)

    def test_no_password(self):
        password = self.path("home/conf/db.password")
        os.remove(password)
        self.assertEqual(self.count(), f"there is no database password: write it into {password} and run: chmod 600 "
                                       f"{password} (the embedded engine takes any)")

    def test_a_password_that_others_can_read(self):
        password = self.path("home/conf/db.password")
        os.chmod(password, 0o644)
        self.assert_password_refused(password, f"group or others can read it; run: chmod 600 {password}")

    def test_a_credential_that_cannot_be_used(self):
        credential = self.path(self.write("ormel-db-password", ""))
        self.assert_password_refused(credential, "it is empty; write the password into it",
                                     env={**os.environ, "CREDENTIALS_DIRECTORY": self.directory})

    def assert_password_refused(self, file, reason, **options):
        """The platform's library says why, once, and the command says of which file."""
        done = self.run_ormel("--home", "home", "count", "t", **options)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        library, command = done.stderr.splitlines()
        self.assertIn(reason, library)
        self.assertEqual(command, f"ormel: the database password in {file} cannot be used: the line before this one says why")

    def test_an_engine_that_is_not_there(self):
        self.configure("db.driver", "nonesuch")
        line = self.count()
        self.assertIn(f"cannot open the database that {self.path('home/conf/db.conf')} names: ", line)
        self.assertIn("nonesuch", line)

    def test_a_database_in_a_missing_directory(self):
        self.configure("db.dbname", "../none/ormel.db")
        line = self.count()
        self.assertIn(f"cannot open the database that {self.path('home/conf/db.conf')} names: ", line)
        self.assertIn("none/ormel.db", line)

    def test_a_file_that_is_no_database(self):
        self.write("home/data/other.db", "this is no database file\n" * 100)
        self.configure("db.dbname", "../data/other.db")
        self.assertIn("file is not a database", self.count())

    def test_a_locked_database(self):
        self.configure("client.busy_timeout_ms", "50")
        other = self.database()
        other.execute("BEGIN IMMEDIATE")
        self.write("x.csv", "1\n")
        for command in [["delete", "t", "--all"], ["update", "t", "id=1", "--all"], ["load", "t", "x.csv"],
                        ["put", "t", "id=1"], ["set", "t", "id=1", "--all"],
                        ["sql", "INSERT INTO t VALUES (1)"]]:
            line = self.refused(1, *command)
            self.assertIn("database is locked", line)
            self.assertIn("another process is at work in it: try again when it is done", line)
        self.assertEqual(self.ormel("count", "t"), "0 rows\n", "a reader does not wait")
        other.execute("ROLLBACK")
        self.assertEqual(self.ormel("load", "t", "x.csv"), "1 row loaded into t\n")

    def test_no_lock_is_seen_in_a_name(self):
        self.sql("CREATE TABLE clock (id INTEGER PRIMARY KEY)")
        self.sql("INSERT INTO clock VALUES (1)")
        self.assertEqual(self.refused(1, "put", "clock", "id=1"),
                         "cannot put the row into clock: UNIQUE constraint failed: clock.id")
        self.assertIn("lists the tables", self.refused(1, "describe", "clocks"))
        os.rename(self.path("home"), self.path("clock"))
        self.write("clock/conf/db.conf", "db.driver=sqlite\ndb.dbname=../none/ormel.db\n")
        self.assertIn("; correct that file, or make what it names", self.fail_with(1, "--home", "clock", "check"))

    def test_a_disk_that_fails_at_a_commit_leaves_its_outcome_open(self):
        self.sql("CREATE TABLE wide (id INTEGER, part INTEGER, body VARCHAR(1000), more TEXT)")
        fill(self, "wide SELECT i, i % 2, printf('%.*c', 1000, 'x'), 'x'", 400)
        for command in [["put", "wide", "id=1", "more=" + "x" * 100000], ["sql", "UPDATE wide SET body = 'y' || body"],
                        ["set", "wide", "part=3", "--all"], ["update", "wide", "part=3", "--all"],
                        ["delete", "wide", "--where", "part = 1"]]:
            done = self.run_ormel("--home", "home", *command, **FAILING_DISK)
            self.assertEqual((done.returncode, done.stdout), (1, ""), command[0])
            self.assertEqual(done.stderr, "ormel: the commit failed, and whether anything was changed is not known: commit: "
                                          "disk I/O error; the transaction was rolled back, but the log on the disk may bring "
                                          "it back: look before repeating it\n", command[0])

    def test_tables_are_listed_only_where_one_is_missing(self):
        self.sql("CREATE TABLE gone (id INTEGER)")
        self.sql("CREATE VIEW v AS SELECT nonsense(id) AS x FROM gone")
        self.assertEqual(self.refused(1, "count", "v"), "cannot describe the table v: no such function: nonsense")

    def test_a_table_that_is_not_there(self):
        self.write("x.csv", "1\n")
        for command in [["describe"], ["count"], ["show"], ["get"], ["dump"], ["delete", "--all"],
                        ["update", "id=1", "--all"], ["put", "id=1"], ["set", "id=1", "--all"]]:
            line = self.refused(1, command[0], "nonesuch", *command[1:])
            self.assertTrue(line.startswith("cannot describe the table nonesuch: "), line)
            self.assertIn("no such table: nonesuch; ormel sql \"SELECT DISTINCT TABLE_NAME FROM ", line)
        self.assertIn("no such table: nonesuch", self.refused(1, "load", "nonesuch", "x.csv"))

    def test_a_log_that_cannot_be_written_stops_nothing(self):
        os.remove(self.path("home/var/log/slot-900"))
        os.mkdir(self.path("home/var/log/slot-900"))
        done = self.run_ormel("--home", "home", "count", "t")
        self.assertEqual((done.returncode, done.stdout), (0, "0 rows\n"))
        self.assertIn("slot-900", done.stderr)

    def test_the_log_has_the_databases_words(self):
        self.refused(1, "count", "nonesuch")
        self.assertRegex(self.read("home/var/log/slot-900"), r"ERROR LOG_ORMEL:.*QD-\d{5,} .*no such table: nonesuch")


if __name__ == "__main__":
    unittest.main()
