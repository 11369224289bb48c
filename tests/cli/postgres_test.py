"""The command on a PostgreSQL server, which with_postgres.py starts beside it."""

import os
import time
import unittest

from harness import DirectoryTest, PATIENCE
from proxy import CommitCut

HOST = "127.0.0.1"
PORT = os.environ["ORMEL_POSTGRES_PORT"]
PASSWORD = os.environ["ORMEL_POSTGRES_PASSWORD"]
AUTHORITY = os.path.join(os.environ["ORMEL_POSTGRES_CERTIFICATES"], "root.crt")

TABLE = ("CREATE TABLE t (id INTEGER PRIMARY KEY, name VARCHAR(10), price NUMERIC(6,2), born DATE, body TEXT,"
         " photo BYTEA, flag BOOLEAN)")


class PostgresTest(DirectoryTest):
    def setUp(self):
        super().setUp()
        self.new("home")

    def new(self, home, *words, password=PASSWORD, host=HOST, port=PORT, dbname="postgres", user="postgres"):
        """Makes a home; what is not said leads to the server."""
        self.write("secret", password + "\n")
        self.succeed("new", home, "--password-file", "secret", "--engine", "postgres", "--host", host, "--port", port,
                     "--dbname", dbname, "--user", user, *words)
        self.configure("client.connect_timeout_ms", PATIENCE, home)

    def ormel(self, *arguments, **options):
        return self.succeed("--home", "home", *arguments, **options)

    def refused(self, code, *arguments, home="home", **options):
        return self.fail_with(code, "--home", home, *arguments, **options)

    def sql(self, text):
        return self.ormel("sql", text)


class Check(PostgresTest):
    def test_tells_what_the_database_is(self):
        code, told, errors = self.check("home")
        self.assertEqual((code, errors), (0, ""))
        self.assertEqual(list(told), ["engine", "version", "database", "ssl mode", "encryption", "round trip"])
        self.assertEqual(told["engine"], "postgres")
        self.assertRegex(told["version"], r"^\d+\.\d+")
        self.assertEqual(told["database"], "postgres, as postgres")
        self.assertEqual(told["ssl mode"], "PREFERRED")
        self.assertRegex(told["encryption"], r"^TLSv1\.[23], \S+$", "what nobody asks for is taken where it is there")
        self.assertRegex(told["round trip"], r"^\d+ us$")

    def test_encryption_is_what_the_home_asks_for(self):
        for host, mode, encrypted in [(HOST, "DISABLED", False), (HOST, "REQUIRED", True), (HOST, "VERIFY_CA", True),
                                      ("localhost", "VERIFY_FULL", True)]:
            with self.subTest(mode=mode):
                self.new(mode, "--sslmode", mode, "--sslrootcert", AUTHORITY, host=host)
                code, told, _ = self.check(mode)
                self.assertEqual((code, told["encryption"] != "none"), (0, encrypted))

    def test_an_ssl_mode_that_there_is_not(self):
        text = self.read("home/conf/db.conf")
        for word, code, mode in [
                ("require", 1, "not known: auth.sslmode is 'require', which is no mode and is taken for DISABLED; set it"
                               " to DISABLED, PREFERRED, REQUIRED, VERIFY_CA or VERIFY_FULL in conf/db.conf"),
                ("", 0, "DISABLED, because auth.sslmode is not set"),
                ("required", 0, "required")]:
            with self.subTest(word=word):
                self.write("home/conf/db.conf", text.replace("auth.sslmode=PREFERRED", "auth.sslmode=" + word))
                found, told, _ = self.check("home")
                self.assertEqual((found, told["ssl mode"]), (code, mode))
                self.assertEqual(told["encryption"] != "none", word == "required")

    def test_a_certificate_of_another_host(self):
        self.new("other", "--sslmode", "VERIFY_FULL", "--sslrootcert", AUTHORITY)
        line = self.refused(1, "check", home="other")
        self.assertIn(f'does not match host name "{HOST}"', line)
        self.assertIn("made out to db.host", line)

    def test_a_certificate_of_another_authority(self):
        foreign = os.path.join(os.path.dirname(AUTHORITY), "foreign.crt")
        self.new("foreign", "--sslmode", "VERIFY_CA", "--sslrootcert", foreign)
        line = self.refused(1, "check", home="foreign")
        self.assertIn("certificate verify failed", line)
        self.assertIn("see that auth.sslrootcert in that file is the authority of the server's certificate", line)

    def test_a_server_is_meant_where_a_host_is_named_and_no_engine(self):
        text = self.read("home/conf/db.conf")
        self.write("home/conf/db.conf", text.replace("db.driver=postgres", "db.driver="))
        self.assertEqual(self.check("home")[1]["engine"], "postgres")

    def test_a_step_that_fails_is_told_and_the_others_are_done(self):
        self.sql("CREATE ROLE clerk LOGIN PASSWORD 'clerks'")
        self.addCleanup(self.sql, "DROP ROLE clerk")
        self.sql("REVOKE SELECT ON pg_stat_ssl FROM PUBLIC")
        self.addCleanup(self.sql, "GRANT SELECT ON pg_stat_ssl TO PUBLIC")
        self.new("clerks", user="clerk", password="clerks")
        code, told, errors = self.check("clerks")
        self.assertEqual((code, errors), (1, "ormel: the database does not do all that it should: 1 step failed\n"))
        self.assertEqual(told["database"], "postgres, as clerk")
        self.assertRegex(told["encryption"],
                         "^not known: .*42501: permission denied for view pg_stat_ssl; let this user read pg_stat_ssl$")
        self.assertRegex(told["round trip"], r"^\d+ us$")


