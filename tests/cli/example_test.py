"""The programs in examples/."""

import os
import subprocess
import unittest

from harness import EXAMPLES, HomeTest


class Example(HomeTest):
    def setUp(self):
        super().setUp()
        self.sql("CREATE TABLE city (id INTEGER PRIMARY KEY, name VARCHAR(20), people BIGINT)")

    def run_example(self, name):
        program = os.path.join(EXAMPLES, name)
        return subprocess.run([program], cwd=self.path("home/bin"), capture_output=True, encoding="utf-8", timeout=100)

    def test_record_inserts_and_reads_a_record(self):
        done = self.run_example("record")
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "1 record, 93 bytes: 7 Troms\u00f8 77992\n", ""))
        self.assertEqual(self.database().execute("SELECT * FROM city").fetchall(), [(7, "Troms\u00f8", 77992)])

    def test_record_says_what_the_database_refuses(self):
        self.run_example("record")
        done = self.run_example("record")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertRegex(done.stderr, r"^code 211: .*UNIQUE constraint failed: city\.id")

    def test_tour_does_what_the_guide_shows(self):
        done = self.run_example("tour")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(done.stdout, "3 Troms\u00f8 77992\n"
                                      "1 updated\n"
                                      "2 Bergen\n3 Troms\u00f8\n4 R\u00f8ros\n"
                                      "3 deleted, 1 left\n")
        self.assertEqual(self.database().execute("SELECT * FROM city").fetchall(), [(2, "Bergen", 291940)])

    def insert_cities(self, *cities):
        for city in cities:
            self.sql("INSERT INTO city VALUES " + city)

    def cities(self):
        return self.database().execute("SELECT id, name, people FROM city ORDER BY id").fetchall()

    def test_objects_writes_finds_and_changes_rows_page_by_page(self):
        done = self.run_example("objects")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(done.stdout, "2 grew\n"
                                      "page 1\n  Oslo: 709037\n  Troms\u00f8: 100000\n"
                                      "page 2\n  R\u00f8ros: 100000\n  Soria Moria: not known\n"
                                      "page 3\n")
        self.assertEqual(self.cities()[-1], (5, "Soria Moria", None))

    def test_objects_says_what_the_database_refuses(self):
        self.insert_cities("(2, 'Bergen', 1)")
        done = self.run_example("objects")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertRegex(done.stderr, r"^insert: code 211 .*UNIQUE constraint failed: city\.id")

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
        self.assertEqual(self.cities(), [(1, "Oslo", 63), (2, "Bergen", 237)])

    def test_batch_inserts_all_rows_or_none(self):
        self.sql("CREATE TABLE photo (id INTEGER PRIMARY KEY, title VARCHAR(20), image BLOB)")
        done = self.run_example("batch")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(done.stdout, "1 to 3: code 0 \n"
                                      "3 to 5: code 211 row 0: UNIQUE constraint failed: photo.id\n"
                                      "photo 1: 100000 bytes of 0\nphoto 2: 100000 bytes of 1\nphoto 3: no image\n")
        rows = self.database().execute("SELECT id, title, image FROM photo").fetchall()
        self.assertEqual(rows, [(1, "photo 1", b"\0" * 100000), (2, "photo 2", b"\1" * 100000), (3, "photo 3", None)])


if __name__ == "__main__":
    unittest.main()
