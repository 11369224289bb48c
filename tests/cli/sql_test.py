"""ormel sql."""

import unittest

from harness import HomeTest


class Sql(HomeTest):
    def test_says_how_many_rows_were_affected(self):
        self.assertEqual(self.sql("CREATE TABLE t (id INTEGER)"), "0 rows affected\n")
        self.assertEqual(self.sql("INSERT INTO t VALUES (1), (2)"), "2 rows affected\n")
        self.assertEqual(self.sql("UPDATE t SET id = 1"), "2 rows affected\n")
        self.assertEqual(self.sql("CREATE TABLE u (id INTEGER)"), "0 rows affected\n")
        self.assertEqual(self.sql("DELETE FROM t WHERE id = 1"), "2 rows affected\n")

    def test_commits(self):
        self.sql("CREATE TABLE t (id INTEGER)")
        self.sql("INSERT INTO t VALUES (7)")
        self.assertEqual(self.database().execute("SELECT * FROM t").fetchall(), [(7,)])

    def test_prints_rows(self):
        self.sql("CREATE TABLE t (id INTEGER, name VARCHAR(10), big BIGINT, part DOUBLE, flag BOOLEAN, raw BINARY(2),"
                 " price NUMERIC(6,2))")
        self.sql("INSERT INTO t VALUES (-1, 'Zo\u00eb', 5000000000, 0.5, 1, x'00ff', 1.25),"
                 " (NULL, NULL, NULL, NULL, NULL, NULL, NULL)")
        self.assertEqual(self.sql("SELECT * FROM t"),
                         "   ID | NAME |        BIG | PART | FLAG | RAW  | PRICE\n"
                         "------+------+------------+------+------+------+-------\n"
                         "   -1 | Zo\u00eb  | 5000000000 |  0.5 | true | 00ff | 1.25\n"
                         " NULL | NULL |       NULL | NULL | NULL | NULL | NULL\n"
                         "(2 rows)\n")
        self.assertEqual(self.sql("SELECT id FROM t WHERE id = 5"), " ID\n----\n(0 rows)\n")

    def test_reads_large_objects_whole(self):
        self.sql("CREATE TABLE t (body TEXT, picture BLOB)")
        self.database().execute("INSERT INTO t VALUES (?, ?)", ["\u00e9" * 50000, bytes(range(256)) * 100])
        self.assertEqual(self.sql("SELECT body FROM t").splitlines()[2], " " + "\u00e9" * 50000)
        self.assertEqual(self.sql("SELECT picture FROM t").splitlines()[2], " " + (bytes(range(256)) * 100).hex())

    def test_reads_empty_large_objects(self):
        self.sql("CREATE TABLE t (body TEXT, picture BLOB)")
        self.sql("INSERT INTO t VALUES ('', x'')")
        self.assertEqual(self.sql("SELECT * FROM t"), " BODY | PICTURE\n------+---------\n      |\n(1 row)\n")

    def test_reads_more_rows_than_one_result_takes(self):
        output = self.sql("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 100001)"
                          " SELECT i FROM n")
        self.assertTrue(output.endswith("(100001 rows)\n"), output[-40:])

    def test_a_statement_that_the_database_refuses(self):
        line = self.refused(1, "sql", "SELEC 1")
        self.assertIn("syntax error", line)
        self.assertTrue(line.startswith("the database refuses the statement: "), line)
        self.sql("CREATE TABLE t (id INTEGER PRIMARY KEY)")
        line = self.refused(1, "sql", "INSERT INTO t VALUES (1), (1)")
        self.assertIn("the statement failed: ", line)
        self.assertIn("UNIQUE constraint failed: t.id", line)
        self.assertEqual(self.database().execute("SELECT count(*) FROM t").fetchall(), [(0,)])

    def test_a_value_that_is_not_of_its_columns_type_is_said_not_shown_as_another(self):
        self.sql("CREATE TABLE t (id INTEGER)")
        self.database().execute("INSERT INTO t VALUES ('seven')")
        done = self.run_ormel("--home", "home", "sql", "SELECT id FROM t")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertEqual(len(done.stderr.splitlines()), 1, done.stderr)


if __name__ == "__main__":
    unittest.main()