class Trouble(PostgresTest):
    """Each time one line with the server's words and what to do, soon."""

    CASES = [
        ("password", {"password": "wrong"}, 'password authentication failed for user "postgres"', "conf/db.password"),
        ("user", {"user": "nobody"}, 'password authentication failed for user "nobody"', "correct db.user"),
        ("port", {"port": "1"}, "Connection refused", "see that the server runs"),
        ("host", {"host": "no.such.host.invalid"}, "no.such.host.invalid", "see that the server runs"),
        ("dbname", {"dbname": "none"}, 'database "none" does not exist', "correct db.dbname"),
    ]

    def test_a_wrong_setting(self):
        for name, setting, words, remedy in self.CASES:
            name = "wrong-" + name
            self.new(name, **setting)
            for command in [["check"], ["count", "t"]]:
                with self.subTest(name=name, command=command):
                    begin = time.monotonic()
                    line = self.refused(1, *command, home=name)
                    self.assertLess(time.monotonic() - begin, 30)
                    self.assertTrue(line.startswith(f"cannot open the database that {self.path(name)}/conf/db.conf "
                                                    "names: "), line)
                    self.assertIn(words, line)
                    self.assertIn(remedy, line)

    def test_a_server_that_takes_no_more(self):
        self.sql("CREATE ROLE few LOGIN PASSWORD 'few' CONNECTION LIMIT 0")
        self.addCleanup(self.sql, "DROP ROLE few")
        self.new("fews", user="few", password="few")
        line = self.refused(1, "check", home="fews")
        self.assertIn('53300: too many connections for role "few"', line)
        self.assertTrue(line.endswith("; try again when others have gone, or let the server take more: max_connections "
                                      "in its configuration, or the CONNECTION LIMIT of the user or the database"), line)

    def test_the_password_is_never_shown(self):
        self.new("shown", password="very-secret", user="nobody")
        self.assertNotIn("very-secret", self.refused(1, "check", home="shown"))
        self.assertNotIn("very-secret", self.read("shown/var/log/slot-900"))

    def test_another_process_in_the_way_is_told_by_the_class(self):
        for state, waits in [("55P03", True), ("40P01", True), ("40001", True), ("25P02", False), ("22012", False)]:
            line = self.refused(1, "sql", f"DO $$ BEGIN RAISE 'a clock' USING ERRCODE = '{state}'; END $$")
            self.assertEqual(line, f"the statement failed: {state}: a clock" +
                             ("; another process is at work in it: try again when it is done" if waits else ""))

    def test_a_statement_that_the_database_refuses(self):
        self.assertEqual(self.refused(1, "sql", "SELECT nonsense"),
                         'the database refuses the statement: 42703: column "nonsense" does not exist')
        self.assertRegex(self.refused(1, "count", "nonesuch"), 'relation "nonesuch" does not exist; ormel sql .* lists the tables')

    def test_a_table_that_may_not_be_read(self):
        self.sql("CREATE TABLE hidden (id INTEGER)")
        self.addCleanup(self.sql, "DROP TABLE hidden")
        self.sql("CREATE ROLE guest LOGIN PASSWORD 'guests'")
        self.addCleanup(self.sql, "DROP ROLE guest")
        self.new("guests", user="guest", password="guests")
        self.assertEqual(self.refused(1, "count", "hidden", home="guests"),
                         "cannot describe the table hidden: 42501: permission denied for table hidden")


