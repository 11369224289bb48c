"""ormel show."""

import unittest

from harness import HomeTest, fill


class Show(HomeTest):
    def test_prints_records_as_an_aligned_table(self):
        self.sql("CREATE TABLE t (id INTEGER, name VARCHAR(10), part DOUBLE, flag BOOLEAN, raw BINARY(2))")
        self.sql("INSERT INTO t VALUES (7, 'Zo\u00eb', 0.5, 1, x'00ff'), (-1000, '\u732b', 1e300, 0, x'abcd')")
        self.assertEqual(self.ormel("show", "t"),
                         "    ID | NAME |   PART | FLAG  | RAW\n"
                         "-------+------+--------+-------+------\n"
                         "     7 | Zo\u00eb  |    0.5 | true  | 00ff\n"
                         " -1000 | \u732b   | 1e+300 | false | abcd\n"
                         "(2 rows)\n")

    def test_takes_conditions(self):
        self.sql("CREATE TABLE t (id INTEGER)")
        self.sql("INSERT INTO t VALUES (1), (2), (3)")
        self.assertEqual(self.ormel("show", "t", "--where", "id <= 2", "--where", "id <> 1"),
                         " ID\n----\n  2\n(1 row)\n")
        self.assertEqual(self.ormel("show", "t", "--where", "id = 9"), " ID\n----\n(0 rows)\n")

    def test_a_null_is_what_a_record_makes_of_it(self):
        self.sql("CREATE TABLE t (id INTEGER, name VARCHAR(10), raw BINARY(2))")
        self.sql("INSERT INTO t VALUES (NULL, NULL, NULL)")
        self.assertEqual(self.ormel("show", "t"), " ID | NAME | RAW\n----+------+------\n  0 |      | 0000\n(1 row)\n")

    def test_a_record_stays_one_line(self):
        self.sql("CREATE TABLE t (name VARCHAR(20))")
        self.sql("INSERT INTO t VALUES ('a' || char(10) || 'b' || char(27) || 'c')")
        self.assertIn(" a\\nb\\x1bc\n", self.ormel("show", "t"))

    def test_more_records_than_are_converted_at_a_time(self):
        self.sql("CREATE TABLE t (id INTEGER)")
        fill(self, "t SELECT i", 2500)
        lines = self.ormel("show", "t").splitlines()
        self.assertEqual([int(line) for line in lines[2:-1]], list(range(1, 2501)))
        self.assertEqual(lines[-1], "(2500 rows)")

    def test_says_when_there_is_more_than_a_select_takes(self):
        self.sql("CREATE TABLE t (id INTEGER)")
        fill(self, "t SELECT i", 100001)
        self.assertTrue(self.ormel("show", "t", "--where", "id <= 100000").endswith("(100000 rows)\n"))
        done = self.run_ormel("--home", "home", "show", "t")
        self.assertTrue(done.stdout.endswith("(100000 rows)\n"))
        self.assertEqual(done.stderr, "ormel: these are the first 100000 of 100001 rows, the most that one select takes; "
                                      "narrow them down with --where, or take all with get\n")

    def test_large_objects_are_not_in_records(self):
        self.sql("CREATE TABLE t (id INTEGER, body TEXT)")
        self.sql("INSERT INTO t VALUES (1, '" + "x" * 1000 + "')")
        self.assertEqual(self.ormel("show", "t", notes="ormel: records do not carry large objects; read them with: "
                                                       "ormel get t\n"),
                         " ID | BODY\n----+------------------\n  1 | (not in records)\n(1 row)\n")

    def test_more_columns_than_an_insert_carries(self):
        self.sql("CREATE TABLE wide (" + ", ".join(f"c{i} INTEGER" for i in range(40)) + ")")
        self.sql("INSERT INTO wide (c39) VALUES (39)")
        self.assertIn("| C39\n", self.ormel("show", "wide"))
        self.assertIn("|  39\n", self.ormel("show", "wide", "--where", "c39 = 39"))


if __name__ == "__main__":
    unittest.main()
