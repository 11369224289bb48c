"""ormel new."""

import os
import pty
import signal
import stat
import subprocess
import termios
import unittest

from harness import ORMEL, DirectoryTest

KEYS = ["db.driver", "db.dbname", "db.host", "db.port", "db.user", "auth.sslmode", "auth.sslrootcert", "auth.sslcert",
        "auth.sslkey", "client.pool", "client.connect_timeout_ms", "client.busy_timeout_ms"]


class New(DirectoryTest):
    def test_makes_a_home(self):
        output = self.succeed("new", "home", "--password-file", "password")
        self.assertIn("made home with bin/, conf/, data/ and var/log/\n", output)
        for directory in ["bin", "conf", "data", "var/log"]:
            self.assertTrue(os.path.isdir(self.path("home/" + directory)), directory)
        self.assertEqual(sorted(os.listdir(self.path("home/conf"))), ["db.conf", "db.password", "log.conf"])
        self.assertEqual(self.read("home/conf/db.password"), "secret\n")
        self.assertEqual(stat.S_IMODE(os.stat(self.path("home/conf/db.password")).st_mode), 0o600)

    def test_the_password_is_nobody_elses_whatever_the_umask(self):
        self.succeed("new", "home", "--password-file", "password", preexec_fn=lambda: os.umask(0))
        self.assertEqual(stat.S_IMODE(os.stat(self.path("home/conf/db.password")).st_mode), 0o600)

    def test_every_key_stands_in_the_configuration_with_a_comment(self):
        self.succeed("new", "home", "--password-file", "password")
        for name, keys in [("db.conf", KEYS), ("log.conf", ["log.path", "log.slot", "OPB_VEMLO_DEBUG"])]:
            blocks = self.read("home/conf/" + name).split("\n\n")
            found = []
            for block in blocks[0:]:
                lines = block.strip("\n").split("\n")
                settings = [line for line in lines if not line.startswith("#")]
                found += [line.split("=")[0] for line in settings]
                self.assertTrue(lines[0].startswith("# "), block)
            self.assertEqual(found, keys)

    def test_takes_an_empty_directory(self):
        os.mkdir(self.path("home"))
        self.succeed("new", "home", "--password-file", "password")
        self.assertTrue(os.path.exists(self.path("home/conf/db.conf")))

    def test_takes_the_current_directory_when_it_is_empty(self):
        os.mkdir(self.path("home"))
        self.succeed("new", ".", "--password-file", "../password", cwd=self.path("home"))
        self.assertTrue(os.path.exists(self.path("home/conf/db.conf")))

    def test_leaves_a_directory_with_something_in_it_alone(self):
        os.mkdir(self.path("home"))
        self.write("home/precious", "x")
        line = self.fail_with(1, "new", "home", "--password-file", "password")
        self.assertEqual(line, "home is there already and not an empty directory; nothing in it was touched")
        self.assertEqual(os.listdir(self.path("home")), ["precious"])

    def test_leaves_a_file_alone(self):
        line = self.fail_with(1, "new", "password", "--password-file", "password")
        self.assertEqual(line, "password is there already and not an empty directory; nothing in it was touched")
        self.assertEqual(self.read("password"), "secret\n")

    def test_leaves_a_dangling_link_alone(self):
        os.symlink("nowhere", self.path("home"))
        self.fail_with(1, "new", "home", "--password-file", "password")
        self.assertEqual(os.readlink(self.path("home")), "nowhere")

    def test_says_when_the_directory_above_is_missing(self):
        line = self.fail_with(1, "new", "none/home", "--password-file", "password")
        self.assertEqual(line, "cannot make none/home: No such file or directory")

    def test_leaves_nothing_half_made(self):
        # The name of the longest file does not fit into a path any more, after the directories were made.
        deep = "d" * 200
        home = self.directory
        while len(home) + len(deep) + len("/conf/db.password") < 4000:
            home += "/" + deep
            os.mkdir(home)
        home += "/" + "h" * (4095 - len("/conf/log.conf") - len(home) - 1)
        line = self.fail_with(1, "new", home, "--password-file", "password")
        self.assertIn("File name too long", line)
        self.assertFalse(os.path.exists(home))
        self.assertEqual(os.listdir(os.path.dirname(home)), [])

    def test_never_asks_on_a_pipe(self):
        line = self.fail_with(2, "new", "home", stdin=None, input="secret\n")
        self.assertEqual(line, "there is no terminal to ask for the database password on; name a file that holds it "
                               "with --password-file FILE")
        self.assertFalse(os.path.exists(self.path("home")))

    def test_refuses_password_files_without_a_password(self):
        for content, reason in [
                ("", "the password file p holds no password; the library needs one (the embedded engine takes any)"),
                ("\n", "the password file p holds no password; the library needs one (the embedded engine takes any)"),
                ("two\nlines\n", "p has more than one line; it takes the password and nothing else"),
                (b"nul\0byte", "p has more than one line; it takes the password and nothing else"),
                ("x" * 255, "the password file p holds more than the 254 bytes that the library keeps")]:
            self.write("p", content)
            self.assertIn(reason, self.fail_with(1, "new", "home", "--password-file", "p"))
        self.assertIn("cannot read the password file none: No such file or directory",
                      self.fail_with(1, "new", "home", "--password-file", "none"))
        self.assertIn("cannot read the password file .: Is a directory",
                      self.fail_with(1, "new", "home", "--password-file", "."))
        self.assertFalse(os.path.exists(self.path("home")))

    def test_takes_the_longest_password(self):
        self.write("p", "x" * 254 + "\r\n")
        self.succeed("new", "home", "--password-file", "p")
        self.assertEqual(self.read("home/conf/db.password"), "x" * 254 + "\n")


