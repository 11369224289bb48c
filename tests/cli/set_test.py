"""ormel set: columns of rows by request objects."""

import unittest

from harness import HomeTest


class Set(HomeTest):
    def setUp(self):
        super().setUp()
        self.sql("CREATE TABLE t (id INTEGER PRIMARY KEY, name VARCHAR(5), some VARBINARY(4), body TEXT, bytes BLOB)")
        self.sql("INSERT INTO t VALUES (1, 'a', x'01', 'x', x'00'), (2, 'b', x'02', NULL, NULL), (3, NULL, NULL, 'z', x'')")

    def rows(self):
        return self.database().execute("SELECT * FROM t ORDER BY id").fetchall()

    def test_sets_the_named_columns_of_the_chosen_rows(self):
        self.assertEqual(self.ormel("set", "t", "name=n=w", "body=it's", "--where", "id <= 2", "--where", "id <> 1"),
                         "1 row set\n")
        self.assertEqual(self.rows(), [(1, "a", b"\1", "x", b"\0"), (2, "n=w", b"\2", "it's", None), (3, None, None, "z", b"")])

    def test_null_and_empty(self):
        self.assertEqual(self.ormel("set", "t", "name=NULL", "some=null", "body=", "bytes=", "--where", "id = 1"),
                         "1 row set\n")
        self.assertEqual(self.rows()[0], (1, None, None, "", b""))
        self.assertEqual(self.ormel("set", "t", "name='NULL'", "some=", "body=NULL", "bytes=NULL", "--where", "id = 1"),
                         "1 row set\n")
        self.assertEqual(self.rows()[0], (1, "NULL", b"", None, None))

    def test_every_operator_chooses(self):
        for condition, count in [("id = 1", 1), ("id <> 1", 2), ("id < 3", 2), ("id <= 3", 3), ("name like a%", 1), ("body like z", 1),
                                 ("bytes =", 1), ("id = 9", 0)]:
            self.assertEqual(self.ormel("set", "t", "some=ff", "--where", condition),
                             f"{count} row{'' if count == 1 else 's'} set\n", condition)

    def test_takes_all_only_when_told(self):
        self.assertEqual(self.refused(2, "set", "t", "name=x"),
                         "say which records to set with --where 'COL OP VALUE', or --all for every one of them")
        self.assertEqual(self.refused(2, "set", "t", "name=x", "--all", "--where", "id = 1"),
                         "--all means every record and does not go with --where")
        self.assertEqual(self.ormel("set", "t", "name=x", "--all"), "3 rows set\n")
        self.assertEqual([row[1] for row in self.rows()], ["x"] * 3)

    def test_as_many_as_a_statement_takes(self):
        conditions = [word for _ in range(31) for word in ("--where", "id <= 3")]
        self.assertEqual(self.ormel("set", "t", "name=x", *conditions), "3 rows set\n")
        self.assertEqual(self.refused(2, "set", "t", "name=x", "body=y", *conditions),
                         "an update takes at most 32 assignments and conditions; use the command sql for more")

    def test_what_does_not_fit_is_refused(self):
        before = self.rows()
        for words, reason in [
                (["name=x", "--where", "body = NULL"],
                 "no comparison with NULL is ever true: ask in SQL, ormel sql \"SELECT ... WHERE body IS NULL\" (or IS NOT "
                 "NULL), or write 'NULL' in quotes for the text"),
                (["name=x", "--where", "id > 1"],
                 "there is no operator '>': use = <> < <= or like, or say it in SQL: ormel sql \"SELECT ... WHERE id > 1\""),
                (["name=x", "NAME=y", "--all"], "the column NAME is named twice; name it once"),
                (["nam=x", "--all"], "t has no column 'nam'; it has ID, NAME, SOME, BODY, BYTES"),
                (["id=x", "--all"], "id: 'x' is no whole number"),
                (["some=0102030405", "--all"],
                 "some: the field takes at most 4 bytes, written as 8 hexadecimal digits, and '0102030405' has 10")]:
            self.assertEqual(self.refused(2, "set", "t", *words), reason)
        self.assertEqual(self.rows(), before)

    def test_what_the_database_refuses_changes_nothing(self):
        before = self.rows()
        self.assertEqual(self.refused(1, "set", "t", "id=7", "--all"),
                         "cannot set columns of t: UNIQUE constraint failed: t.id")
        self.assertEqual(self.rows(), before)


if __name__ == "__main__":
    unittest.main()
