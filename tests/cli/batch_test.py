"""ormel load in batches: what stays after a failure, how to go on, and that what was dumped comes back."""

import os
import re
import resource
import subprocess
import unittest

from harness import FAILING_DISK, ORMEL, HomeTest

INFINITY = float("inf")
MOST = 1088987  # rows of which the library counts the bytes


class Batches(HomeTest):
    def setUp(self):
        super().setUp()
        self.sql("CREATE TABLE t (id INTEGER PRIMARY KEY, name VARCHAR(5))")

    def file(self, count, changed=()):
        """A file of so many rows, some of them changed."""
        lines = [f"{i},n{i}" for i in range(1, count + 1)]
        for row, line in dict(changed).items():
            lines[row - 1] = line
        return self.write("x.csv", "\n".join(lines) + "\n")

    def load(self, *options, **settings):
        return self.ormel("load", "t", "x.csv", *options, **settings)

    def refusal(self, *options, code=1):
        return self.refused(code, "load", "t", "x.csv", *options)

    def ids(self):
        return [row for row, in self.database().execute("SELECT id FROM t ORDER BY id")]

    def test_batches_of_every_size(self):
        self.file(25)
        for size in ["1", "2", "24", "25", "26", "1000"]:
            self.assertEqual(self.load("--batch", size), "25 rows loaded into t\n")
            self.assertEqual(self.ids(), list(range(1, 26)))
            self.ormel("delete", "t", "--all")

    def test_more_rows_than_one_batch_has(self):
        self.file(2500)
        self.assertEqual(self.load(), "2500 rows loaded into t\n")
        self.assertEqual(self.ids(), list(range(1, 2501)))

    def test_a_refused_row_in_the_second_batch(self):
        self.file(50, {31: "30,twice"})
        for size in ["20", "1", "50", "1000"]:
            self.assertEqual(self.refusal("--batch", size),
                             "x.csv:31: the database refuses the record: UNIQUE constraint failed: t.id; nothing was loaded")
            self.assertEqual(self.ids(), [])

    def test_what_was_committed_stays_and_the_rest_follows(self):
        for change in ["30,twice", "x,wrong", "31," + "x" * 21, "31", "31,a\"b", "31,a\0b"]:
            self.file(50, {31: change})
            line = self.refusal("--batch", "4", "--commit-every", "10")
            self.assertTrue(line.startswith("x.csv:31: "), line)
            self.assertTrue(line.endswith("; loaded and kept: 30 rows; when that is mended, go on with --skip 30"), line)
            self.assertEqual(self.ids(), list(range(1, 31)))
            self.file(50)
            self.assertEqual(self.load("--commit-every", "10", "--skip", "30"), "20 rows loaded into t\n")
            self.assertEqual(self.ids(), list(range(1, 51)))
            self.ormel("delete", "t", "--all")

    def test_a_disk_that_fails_at_a_commit_leaves_its_outcome_open(self):
        self.file(2000)

        done = self.run_ormel("--home", "home", "load", "t", "x.csv", "--commit-every", "100", **FAILING_DISK)
        self.assertEqual(done.returncode, 1)
        told = re.search(r"whether the commit of the last 100 rows happened is not known: look before going on with --skip (\d+) or "
                         r"--skip (\d+)\n$", done.stderr)
        self.assertTrue(told, done.stderr)
        before, behind = map(int, told.groups())
        self.assertEqual((before % 100, behind - before), (0, 100))
        self.assertIn(len(self.ids()), (before, behind))
        self.assertGreater(before, 0)

    def test_the_second_failure_counts_what_was_passed_over(self):
        self.file(30, {15: "x,x", 25: "y,y"})
        self.assertIn("loaded and kept: 10 rows; when that is mended, go on with --skip 10",
                      self.refusal("--commit-every", "5"))
        self.file(30, {25: "y,y"})
        self.assertIn("x.csv:25: ID: 'y' is no whole number; loaded and kept: 10 rows; when that is mended, go on with "
                      "--skip 20", self.refusal("--commit-every", "5", "--skip", "10"))
        self.file(30)
        self.assertEqual(self.load("--commit-every", "5", "--skip", "20"), "10 rows loaded into t\n")
        self.assertEqual(self.ids(), list(range(1, 31)))

    def test_nothing_to_go_on_from(self):
        self.file(9, {3: "x,x"})
        for options in [["--commit-every", "3"], ["--commit-every", "3", "--skip", "1"], ["--skip", "1"]]:
            self.assertEqual(self.refusal(*options), "x.csv:3: ID: 'x' is no whole number; nothing was loaded")
            self.assertEqual(self.ids(), [])

    def test_the_file_ends_in_the_middle(self):
        self.write("x.csv", "1,a\n2,b\n3,\"c\n")
        end = "x.csv:3: field 2: the file ends inside a quoted field; close it with a quote; "
        self.assertEqual(self.refusal("--batch", "2"), end + "nothing was loaded")
        self.assertEqual(self.refusal("--commit-every", "1"),
                         end + "loaded and kept: 2 rows; when that is mended, go on with --skip 2")
        self.assertEqual(self.ids(), [1, 2])

    def test_the_line_is_that_of_the_record(self):
        self.write("x.csv", "\n1,\"a\nb\"\n\n2,\"\n\"\n3,c\n1,d\n")
        self.assertTrue(self.refusal().startswith("x.csv:8: the database refuses the record: UNIQUE "), self.refusal())

    def test_commits_that_the_file_ends_with(self):
        self.file(20)
        self.assertEqual(self.load("--commit-every", "10"), "20 rows loaded into t\n")
        self.assertEqual(self.load("--commit-every", "10", "--skip", "20"), "0 rows loaded into t\n")

    def test_passes_over_records_not_lines(self):
        self.write("x.csv", "\"id\n(a number)\",\"name\"\n\n1,a\n\n2,b\n")
        self.assertEqual(self.load("--skip", "2"), "1 row loaded into t\n")
        self.assertEqual(self.ids(), [2])
        self.assertEqual(self.refusal("--skip", "4"),
                         "the file has only 3 records, and --skip passes over 4; nothing was loaded")
        self.write("x.csv", "1,a\n")
        self.assertEqual(self.refusal("--skip", "2"),
                         "the file has only 1 record, and --skip passes over 2; nothing was loaded")

    def test_a_wrong_number_of_rows(self):
        self.file(1)
        for option, least in [("--batch", 1), ("--commit-every", 1), ("--skip", 0)]:
            for text in ["", "x", "-1", "1.5", "1k"] + ["0"] * least:
                self.assertEqual(self.refusal(option, text, code=2),
                                 f"{option} takes a whole number from {least} on, not '{text}'")
        self.assertEqual(self.ids(), [])

    def test_more_rows_than_a_batch_can_have(self):
        self.sql("CREATE TABLE wide (id INTEGER, name VARCHAR(16000))")
        self.sql("CREATE TABLE lobs (id BIGINT, a TEXT, b BLOB)")
        self.write("x.csv", "1,a\n2,b\n")
        for table, most in [("t", MOST), ("lobs", MOST), ("wide", (2**31 - 1) // 64001)]:
            for more in [most + 1, 2**32, 10**30]:
                self.assertEqual(self.refused(2, "load", table, "x.csv", "--batch", str(more)),
                                 f"--batch takes at most {most} rows of {table}, because the library counts the bytes of "
                                 "a batch in 32 bits")
        self.assertEqual(self.ormel("load", "wide", "x.csv", "--batch", str((2**31 - 1) // 64001)),
                         "2 rows loaded into wide\n")

    def test_rows_that_a_trigger_keeps_out(self):
        self.sql("CREATE TRIGGER few BEFORE INSERT ON t WHEN NEW.id > 3 BEGIN SELECT RAISE(IGNORE); END")
        self.file(5)
        self.assertEqual(self.load(notes="ormel: the file has 5 rows: a trigger of the database kept the others out, or put "
                                         "them elsewhere\n"), "3 rows loaded into t\n")
        self.assertEqual(self.ids(), [1, 2, 3])

    def test_what_a_constraint_says(self):
        self.sql("CREATE TABLE strict (id INTEGER NOT NULL, name VARCHAR(5) CHECK (length(name) <= 5))")
        for change, words in [(",b", "NOT NULL constraint failed: strict.id"), ("2,toolong", "CHECK constraint failed")]:
            self.write("x.csv", f"1,a\n{change}\n3,\n")
            line = self.refused(1, "load", "strict", "x.csv")
            self.assertTrue(line.startswith("x.csv:2: the database refuses the record: " + words), line)

    def test_a_locked_database_names_the_whole_batch(self):
        self.configure("client.busy_timeout_ms", "50")
        self.file(5)
        other = self.database()
        other.execute("BEGIN IMMEDIATE")
        line = self.refusal("--batch", "3")
        self.assertTrue(line.startswith("x.csv:1 to 3: the database refuses the records: database is locked: "), line)
        self.assertTrue(line.endswith("; another process is at work in it: try again when it is done; nothing was loaded"))

    def test_memory_that_is_wanting(self):
        self.sql("CREATE TABLE wide (id INTEGER, name VARCHAR(16000))")
        self.write("x.csv", "1,a\n" * 20000)
        with open(ORMEL, "rb") as program:
            sanitized = re.search(b"__[at]san_init", program.read())
        options = "allocator_may_return_null=1:max_allocation_size_mb=600"
        settings = {"env": {**os.environ, "ASAN_OPTIONS": options, "TSAN_OPTIONS": options}}
        if not sanitized:  # these reserve more than that
            settings = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_AS, (600 << 20, 600 << 20))}
        done = self.run_ormel("--home", "home", "load", "wide", "x.csv", "--batch", "20000", **settings)
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("ormel: there is no memory for a batch of 20000 rows; make --batch smaller; nothing was loaded\n",
                      done.stderr)
        self.assertEqual(self.ormel("count", "wide"), "0 rows\n")

    def test_the_log_has_no_line_for_every_value(self):
        self.file(1000)
        self.load()
        self.assertLess(len(self.read("home/var/log/slot-900").splitlines()), 100)


class RoundTrip(HomeTest):
    COLUMNS = ("id INTEGER, big BIGINT, part DOUBLE, flag BOOLEAN, name VARCHAR(10), code CHAR(3), price NUMERIC(8,2),"
               " day DATE, raw BINARY(3), some VARBINARY(4), body CLOB, bytes BLOB")

    def dump(self, table):
        """What the command writes, byte for byte."""
        return subprocess.run([ORMEL, "--home", "home", "dump", table], cwd=self.directory, stdout=subprocess.PIPE, check=True,
                              timeout=200).stdout

    def assert_comes_back(self, columns, rows):
        """The rows that the database has are those of a table into which they were dumped and loaded."""
        database = self.database()
        for table in ["one", "other"]:
            self.sql(f"CREATE TABLE {table} ({columns})")
        database.executemany(f"INSERT INTO one VALUES ({','.join('?' * len(rows[0]))})", rows)
        dumped = self.dump("one")
        self.write("x.csv", dumped)
        self.assertEqual(self.ormel("load", "other", "x.csv", "--skip", "1", "--batch", "3"),
                         f"{len(rows)} rows loaded into other\n")
        select = "SELECT * FROM {0} ORDER BY rowid"
        self.assertEqual(database.execute(select.format("other")).fetchall(),
                         database.execute(select.format("one")).fetchall())
        self.assertEqual(self.dump("other"), dumped)

    def test_every_type(self):
        self.assert_comes_back(self.COLUMNS, [
            (2147483647, 9223372036854775807, 0.1, 1, "Zo\u00eb", "a,b", 12.5, "2026-01-02", b"\0\xff\0", b"\0",
             "one\r\n\"two\"\r\n", b"\0\1\0\0"),
            (-2147483648, -9223372036854775808, -1e300, 0, "", "", 0, "", b"\0\0\0", b"", "", b""),
            (None,) * 12,
            (4, 5, INFINITY, 1, "", "", INFINITY, "", b"", b"", "", b""),
            (5, 6, -INFINITY, 1, "", "", -INFINITY, "", b"", b"", "", b""),
            (1, 2, 5e-324, 1, "\U0001f600" * 10, "\"\"\"", -0.01, "x", b"a", b"abcd", "\n" * 5, bytes(range(256))),
            (2, 3, 4.0, 0, "NULL", "''", 7, ",", None, None, "\u732b,;\t'" * 20000, b"\0" * 100000)])

    def test_words_that_the_engine_has_no_number_for(self):
        self.sql("CREATE TABLE t (part DOUBLE, price NUMERIC(8,2))")
        for row, reason in [("nan,", "parameter 1 is not a number"), ("Infinity,", "PART: 'Infinity' is no number"),
                            (",NaN", "PRICE: 'NaN' is no number"), (",Infinity", "PRICE: 'Infinity' is no number")]:
            self.write("x.csv", row + "\n")
            self.assertIn(reason, self.refused(1, "load", "t", "x.csv"))
        self.ormel("put", "t", "part=inf", "price=-inf")
        self.ormel("set", "t", "part=-inf", "--where", "part = inf", "--where", "price = -inf")
        self.assertEqual(self.ormel("get", "t", "--json"), '[\n{"PART":"-inf","PRICE":"-inf"}\n]\n')

    def test_one_column(self):
        self.assert_comes_back("name VARCHAR(10)", [(None,), ("",), ("a",), (None,), (None,), ("\n\n",), ("",), (None,)])


if __name__ == "__main__":
    unittest.main()