class Server(DirectoryTest):
    """A home that leads to a server; nobody connects to it."""

    NEEDED = ["--host", "db.example", "--dbname", "shop", "--user", "clerk"]

    def new(self, *words):
        return self.succeed("new", "home", "--password-file", "password", "--engine", "postgres", *words)

    def wrong(self, *words, engine="postgres"):
        line = self.fail_with(2, "new", "home", "--password-file", "password", "--engine", engine, *words)
        self.assertFalse(os.path.exists(self.path("home")))
        return line

    def with_value(self, option, value):
        """The needed options, one of them or another with this value."""
        words = list(self.NEEDED)
        if option not in words:
            return words + [option, value]
        words[words.index(option) + 1] = value
        return words

    def settings(self):
        lines = self.read("home/conf/db.conf").splitlines()
        return dict(line.split("=", 1) for line in lines if line and not line.startswith("#"))

    def test_stands_in_the_configuration(self):
        self.assertEqual(self.new(*self.NEEDED),
                         "made home with bin/, conf/, data/ and var/log/\n"
                         "the database is shop on db.example; conf/db.conf says so\n"
                         "next: ormel --home home check\n")
        settings = self.settings()
        self.assertEqual(list(settings), KEYS)
        self.assertEqual({key: value for key, value in settings.items() if not key.startswith("client.")},
                         {"db.driver": "postgres", "db.dbname": "shop", "db.host": "db.example", "db.port": "5432",
                          "db.user": "clerk", "auth.sslmode": "PREFERRED", "auth.sslrootcert": "", "auth.sslcert": "",
                          "auth.sslkey": ""})
        self.assertEqual(self.read("home/conf/db.password"), "secret\n")

    def test_all_options(self):
        self.write("root.crt", "certificate")
        self.new("--host", "a,b", "--port", "5433,65535", "--dbname", "my shop", "--user", "Zo\u00eb", "--sslmode",
                 "verify_full", "--sslrootcert", "root.crt")
        settings = self.settings()
        for key, value in [("db.host", "a,b"), ("db.port", "5433,65535"), ("db.dbname", "my shop"),
                           ("db.user", "Zo\u00eb"), ("auth.sslmode", "VERIFY_FULL"),
                           ("auth.sslrootcert", self.path("root.crt"))]:
            self.assertEqual(settings[key], value)

    def test_the_embedded_engine_is_the_default(self):
        self.succeed("new", "home", "--password-file", "password")
        self.succeed("new", "named", "--password-file", "password", "--engine", "sqlite")
        self.assertEqual(self.read("home/conf/db.conf"), self.read("named/conf/db.conf"))
        self.assertEqual(self.settings()["db.driver"], "sqlite")

    def test_no_such_engine(self):
        self.assertEqual(self.wrong(engine="nonesuch"), "there is no engine 'nonesuch': it is sqlite or postgres")

    def test_what_is_missing_is_named(self):
        for words, missing in [([], "--host, --dbname and --user"), (["--dbname", "shop"], "--host and --user"),
                               (["--host", "h", "--dbname", "shop"], "--user")]:
            self.assertEqual(self.wrong(*words), f"--engine postgres needs {missing} as well")

    def test_options_of_a_server_are_nothing_for_the_embedded_engine(self):
        for words, options in [(["--port", "1"], "--port"), (["--sslmode", "REQUIRED"], "--sslmode"),
                               (self.NEEDED, "--host, --dbname and --user")]:
            self.assertEqual(self.wrong(*words, engine="sqlite"),
                             f"{options}: only with --engine postgres; the embedded database is data/ormel.db "
                             "until conf/db.conf names another")

    def test_values_that_would_not_come_back(self):
        for option in ["--host", "--port", "--dbname", "--user", "--sslmode", "--sslrootcert"]:
            for value in ["a=b", "a\nb", "a\rb"]:
                self.assertEqual(self.wrong(*self.with_value(option, value)),
                                 f"{option} has an '=' or a line end in it, at which its value in the configuration "
                                 "would end")
            for value in ["", " a", "a\t"]:
                self.assertEqual(self.wrong(*self.with_value(option, value)),
                                 f"{option} is empty or has a blank at an end, which the library would cut off")
        self.assertIn("--host is empty", self.wrong("--dbname", "shop", "--user", "clerk", "--host"))

    def test_the_longest_values(self):
        for option, longest in [("--host", 62), ("--dbname", 62), ("--user", 62), ("--port", 14),
                                ("--sslrootcert", 510)]:
            self.assertEqual(self.wrong(*self.with_value(option, "1" * (longest + 1))),
                             f"{option} has {longest + 1} bytes; the library keeps {longest}")
        self.new("--host", "h" * 62, "--dbname", "d" * 62, "--user", "u" * 62, "--port", "1111,2222,3333")
        self.assertEqual(self.settings()["db.host"], "h" * 62)

    def test_the_whole_path_of_a_certificate_must_fit(self):
        deep = self.directory
        while len(deep) < 510 - 20:
            deep += "/" + "d" * min(200, 510 - 20 - len(deep))
            os.mkdir(deep)
        name = "r" * 40
        with open(f"{deep}/{name}", "wb"):
            pass
        line = self.fail_with(2, "new", "home", "--password-file", self.path("password"), "--engine", "postgres",
                              *self.NEEDED, "--sslrootcert", name, cwd=deep)
        self.assertEqual(line, f"--sslrootcert has {len(deep) + 41} bytes; the library keeps 510")

    def test_ports_that_are_none(self):
        for value in ["x", "0", "65536", "1,", ",1", "1,,2", "-1", "5432 ,1", "99999999"]:
            self.assertEqual(self.wrong(*self.with_value("--port", value)),
                             "--port takes a number from 1 to 65535, or several with commas between them, not "
                             f"'{value}'")

    def test_modes_that_are_none(self):
        self.assertEqual(self.wrong(*self.NEEDED, "--sslmode", "maybe"),
                         "there is no --sslmode 'maybe': it is DISABLED, PREFERRED, REQUIRED, VERIFY_CA or VERIFY_FULL")

    def test_a_certificate_to_be_verified_needs_its_authority(self):
        self.assertEqual(self.wrong(*self.NEEDED, "--sslmode", "Verify_CA"),
                         "--sslmode VERIFY_CA needs --sslrootcert FILE, the authority that the server's certificate is "
                         "checked against")
        self.assertEqual(self.wrong(*self.NEEDED, "--sslrootcert", "none"),
                         f"cannot read the file {self.path('none')} of --sslrootcert: No such file or directory")


