"""One value by file: ormel put --lob and ormel get --lob."""

import os
import subprocess
import unittest

from harness import ORMEL, HomeTest


class Lob(HomeTest):
    def setUp(self):
        super().setUp()
        self.sql("CREATE TABLE t (id INTEGER PRIMARY KEY, name VARCHAR(5), body TEXT, photo BLOB, raw VARBINARY(3),"
                 " price NUMERIC(6,2), flag BOOLEAN)")

    def put(self, *words, **options):
        self.assertEqual(self.ormel("put", "t", *words, **options), "1 row put\n")

    def get(self, *words):
        """What the command writes, byte for byte."""
        done = subprocess.run([ORMEL, "--home", "home", "get", "t", *words], cwd=self.directory, capture_output=True,
                              timeout=200)
        self.assertEqual((done.returncode, done.stderr), (0, b""))
        return done.stdout

    def rows(self, columns="*"):
        return self.database().execute(f"SELECT {columns} FROM t").fetchall()

    def test_64_mib_come_back_as_they_were(self):
        part = bytes(range(256)) * 4096 + b"\0\xff\r\n"  # of a length that is no power of two
        large = self.path("large")
        with open(large, "wb") as file:
            for _ in range(64):
                file.write(part)
        self.put("id=1", "--lob", "photo=large")
        with open(self.path("back"), "wb") as back:
            subprocess.run([ORMEL, "--home", "home", "get", "t", "--where", "id = 1", "--lob", "photo"], cwd=self.directory,
                           stdout=back, check=True, timeout=200)
        subprocess.run(["cmp", large, self.path("back")], check=True)

    def test_texts_and_bytes_of_every_size(self):
        for size in [0, 1, 999, 1000, 1001, 65534, 65535, 65536, 1 << 20]:
            text = ("\u00e9\n" * size).encode()[:size - size % 3]
            raw = os.urandom(size)
            self.write("text", text)
            self.write("raw", raw)
            self.put("id=1", "--lob", "body=text", "--lob", "PHOTO=raw")
            self.assertEqual(self.rows("id, body, photo"), [(1, text.decode(), raw)])
            self.assertEqual((self.get("--lob", "BODY"), self.get("--where", "id = 1", "--lob", "photo")), (text, raw))
            self.ormel("delete", "t", "--all")

    def test_columns_of_bounded_length(self):
        for name, content in [("five", "\u732b" * 5), ("three", b"\0\1\2"), ("number", "-12.5")]:
            self.write(name, content)
        self.put("id=1", "--lob", "name=five", "--lob", "raw=three", "--lob", "price=number")
        self.assertEqual(self.rows("name, raw, price"), [("\u732b" * 5, b"\0\1\2", -12.5)])
        self.assertEqual([self.get("--lob", column) for column in ["name", "raw", "price"]],
                         [("\u732b" * 5).encode(), b"\0\1\2", b"-12.5"])

    def test_files_lie_where_the_caller_is(self):
        os.mkdir(self.path("sub"))
        self.write("sub/a=b", "here")
        home = self.path("home")
        self.assertEqual(self.succeed("--home", home, "put", "t", "id=1", "--lob", "body=a=b", cwd=self.path("sub")),
                         "1 row put\n")
        self.put("--lob", "body=" + self.path("sub/a=b"))
        self.assertEqual(self.rows("id, body"), [(1, "here"), (2, "here")])

    def test_words_may_stand_behind_a_file(self):
        self.write("x", "text")
        self.put("--lob", "body=x", "id=7", "name=a")
        self.assertEqual(self.rows("id, name, body"), [(7, "a", "text")])

    def test_files_that_hold_no_value(self):
        for name, content in [("nul", "a\0b"), ("latin", b"a\xe9"), ("six", b"123456" * 4), ("x", "x"), ("empty", "")]:
            self.write(name, content)
        for words, code, reason in [
                (["body=nul"], 2, "body: 'a\\x00b' has a NUL byte, where a record's text would end"),
                (["name=latin"], 2, "name: 'a\\xe9' is no UTF-8 text from byte 2 on"),
                (["name=six"], 2, "name: '123456123456123456123456' has 24 bytes, the field holds at most 20"),
                (["raw=six"], 2, "raw: the field takes at most 3 bytes, and the value has 24"),
                (["price=x"], 2, "price: 'x' is no number"),
                (["price=empty"], 2, "price: an empty field is no number"),
                (["flag=x"], 2, "flag: its values are neither texts nor byte strings (boolean), so that no file holds one; "
                                "write COL=VALUE"),
                (["body=x", "body=x"], 2, "the column body is named twice; name it once"),
                (["nobody=x"], 2, "t has no column 'nobody'; it has ID, NAME, BODY, PHOTO, RAW, PRICE, FLAG"),
                (["body"], 2, "--lob takes a column and a file, COL=FILE, not 'body'"),
                (["=x"], 2, "--lob takes a column and a file, COL=FILE, not '=x'"),
                (["body="], 2, "--lob takes a column and a file, COL=FILE, not 'body='"),
                (["body=none"], 1, "cannot read none: No such file or directory"),
                (["photo=home"], 1, "cannot read home: Is a directory")]:
            files = [word for file in words for word in ("--lob", file)]
            self.assertEqual(self.refused(code, "put", "t", *files), reason)
        self.assertEqual(self.refused(2, "put", "t", "BODY=a", "--lob", "body=x"),
                         "the column body is named twice; name it once")
        self.assertEqual(self.refused(2, "put", "t", *["id=1"] * 32, "--lob", "body=x"),
                         "a row is put with at most 32 values; use the command sql for more")
        self.assertEqual(self.rows(), [])

    def test_one_row_is_meant(self):
        self.assertEqual(self.refused(1, "get", "t", "--lob", "body"),
                         "no row of t is meant; --lob writes a value of the one row that --where chooses")
        self.sql("INSERT INTO t (id, body) VALUES (1, 'a'), (2, 'b'), (3, NULL)")
        self.assertEqual(self.refused(1, "get", "t", "--where", "id = 9", "--lob", "body"),
                         "no row of t is meant; --lob writes a value of the one row that --where chooses")
        for words, count in [([], 3), (["--where", "id <= 2"], 2), (["--limit", "2"], 2)]:
            self.assertEqual(self.refused(1, "get", "t", *words, "--lob", "body"),
                             f"{count} rows of t are meant, and --lob writes a value of one; choose it with --where")
        self.assertEqual(self.get("--where", "id <= 2", "--limit", "5", "--offset", "1", "--lob", "body"), b"b")

    def test_null_is_no_value(self):
        self.sql("INSERT INTO t (id, name) VALUES (1, '')")
        for column in ["body", "photo", "price"]:
            self.assertEqual(self.refused(1, "get", "t", "--lob", column),
                             f"{column} of the row is NULL; there is nothing to write")
        self.assertEqual(self.get("--lob", "name"), b"")

    def test_what_get_does_not_write(self):
        self.sql("INSERT INTO t (id, flag) VALUES (1, 1)")
        for words, reason in [
                (["id"], "id: --lob writes texts and byte strings, and the value is of the type integer; use --fields"),
                (["flag"], "flag: --lob writes texts and byte strings, and the value is of the type boolean; use --fields"),
                (["nobody"], "t has no column 'nobody'; it has ID, NAME, BODY, PHOTO, RAW, PRICE, FLAG"),
                (["body", "--json"], "--lob writes one value as it stands; --json, --csv and --fields do not go with it"),
                (["body", "--csv"], "--lob writes one value as it stands; --json, --csv and --fields do not go with it"),
                (["body", "--fields", "id"],
                 "--lob writes one value as it stands; --json, --csv and --fields do not go with it")]:
            self.assertEqual(self.refused(2, "get", "t", "--lob", *words), reason)

    def test_a_full_disk(self):
        self.put("id=1", "body=text")
        with open("/dev/full", "wb") as full:
            done = subprocess.run([ORMEL, "--home", "home", "get", "t", "--lob", "body"], cwd=self.directory, stdout=full,
                                  stderr=subprocess.PIPE, encoding="utf-8", timeout=200)
        self.assertEqual((done.returncode, done.stderr), (1, "ormel: cannot write the output: No space left on device\n"))


if __name__ == "__main__":
    unittest.main()
