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


if __name__ == "__main__":
    unittest.main()
