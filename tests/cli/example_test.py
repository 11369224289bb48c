"""The programs in examples/, on either engine."""

import csv
import os
import re
import subprocess
import unittest

from harness import EXAMPLES, POSTGRES, HomeTest

csv.field_size_limit(1 << 20)


def key_is_there(table, key, place=""):
    """What the database says of a row whose key is taken, behind its place in the batch."""
    if POSTGRES:
        return (f'23505: {place}duplicate key value violates unique constraint "{table}_pkey"; '
                f"Key (id)=({key}) already exists.")
    return f"{place}UNIQUE constraint failed: {table}.id"


class Example(HomeTest):
    def setUp(self):
        super().setUp()
        self.make("city (id INTEGER PRIMARY KEY, name VARCHAR(20), people BIGINT)")

    def make(self, table):
        """A new table; a server has that of the last test."""
        self.sql("DROP TABLE IF EXISTS " + table.split()[0])
        self.sql("CREATE TABLE " + table)

    def rows(self, query):
        """What the database holds, past the library: values as text, bytes in hexadecimal digits, NULL as it is."""
        if not POSTGRES:
            return [tuple("NULL" if value is None else value.hex() if isinstance(value, bytes) else str(value)
                          for value in row) for row in self.database().execute(query)]
        environment = dict(os.environ, PGPASSWORD=os.environ["ORMEL_POSTGRES_PASSWORD"])
        done = subprocess.run(["psql", "-X", "-t", "--csv", "-P", "null=NULL", "-h", "127.0.0.1", "-p", POSTGRES,
                               "-U", "postgres", "-c", query], env=environment, capture_output=True, encoding="utf-8",
                              timeout=100, check=True)
        return [tuple(re.sub(r"^\\x", "", value) for value in row) for row in csv.reader(done.stdout.splitlines())]

    def run_example(self, name):
        program = os.path.join(EXAMPLES, name)
        return subprocess.run([program], cwd=self.path("home/bin"), capture_output=True, encoding="utf-8", timeout=100)

    def test_record_inserts_and_reads_a_record(self):
        done = self.run_example("record")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "1 record, 93 bytes: 7 Troms\u00f8 77992\n", ""))
        self.assertEqual(self.cities(), [("7", "Troms\u00f8", "77992")])

    def test_record_says_what_the_database_refuses(self):
        self.run_example("record")
        done = self.run_example("record")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertEqual(done.stderr, f"code 211: {key_is_there('city', 7)}\n")

    def test_tour_does_what_the_guide_shows(self):
        done = self.run_example("tour")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(done.stdout, "3 Troms\u00f8 77992\n"
                                      "1 updated\n"
                                      "2 Bergen\n3 Troms\u00f8\n4 R\u00f8ros\n"
                                      "3 deleted, 1 left\n")
        self.assertEqual(self.cities(), [("2", "Bergen", "291940")])

    def insert_cities(self, *cities):
        for city in cities:
            self.sql("INSERT INTO city VALUES " + city)

    def cities(self):
        return self.rows("SELECT id, name, people FROM city ORDER BY id")

    def test_objects_writes_finds_and_changes_rows_page_by_page(self):
        done = self.run_example("objects")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        # To the embedded engine, LIKE takes capitals and small letters for the same.
        more = "" if POSTGRES else "  Soria Moria: not known\npage 3\n"
        self.assertEqual(done.stdout, "2 grew\n"
                                      "page 1\n  Oslo: 709037\n  Troms\u00f8: 100000\n"
                                      "page 2\n  R\u00f8ros: 100000\n" + more)
        self.assertEqual(self.cities()[-1], ("5", "Soria Moria", "NULL"))

    def test_objects_says_what_the_database_refuses(self):
        self.insert_cities("(2, 'Bergen', 1)")
        done = self.run_example("objects")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertEqual(done.stderr, f"insert: code 211 {key_is_there('city', 2)}\n")

    def test_cursor_reads_row_by_row(self):
        self.insert_cities("(1, 'Oslo', 709037)", "(2, 'Bergen', NULL)", "(3, 'Troms\u00f8', 77992)")
        done = self.run_example("cursor")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "787029 people\n1 Oslo\n2 Bergen\n", ""))

    def test_cursor_says_that_the_table_cannot_be_read(self):
        self.sql("DROP TABLE city")
        done = self.run_example("cursor")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (1, "", "code 211; the log says why\n"))

    def test_transaction_commits_a_whole_move_and_rolls_half_a_one_back(self):
        self.insert_cities("(1, 'Oslo', 100)", "(2, 'Bergen', 200)")
        done = self.run_example("transaction")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "from 1 to 2: code 0\nfrom 1 to 9: code 5\n", ""))
        self.assertEqual(self.cities(), [("1", "Oslo", "63"), ("2", "Bergen", "237")])

    def test_batch_inserts_all_rows_or_none(self):
        self.make(f"photo (id INTEGER PRIMARY KEY, title VARCHAR(20), image {'BYTEA' if POSTGRES else 'BLOB'})")
        done = self.run_example("batch")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(done.stdout, "1 to 3: code 0 \n"
                                      f"3 to 5: code 211 {key_is_there('photo', 3, 'row 0: ')}\n"
                                      "photo 1: 100000 bytes of 0\nphoto 2: 100000 bytes of 1\nphoto 3: no image\n")
        self.assertEqual(self.rows("SELECT id, title, image FROM photo ORDER BY id"),
                         [("1", "photo 1", "00" * 100000), ("2", "photo 2", "01" * 100000), ("3", "photo 3", "NULL")])


if __name__ == "__main__":
    unittest.main()
