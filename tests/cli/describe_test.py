"""ormel describe."""

import unittest

from harness import HomeTest


class Describe(HomeTest):
    def test_prints_the_layout_of_a_record(self):
        self.sql("CREATE TABLE t (id INTEGER PRIMARY KEY, name VARCHAR(20), code CHAR(2), big BIGINT, part DOUBLE,"
                 " flag BOOLEAN, raw BINARY(16), loose VARBINARY(3), price NUMERIC(6,2), day DATE)")
        self.assertEqual(self.ormel("describe", "T"),
                         " column | type      | type id | size | offset\n"
                         "--------+-----------+---------+------+--------\n"
                         " ID     | INTEGER   |       1 |    4 |      0\n"
                         " NAME   | VARCHAR   |       9 |   81 |      4\n"
                         " CODE   | CHAR      |       8 |    9 |     85\n"
                         " BIG    | BIGINT    |       2 |    8 |     94\n"
                         " PART   | DOUBLE    |       3 |    8 |    102\n"
                         " FLAG   | BOOLEAN   |      25 |    4 |    110\n"
                         " RAW    | BINARY    |      11 |   16 |    114\n"
                         " LOOSE  | VARBINARY |      12 |    3 |    130\n"
                         " PRICE  | NUMERIC   |      10 |   10 |    133\n"
                         " DAY    | DATE      |      10 |   36 |    143\n"
                         "10 columns, record length 179 bytes\n")

    def test_names_types_that_the_catalogue_does_not_know(self):
        self.sql("CREATE VIEW v AS SELECT 'x' AS word")
        self.assertIn(" WORD   | large text |      13 |   44 |      0\n", self.ormel("describe", "v"))

    def test_tells_what_records_cannot_do(self):
        self.sql("CREATE TABLE lob (body TEXT, id INTEGER, picture BLOB)")
        self.assertTrue(self.ormel("describe", "lob").endswith(
            "3 columns, record length 92 bytes\nlarge objects, which records do not carry: BODY, PICTURE\n"))
        self.sql("CREATE TABLE wide (" + ", ".join(f"c{i} INTEGER" for i in range(33)) + ")")
        self.assertTrue(self.ormel("describe", "wide").endswith(
            "33 columns, record length 132 bytes\n"
            "more than 32 columns: records can be read, counted and deleted, and not inserted\n"))


if __name__ == "__main__":
    unittest.main()