class Rows(PostgresTest):
    def setUp(self):
        super().setUp()
        self.sql(TABLE)
        self.addCleanup(self.sql, "DROP TABLE t")

    def fill(self):
        self.ormel("put", "t", "id=1", "name=Zo\u00eb", "price=1.25", "born=1990-02-28", "body=Dear \"all\",",
                   "photo=00ff", "flag=true")
        self.ormel("put", "t", "id=2", "name=", "born=NULL", "flag=false")

    def ids(self):
        return [int(line.strip('"')) for line in self.ormel("dump", "t", "--fields", "id").splitlines()[1:]]

    def test_sql(self):
        self.fill()
        self.assertEqual(self.sql("SELECT id, name, body FROM t ORDER BY id"),
                         " ID | NAME | BODY\n"
                         "----+------+-------------\n"
                         "  1 | Zo\u00eb  | Dear \"all\",\n"
                         "  2 |      | NULL\n"
                         "(2 rows)\n")
        self.assertEqual(self.sql("UPDATE t SET price = 2"), "2 rows affected\n")

    def test_sql_that_no_transaction_takes(self):
        self.assertEqual(self.sql("VACUUM t"), "0 rows affected\n")

    def test_what_is_put_is_got(self):
        self.fill()
        self.assertEqual(self.ormel("get", "t", "--json"),
                         '[\n{"ID":1,"NAME":"Zo\u00eb","PRICE":"1.25","BORN":"1990-02-28","BODY":"Dear \\"all\\",",'
                         '"PHOTO":"00ff","FLAG":true},\n'
                         '{"ID":2,"NAME":"","PRICE":null,"BORN":null,"BODY":null,"PHOTO":null,"FLAG":false}\n]\n')
        self.assertEqual(self.ormel("get", "t", "--where", "price <= 2", "--fields", "id,price", "--csv"),
                         '"ID","PRICE"\n"1","1.25"\n')

    def test_put_says_what_the_server_says(self):
        self.fill()
        self.assertIn('23505: duplicate key value violates unique constraint "t_pkey"',
                      self.refused(1, "put", "t", "id=1"))
        self.assertIn("22001: value too long for type character varying(10)",
                      self.refused(1, "put", "t", "id=3", "name=" + "x" * 11))
        self.assertEqual(self.ids(), [1, 2])

    def test_large_objects_by_file(self):
        value = bytes(range(256)) * 1024
        self.write("photo", value)
        self.ormel("put", "t", "id=1", "--lob", "photo=photo")
        self.assertEqual(self.ormel("get", "t", "--fields", "photo", "--csv"), f'"PHOTO"\n"{value.hex()}"\n')

    def test_a_dumped_table_is_loaded_as_it_was(self):
        self.fill()
        dumped = self.ormel("dump", "t")
        self.assertEqual(self.ormel("delete", "t", "--all"), "2 rows deleted\n")
        self.write("dumped.csv", dumped)
        self.assertEqual(self.ormel("load", "t", "dumped.csv", "--skip", "1"), "2 rows loaded into t\n")
        self.assertEqual(self.ormel("dump", "t"), dumped)

    def test_a_row_among_the_first_of_a_dump_that_cannot_be_read(self):
        self.sql("CREATE VIEW v AS SELECT i, 1 / (16 - i) AS part FROM generate_series(1, 100) AS i")
        self.addCleanup(self.sql, "DROP VIEW v")
        self.assertEqual(self.refused(1, "dump", "v"), "cannot read the rows of v: 22012: division by zero")

    def test_what_is_no_finite_number(self):
        self.sql("CREATE TABLE n (id INTEGER, part DOUBLE PRECISION, price NUMERIC)")
        self.addCleanup(self.sql, "DROP TABLE n")
        text = ('"ID","PART","PRICE"\n"1","inf","Infinity"\n"2","-inf","-Infinity"\n"3","nan","NaN"\n')
        self.write("n.csv", text)
        self.assertEqual(self.ormel("load", "n", "n.csv", "--skip", "1"), "3 rows loaded into n\n")
        self.assertEqual(self.ormel("dump", "n"), text)
        self.assertEqual(self.ormel("dump", "n", "--json").splitlines()[2], '{"ID":3,"PART":"nan","PRICE":"NaN"}')
        self.assertEqual(self.ormel("set", "n", "part=nan", "price=Infinity", "--where", "price = NaN"), "1 row set\n")
        self.assertIn("PRICE: 'nan' is no number", self.refused(2, "put", "n", "PRICE=nan"))

    def test_set_update_and_delete(self):
        self.fill()
        self.assertEqual(self.ormel("set", "t", "name=x", "body=NULL", "photo=", "--where", "id = 1"), "1 row set\n")
        self.assertEqual(self.ormel("update", "t", "price=7", "--where", "name like x%"), "1 row updated\n")
        self.assertEqual(self.ormel("dump", "t", "--where", "id = 1").splitlines()[1],
                         '"1","x","7.00","1990-02-28",,"","true"')
        self.assertEqual(self.ormel("delete", "t", "--where", "id < 2"), "1 row deleted\n")
        self.assertEqual(self.ormel("count", "t"), "1 row\n")

    def test_show_and_describe(self):
        self.fill()
        self.assertIn("Zo\u00eb", self.run_ormel("--home", "home", "show", "t").stdout)
        self.assertIn("CHARACTER VARYING", self.ormel("describe", "t"))


