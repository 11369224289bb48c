"""ormel new."""

import os
import pty
import signal
import stat
import subprocess
import termios
import unittest

from harness import ORMEL, DirectoryTest

PROMPT = "Database password (any, for the embedded engine): "
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


class Terminal(DirectoryTest):
    """The password typed by a person."""

    def setUp(self):
        super().setUp()
        self.person, self.terminal = pty.openpty()
        self.addCleanup(os.close, self.person)
        self.addCleanup(os.close, self.terminal)
        self.child = subprocess.Popen([ORMEL, "new", "home"], cwd=self.directory, stdin=self.terminal,
                                      stdout=subprocess.PIPE, stderr=self.terminal)
        self.addCleanup(self.child.stdout.close)
        self.seen = ""
        self.wait_for(PROMPT)
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
        self.assertEqual(self.seen, PROMPT + "\r\n")
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


if __name__ == "__main__":
    unittest.main()
