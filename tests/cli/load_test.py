"""ormel load."""

import os
import pty
import subprocess
import unittest

from harness import ORMEL, HomeTest


class Load(HomeTest):
    def setUp(self):
        super().setUp()
        self.sql("CREATE TABLE t (id INTEGER PRIMARY KEY, name VARCHAR(5), big BIGINT, part DOUBLE, flag BOOLEAN,"
                 " raw BINARY(2), price NUMERIC(6,2))")

    def load(self, content, *options):
        return self.ormel("load", "t", self.write("x.csv", content), *options)

    def rows(self):
        return self.database().execute("SELECT id, name FROM t ORDER BY id").fetchall()

    def assert_refused(self, content, reason):
        """The file is refused with that line, and what its lines before held is not kept."""
        line = self.refused(1, "load", "t", self.write("x.csv", content))
        self.assertEqual(line, reason + "; nothing was loaded")
        self.assertEqual(self.rows(), [])

    def test_takes_every_record(self):
        output = self.load("1,Zo\u00eb,-9223372036854775808,0.1,true,00ff,1.50\n"
                           "2,\"\",5,1e300,0,abcd,-3\n")
        self.assertEqual(output, "2 rows loaded into t\n")
        rows = self.database().execute("SELECT id, name, big, part, flag, hex(raw), price FROM t").fetchall()
        self.assertEqual(rows, [(1, "Zo\u00eb", -2**63, 0.1, 1, "00FF", 1.5), (2, "", 5, 1e300, 0, "ABCD", -3)])

    def test_nothing_is_null_and_quotes_hold_an_empty_text(self):
        self.load("1,,,,,,\n2,\"\",1,1,1,\"\",1")
        rows = self.database().execute("SELECT * FROM t ORDER BY id").fetchall()
        self.assertEqual(rows, [(1, None, None, None, None, None, None), (2, "", 1, 1, 1, b"", 1)])

    def test_takes_other_separators(self):
        self.load("1;a,b;1;1;1;0000;1\n", "--separator", ";")
        self.load("2\ta;b\t1\t1\t1\t0000\t1\n", "--separator", "\\t")
        self.load("3\t\"a\tb\"\t1\t1\t1\t0000\t1\n", "--separator", "\t")
        self.assertEqual(self.rows(), [(1, "a,b"), (2, "a;b"), (3, "a\tb")])

    def test_refuses_separators_that_are_none(self):
        self.write("x.csv", "1\n")
        for separator in ["", ";;", "\"", "\n", "\u00e9"]:
            self.assertIn("is not one character of ASCII",
                          self.refused(2, "load", "t", "x.csv", "--separator", separator))

    def test_an_empty_file_is_no_record(self):
        self.assertEqual(self.load(""), "0 rows loaded into t\n")

    def test_a_record_is_whole_whatever_its_quotes(self):
        self.load("1,\"a\"\"\n,\",1,1,1,0000,1\r\n")
        self.assertEqual(self.rows(), [(1, "a\"\n,")])

    def test_adds_to_what_is_there(self):
        self.load("1,a,1,1,1,0000,1\n")
        self.load("2,b,1,1,1,0000,1\n")
        self.assertEqual(self.rows(), [(1, "a"), (2, "b")])

    def test_a_short_line(self):
        self.assert_refused("1,a,1,1,1,0000,1\n2,a\n", "x.csv:2: the line has 2 fields, t has 7 columns")

    def test_a_long_line(self):
        self.assert_refused("1,a,1,1,1,0000,1,8\n", "x.csv:1: the line has 8 fields, t has 7 columns")

    def test_fields_that_are_no_values(self):
        good = ["1", "a", "1", "1", "1", "0000", "1"]
        for position, text, reason in [
                (0, "x1", "ID: 'x1' is no whole number"),
                (0, '""', "ID: an empty field is no number"),
                (0, "2147483648", "ID: '2147483648' is outside -2147483648 to 2147483647"),
                (1, "x" * 21, "NAME: 'xxxxxxxxxxxxxxxxxxxxx' has 21 bytes, the field holds at most 20"),
                (1, "a\0b", "NAME: 'a\\x00b' has a NUL byte, where a record's text would end"),
                (2, "1e5", "BIG: '1e5' is no whole number"),
                (3, "half", "PART: 'half' is no number"),
                (4, "yes", "FLAG: 'yes' is neither true nor false (nor 1 nor 0)"),
                (5, "000000", "RAW: the field takes at most 2 bytes, written as 4 hexadecimal digits, and '000000' has 6"),
                (5, "000", "RAW: '000' has 3 hexadecimal digits, and a byte takes two"),
                (6, '""', "PRICE: an empty field is no number"),
                (6, "1.5 EUR", "PRICE: '1.5 EUR' is no number"),
                (6, "12345678901", "PRICE: '12345678901' has 11 bytes, the field holds at most 9")]:
            with self.subTest(reason=reason):
                bad = good[:position] + [text] + good[position + 1:]
                bad[0] = bad[0] if position == 0 else "2"
                self.assert_refused(",".join(good) + "\n\n" + ",".join(bad) + "\n", "x.csv:3: " + reason)

    def test_what_the_database_refuses(self):
        line = self.refused(1, "load", "t", self.write("x.csv", "1,a,1,1,1,0000,1\n1,b,1,1,1,0000,1\n"))
        self.assertIn("x.csv:2: the database refuses the record: ", line)
        self.assertIn("UNIQUE constraint failed: t.id", line)
        self.assertTrue(line.endswith("; nothing was loaded"), line)
        self.assertEqual(self.rows(), [])

    def test_quotes_that_mean_nothing(self):
        self.assert_refused("1,a,1,1,1,0000,1\n2,a\"b,1,1,1,0000,1\n",
                            "x.csv:2: field 2: a quote stands where none may; a field with a quote in it is written "
                            "\"like \"\"this\"\"\"")
        self.assert_refused("1,a,1,1,1,0000,1\n\"2,a\n", "x.csv:2: field 1: the file ends inside a quoted field; "
                                                       "close it with a quote")

    def test_a_file_that_is_not_there(self):
        self.assertEqual(self.refused(1, "load", "t", "none.csv"), "cannot read none.csv: No such file or directory")
        self.assertEqual(self.refused(1, "load", "t", "."), "cannot read .: Is a directory; nothing was loaded")

    def test_a_table_with_more_columns_than_an_insert_carries(self):
        self.sql("CREATE TABLE wide (" + ", ".join(f"c{i} INTEGER" for i in range(33)) + ")")
        self.write("x.csv", ",".join("1" * 33) + "\n")
        self.assertEqual(self.refused(1, "load", "wide", "x.csv"),
                         "wide has 33 columns, the insert of a record takes at most 32; use the command sql, or split "
                         "the table")
        self.sql("CREATE TABLE full (" + ", ".join(f"c{i} INTEGER" for i in range(32)) + ")")
        self.write("x.csv", ",".join("1" * 32) + "\n")
        self.assertEqual(self.ormel("load", "full", "x.csv"), "1 row loaded into full\n")

    def test_large_objects(self):
        self.sql("CREATE TABLE lob (id INTEGER, body TEXT, picture BLOB)")
        body = "it's \U0001f600\r\n" * 50000
        self.write("x.csv", f'1,"{body}",{"00ff" * 100000}\n2,"",""\n3,,\n')
        self.assertEqual(self.ormel("load", "lob", "x.csv"), "3 rows loaded into lob\n")
        self.assertEqual(self.database().execute("SELECT * FROM lob ORDER BY id").fetchall(),
                         [(1, body, b"\0\xff" * 100000), (2, "", b""), (3, None, None)])
        for row, reason in [("4,a\0b,00", "BODY: 'a\\x00b' has a NUL byte, where a record's text would end"),
                            ("4,a,0", "PICTURE: '0' has 1 hexadecimal digit, and a byte takes two"),
                            ("4,a,0g", "PICTURE: 'g' is no hexadecimal digit")]:
            self.write("x.csv", row)
            self.assertEqual(self.refused(1, "load", "lob", "x.csv"), f"x.csv:1: {reason}; nothing was loaded")

    def test_a_row_that_no_record_holds(self):
        self.sql("CREATE TABLE fat (a VARCHAR(16000), b VARCHAR(16000), c VARBINARY(65534))")
        self.write("x.csv", "\U0001f600" * 16000 + "," + "b" * 64000 + "," + "0a" * 65534)
        self.assertEqual(self.ormel("load", "fat", "x.csv"), "1 row loaded into fat\n")
        self.assertEqual(self.database().execute("SELECT * FROM fat").fetchall(),
                         [("\U0001f600" * 16000, "b" * 64000, b"\n" * 65534)])


