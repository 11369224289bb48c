"""ormel put: one row by request object."""

import unittest

from harness import HomeTest


class Put(HomeTest):
    def setUp(self):
        super().setUp()
        self.sql("CREATE TABLE t (id INTEGER PRIMARY KEY, big BIGINT, part DOUBLE, flag BOOLEAN, name VARCHAR(5),"
                 " code CHAR(3), price NUMERIC(8,2), day DATE, raw BINARY(3), some VARBINARY(4), body CLOB, bytes BLOB,"
                 " town VARCHAR(9) DEFAULT 'Oslo')")

    def put(self, *words):
        self.assertEqual(self.ormel("put", "t", *words), "1 row put\n")

    def row(self, columns="*"):
        return self.database().execute(f"SELECT {columns} FROM t").fetchone()

    def refusal(self, *words):
        line = self.refused(2, "put", "t", *words)
        self.assertIsNone(self.row())
        return line

    def test_every_type(self):
        self.put("id=7", "big=-9223372036854775808", "part=0.1", "flag=true", "name=Zo\u00eb", "code=a=b", "price=12.50",
                 "day=2026-01-02", "raw=00ff00", "some=0001", "body=it's\n\"so\"", "bytes=00ff00")
        self.assertEqual(self.row(), (7, -9223372036854775808, 0.1, 1, "Zo\u00eb", "a=b", 12.5, "2026-01-02",
                                      b"\0\xff\0", b"\0\1", "it's\n\"so\"", b"\0\xff\0", "Oslo"))

    def test_the_extremes_of_integers(self):
        self.put("id=2147483647", "big=9223372036854775807")
        self.assertEqual(self.row("id, big"), (2147483647, 9223372036854775807))
        self.ormel("delete", "t", "--all")
        self.put("id=-2147483648", "big=-9223372036854775808")
        self.assertEqual(self.row("id, big"), (-2147483648, -9223372036854775808))

    def test_an_empty_value_is_no_null(self):
        self.put("name=", "code=''", "some=", "body=", "bytes=")
        self.assertEqual(self.row("name, code, some, body, bytes, day"), ("", "", b"", "", b"", None))

    def test_null_of_every_type(self):
        columns = "big part flag name code price day raw some body bytes town".split()
        self.put(*[f"{column}=NULL" for column in columns])
        self.assertEqual(self.row(",".join(columns)), (None,) * 12)

    def test_null_in_quotes_is_a_text(self):
        self.put("name='NULL'", "body='null'", "town=null")
        self.assertEqual(self.row("name, body, town"), ("NULL", "null", None))

    def test_quotes_and_blanks(self):
        self.put("name=' x '", "body='it''s'", "town= y ")
        self.assertEqual(self.row("name, body, town"), (" x ", "it's", "y"))

    def test_the_fullest_text(self):
        self.put("name=" + "\u732b" * 5, "body=" + "\U0001f600" * 20000)
        self.assertEqual(self.row("name, length(body)"), ("\u732b" * 5, 20000))

    def test_as_many_values_as_an_object_takes(self):
        self.sql("CREATE TABLE wide (" + ", ".join(f"c{i} INTEGER" for i in range(300)) + ")")
        self.ormel("put", "wide", *[f"c{i}={i}" for i in range(268, 300)])
        self.assertEqual(self.database().execute("SELECT c267, c268, c299 FROM wide").fetchone(), (None, 268, 299))
        self.assertEqual(self.refused(2, "put", "wide", *[f"c{i}={i}" for i in range(33)]),
                         "a row is put with at most 32 values; use the command sql for more")

    def test_what_does_not_fit_is_refused(self):
        long = "x" * 28
        for words, reason in [
                (["id"], "'id' is no assignment: write COL=VALUE, for example AGE=30"),
                (["id=x"], "id: 'x' is no whole number"),
                (["id="], "id: an empty field is no number"),
                (["id=2147483648"], "id: '2147483648' is outside -2147483648 to 2147483647"),
                (["big=9223372036854775808"],
                 "big: '9223372036854775808' is outside -9223372036854775808 to 9223372036854775807"),
                (["part=1e999"], "part: '1e999' is outside what 8 bytes of floating point hold"),
                (["flag=maybe"], "flag: 'maybe' is neither true nor false (nor 1 nor 0)"),
                (["price=cheap"], "price: 'cheap' is no number"),
                (["name=" + "x" * 21], "name: 'xxxxxxxxxxxxxxxxxxxxx' has 21 bytes, the field holds at most 20"),
                (["name='x"], "the value 'x begins with a quote and does not end with one"),
                (["raw=001"], "raw: '001' has 3 hexadecimal digits, and a byte takes two"),
                (["raw=00000000"], "raw: the field takes at most 3 bytes, written as 6 hexadecimal digits, and '00000000' has 8"),
                (["bytes=zz"], "bytes: 'z' is no hexadecimal digit"),
                (["body=a\udcff"], "body: 'a\\xff' is no UTF-8 text from byte 2 on"),
                (["name=x", "id=1", "NAME=y"], "the column NAME is named twice; name it once"),
                ([long + "=1"], f"the column name '{long}' has 28 bytes; the library carries 27, so use the command sql")]:
            self.assertEqual(self.refusal(*words), reason)
        self.assertIn("t has no column 'nam'; it has ID, BIG, ", self.refusal("nam=x"))
        self.assertIn("COL=VALUE is required", self.refusal())

    def test_what_the_database_refuses_changes_nothing(self):
        self.put("id=1", "name=a")
        self.assertEqual(self.refused(1, "put", "t", "id=1", "name=b"),
                         "cannot put the row into t: UNIQUE constraint failed: t.id")
        self.assertEqual(self.database().execute("SELECT id, name FROM t").fetchall(), [(1, "a")])
        self.assertIn("no such table: none", self.refused(1, "put", "none", "id=1"))


if __name__ == "__main__":
    unittest.main()