class Terminal(DirectoryTest):
    """The password typed by a person."""

    WORDS = []
    PROMPT = "Database password (any, for the embedded engine): "

    def setUp(self):
        super().setUp()
        self.person, self.terminal = pty.openpty()
        self.addCleanup(os.close, self.person)
        self.addCleanup(os.close, self.terminal)
        self.child = subprocess.Popen([ORMEL, "new", "home", *self.WORDS], cwd=self.directory, stdin=self.terminal,
                                      stdout=subprocess.PIPE, stderr=self.terminal)
        self.addCleanup(self.child.stdout.close)
        self.seen = ""
        self.wait_for(self.PROMPT)
        while self.echoes():
            pass

    def wait_for(self, text):
        while text not in self.seen:
            self.seen += os.read(self.person, 1000).decode()

    def echoes(self):
        return bool(termios.tcgetattr(self.terminal)[3] & termios.ECHO)

    def test_is_not_shown(self):
        os.write(self.person, b"typed\n")
        self.assertEqual(self.child.wait(60), 0)
        self.wait_for("\n")
        self.assertEqual(self.seen, self.PROMPT + "\r\n")
        self.assertEqual(self.read("home/conf/db.password"), "typed\n")
        self.assertTrue(self.echoes())

    def test_none_is_refused(self):
        os.write(self.person, b"\n")
        self.assertEqual(self.child.wait(60), 1)
        self.wait_for("the terminal holds no password")
        self.assertFalse(os.path.exists(self.path("home")))

    def test_an_interrupt_gives_the_terminal_its_echo_back(self):
        self.child.send_signal(signal.SIGINT)
        self.assertEqual(self.child.wait(60), 1)
        self.wait_for("no password was given")
        self.assertTrue(self.echoes())
        self.assertFalse(os.path.exists(self.path("home")))


class ServerTerminal(Terminal):
    WORDS = ["--engine", "postgres", *Server.NEEDED]
    PROMPT = "Database password: "


if __name__ == "__main__":
    unittest.main()