class ProgressBar(HomeTest):
    def setUp(self):
        super().setUp()
        self.sql("CREATE TABLE t (id INTEGER)")
        self.write("x.csv", "".join(f"{i:03}\n" for i in range(500)))

    def test_is_not_shown_where_there_is_no_terminal(self):
        self.assertEqual(self.ormel("load", "t", "x.csv"), "500 rows loaded into t\n")

    def test_is_shown_on_a_terminal_and_wiped(self):
        person, terminal = pty.openpty()
        self.addCleanup(os.close, person)
        child = subprocess.Popen([ORMEL, "--home", "home", "load", "t", "x.csv", "--batch", "10"], cwd=self.directory,
                                 stdout=subprocess.PIPE, stderr=terminal)
        os.close(terminal)
        self.addCleanup(child.stdout.close)
        shown = b""
        try:
            while part := os.read(person, 4096):
                shown += part
        except OSError:  # the end of a terminal
            pass
        self.assertEqual((child.wait(60), child.stdout.read()), (0, b"500 rows loaded into t\n"))
        self.assertRegex(shown, rb"\r\x1b\[K\[####################\.{20}\] 50 % 250 rows, [1-9]\d* rows/s, 0:0\d left\r")
        self.assertRegex(shown, rb"\] 100 % 500 rows, [1-9]\d* rows/s, 0:00 left\r")
        self.assertTrue(shown.endswith(b"\r\x1b[K"), shown[-50:])


if __name__ == "__main__":
    unittest.main()