class LostAnswer(PostgresTest):
    """A connection that breaks while the server commits."""

    COMMANDS = [  # each with the ids that the table then has
        (["put", "t", "id=3"], [1, 2, 3]), (["sql", "INSERT INTO t VALUES (4)"], [1, 2, 3, 4]),
        (["set", "t", "id=5", "--where", "id = 3"], [1, 2, 4, 5]),
        (["update", "t", "id=6", "--where", "id = 4"], [1, 2, 5, 6]), (["delete", "t", "--where", "id <= 5"], [6])]

    def test_leaves_the_outcome_open(self):
        self.sql("CREATE TABLE t (id INTEGER)")
        self.addCleanup(self.sql, "DROP TABLE t")
        self.sql("INSERT INTO t VALUES (1), (2)")
        proxy = CommitCut(HOST, int(PORT))
        self.addCleanup(proxy.close)
        self.new("cut", "--sslmode", "DISABLED", port=str(proxy.port))
        for command, ids in self.COMMANDS:
            with self.subTest(command=command):
                line = self.refused(1, *command, home="cut")
                self.assertTrue(line.startswith("the commit failed, and whether anything was changed is not known: 08007: "),
                                line)
                self.assertTrue(line.endswith("; look before repeating it"), line)
                rows = self.ormel("dump", "t").splitlines()[1:]
                self.assertEqual(sorted(int(row.strip('"')) for row in rows), ids)

    def test_a_refused_commit_changes_nothing(self):
        self.sql("CREATE TABLE t (id INTEGER UNIQUE DEFERRABLE INITIALLY DEFERRED)")
        self.addCleanup(self.sql, "DROP TABLE t")
        self.assertTrue(self.refused(1, "sql", "INSERT INTO t VALUES (1), (1)").startswith(
            "the database refused the commit, nothing was changed: 23505: "))


