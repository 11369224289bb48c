"""ormel delete and ormel update."""

import unittest

from harness import HomeTest


class Change(HomeTest):
    def setUp(self):
        super().setUp()
        self.sql("CREATE TABLE t (id INTEGER PRIMARY KEY, name VARCHAR(5), part DOUBLE, body TEXT)")
        self.sql("INSERT INTO t VALUES (1, 'a', 0.5, 'x'), (2, 'b', 1.5, NULL), (3, 'c', 2.5, NULL)")

    def rows(self):
        return self.database().execute("SELECT id, name, part, body FROM t ORDER BY id").fetchall()

    def test_delete_takes_the_records_that_meet_all_conditions(self):
        self.assertEqual(self.ormel("delete", "t", "--where", "id <> 1", "--where", "part <= 1.5"), "1 row deleted\n")
        self.assertEqual([row[0] for row in self.rows()], [1, 3])
        self.assertEqual(self.ormel("delete", "t", "--where", "id = 9"), "0 rows deleted\n")

    def test_delete_takes_all_only_when_told(self):
        line = self.refused(2, "delete", "t")
        self.assertEqual(line, "say which records to delete with --where 'COL OP VALUE', or --all for every one of them")
        self.assertEqual(len(self.rows()), 3)
        self.assertEqual(self.ormel("delete", "t", "--all"), "3 rows deleted\n")
        self.assertEqual(self.rows(), [])

    def test_all_and_a_condition_contradict_each_other(self):
        for command in [["delete", "t"], ["update", "t", "name=x"]]:
            self.assertEqual(self.refused(2, *command, "--all", "--where", "id = 1"),
                             "--all means every record and does not go with --where")
        self.assertEqual(len(self.rows()), 3)

    def test_update_sets_the_named_columns_and_no_others(self):
        self.assertEqual(self.ormel("update", "t", "name=n=w", "part=-1", "--where", "id <= 2"), "2 rows updated\n")
        self.assertEqual(self.rows(), [(1, "n=w", -1.0, "x"), (2, "n=w", -1.0, None), (3, "c", 2.5, None)])
        self.assertEqual(self.ormel("update", "t", "name=", "--where", "id = 3"), "1 row updated\n")
        self.assertEqual(self.rows()[2], (3, "", 2.5, None))

    def test_update_counts_the_records_that_matched(self):
        self.assertEqual(self.ormel("update", "t", "name=a", "--where", "id = 1"), "1 row updated\n")

    def test_update_takes_all_only_when_told(self):
        line = self.refused(2, "update", "t", "name=x")
        self.assertEqual(line, "say which records to update with --where 'COL OP VALUE', or --all for every one of them")
        self.assertEqual(self.ormel("update", "t", "name=x", "--all"), "3 rows updated\n")

    def test_update_refuses_what_does_not_fit(self):
        for words, reason in [
                (["nam=x"], "t has no column 'nam'; it has ID, NAME, PART, BODY"),
                (["part=x"], "part: 'x' is no number"),
                (["name=" + "x" * 21], "name: 'xxxxxxxxxxxxxxxxxxxxx' has 21 bytes, the field holds at most 20"),
                (["body=x"], "body: it is a large object, which no record carries; use the command sql for this column"),
                (["name"], "'name' is no assignment: write COL=VALUE, for example AGE=30"),
                (["name=NULL"], "records carry no NULL: use the command set for it, or write 'NULL' in quotes for the text"),
                (["name=x", "NAME=y"], "the column NAME is named twice; name it once"),
                (["name=x"] * 33, "an update takes at most 32 assignments and conditions; use the command sql for more")]:
            self.assertEqual(self.refused(2, "update", "t", *words, "--all"), reason)
        self.assertEqual(self.rows()[0], (1, "a", 0.5, "x"))

    def test_what_the_database_refuses_changes_nothing(self):
        line = self.refused(1, "update", "t", "id=7", "--all")
        self.assertIn("cannot update t: ", line)
        self.assertIn("UNIQUE constraint failed", line)
        self.assertEqual([row[0] for row in self.rows()], [1, 2, 3])

    def test_a_bad_condition_changes_nothing(self):
        for command in [["delete", "t"], ["update", "t", "name=x"]]:
            self.assertIn("there is no operator '>'", self.refused(2, *command, "--where", "id > 1"))
        self.assertEqual([row[1] for row in self.rows()], ["a", "b", "c"])


if __name__ == "__main__":
    unittest.main()
