"""ormel count, and the conditions that it shares with show, delete and update."""

import unittest

from harness import HomeTest


class Count(HomeTest):
    def setUp(self):
        super().setUp()
        self.sql("CREATE TABLE t (id INTEGER, name VARCHAR(80), big BIGINT, part DOUBLE, flag BOOLEAN, raw BINARY(2),"
                 " price NUMERIC(6,2), body TEXT, wide BINARY(300))")
        self.sql("INSERT INTO t (id, name, big, part, flag, raw, price) VALUES"
                 " (1, 'Ada', 10, 0.5, 1, x'0001', 1.50), (2, 'Zo\u00eb', -10, 1.5, 0, x'00ff', 2),"
                 " (3, '', 5000000000, -2, 1, x'ffff', 10), (NULL, NULL, NULL, NULL, NULL, NULL, NULL)")

    def count(self, *conditions):
        words = [word for condition in conditions for word in ("--where", condition)]
        return self.ormel("count", "t", *words)

    def refusal(self, condition):
        return self.refused(2, "count", "t", "--where", condition)

    def test_counts_all(self):
        self.assertEqual(self.count(), "4 rows\n")

    def test_every_operator(self):
        for condition, rows in [("id = 1", 1), ("id <> 1", 2), ("id < 2", 1), ("id <= 2", 2), ("name like %o%", 1),
                                ("NAME LIKE 'a%'", 1), ("price like 1%", 2)]:
            self.assertEqual(self.count(condition), f"{rows} row{'' if rows == 1 else 's'}\n", condition)

    def test_every_type(self):
        for condition in ["name = Zo\u00eb", "big = 5000000000", "part <= -2", "flag = false", "raw = 00ff",
                          "price = 1.5", "name ="]:
            self.assertEqual(self.count(condition), "1 row\n", condition)

    def test_all_conditions_hold(self):
        self.assertEqual(self.count("flag = true", "big < 100"), "1 row\n")
        self.assertEqual(self.count("id = 1", "id = 2"), "0 rows\n")

    def test_as_many_as_a_statement_takes(self):
        self.assertEqual(self.count(*["id <= 2"] * 32), "2 rows\n")
        line = self.refused(2, "count", "t", *["--where", "id <= 2"] * 33)
        self.assertEqual(line, "a statement takes at most 32 conditions; use the command sql for more")

    def test_an_operator_that_is_not_there_counts_nothing(self):
        self.assertEqual(self.refusal("id > 1"),
                         "there is no operator '>': use = <> < <= or like, or say it in SQL: ormel sql \"SELECT ... "
                         "WHERE id > 1\"")
        self.assertIn("there is no operator '>='", self.refusal("id >= 1"))
        self.assertIn("there is no operator 'is'", self.refusal("id is null"))

    def test_a_column_that_is_not_there(self):
        self.assertEqual(self.refusal("nam = x"),
                         "t has no column 'nam'; it has ID, NAME, BIG, PART, FLAG, RAW, PRICE, BODY, WIDE")

    def test_values_that_do_not_fit(self):
        self.assertEqual(self.refusal("id = x"), "id: 'x' is no whole number")
        self.assertEqual(self.refusal("id ="), "id: an empty field is no number")
        self.assertEqual(self.refusal("id like 1%"),
                         "id: like compares texts, and the column is of the type INTEGER")
        self.assertEqual(self.refusal("price = cheap"), "price: 'cheap' is no number")
        self.assertEqual(self.refusal("raw = 00"),
                         "raw: the field takes exactly 2 bytes, written as 4 hexadecimal digits, and '00' has 2")
        for operator, length in [("=", 256), ("<>", 400), ("like", 256)]:
            self.assertEqual(self.refusal(f"name {operator} " + "x" * length),
                             f"name: the text has {length} bytes, a condition on records takes at most 255; get, dump, set and "
                             "sql take more")
        self.sql("CREATE TABLE short (name VARCHAR(2))")
        self.assertIn("has 9 bytes, the field holds at most 8",
                      self.refused(2, "count", "short", "--where", "name = 123456789"))
        self.assertEqual(self.refusal("body = x"),
                         "body: it is a large object, which no record carries; use the command sql for this column")
        self.assertEqual(self.refusal("wide = 00"),
                         "wide: a condition's value has at most 256 bytes, and the column has 300; use the command sql")

    def test_the_longest_value(self):
        self.sql("INSERT INTO t (name) VALUES ('" + "y" * 255 + "')")
        self.assertEqual(self.count("name = " + "y" * 255), "1 row\n")


if __name__ == "__main__":
    unittest.main()