class Load(PostgresTest):
    def setUp(self):
        super().setUp()
        self.sql("CREATE TABLE t (id INTEGER PRIMARY KEY, name VARCHAR(10))")
        self.addCleanup(self.sql, "DROP TABLE t")

    def rows(self, count, wrong=None, row=""):
        """A file of rows, one of them another."""
        lines = [row if i == wrong else f"{i},name {i}" for i in range(1, count + 1)]
        return self.write("rows.csv", "\n".join(lines) + "\n")

    def test_batches(self):
        for words in [[], ["--batch", "1"], ["--batch", "7"], ["--batch", "2500"], ["--commit-every", "1001"]]:
            with self.subTest(words=words):
                self.assertEqual(self.ormel("load", "t", self.rows(2500), *words), "2500 rows loaded into t\n")
                self.assertEqual(self.sql("SELECT count(*) n FROM t WHERE name = 'name ' || id"),
                                 "    N\n------\n 2500\n(1 row)\n")
                self.ormel("delete", "t", "--all")

    def test_a_refused_row_names_its_line_and_nothing_is_in(self):
        for wrong, row, words in [
                (1777, "3,again", '23505: duplicate key value violates unique constraint "t_pkey"'),
                (1000, "1000,a very long name", "22001: value too long for type character varying(10)"),
                (1001, ",no key", '23502: null value in column "id"')]:
            for options in [[], ["--batch", "1"], ["--batch", "10"], ["--batch", "2500"]]:
                with self.subTest(wrong=wrong, options=options):
                    line = self.refused(1, "load", "t", self.rows(2500, wrong, row), *options)
                    self.assertTrue(line.startswith(f"rows.csv:{wrong}: the database refuses the record: "), line)
                    self.assertIn(words, line)
                    self.assertTrue(line.endswith("; nothing was loaded"), line)
                    self.assertEqual(self.ormel("count", "t"), "0 rows\n")

    def test_what_was_committed_stays(self):
        line = self.refused(1, "load", "t", self.rows(2500, 1777, "3,again"), "--commit-every", "500")
        self.assertTrue(line.startswith("rows.csv:1777: "), line)
        self.assertTrue(line.endswith("loaded and kept: 1500 rows; when that is mended, go on with --skip 1500"), line)
        self.assertEqual(self.ormel("load", "t", self.rows(2500), "--skip", "1500"), "1000 rows loaded into t\n")

    def test_a_server_that_ends_the_connection(self):
        self.sql("CREATE FUNCTION leave() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN"
                 " PERFORM pg_terminate_backend(pg_backend_pid()); RETURN NEW; END $$")
        self.addCleanup(self.sql, "DROP FUNCTION leave")
        self.sql("CREATE TRIGGER leave BEFORE INSERT ON t FOR EACH ROW WHEN (NEW.id = 1500) EXECUTE FUNCTION leave()")
        self.addCleanup(self.sql, "DROP TRIGGER leave ON t")
        line = self.refused(1, "load", "t", self.rows(2500))
        self.assertIn("terminating connection due to administrator command", line)
        self.assertEqual(self.ormel("count", "t"), "0 rows\n")


if __name__ == "__main__":
    unittest.main()
