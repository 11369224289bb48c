#!/usr/bin/env python3
"""Runs a program in the bin/ of a fresh home with an embedded database, and removes the home afterwards."""
import os
import pathlib
import subprocess
import sys
import tempfile

PASSWORD = "secret\n"


def make_home(home):
    for folder in ("bin", "conf", "data", "var/log"):
        (home / folder).mkdir(parents=True)
    (home / "conf/db.conf").write_text("db.driver=sqlite\ndb.dbname=../data/ormel.db\ndb.user=tester\n")
    password = home / "conf/db.password"
    password.touch(mode=0o600)
    password.write_text(PASSWORD)


def main():
    if len(sys.argv) < 2:
        sys.exit("usage: run_in_home.py PROGRAM [ARGUMENT...]")
    environment = {name: value for name, value in os.environ.items() if name != "CREDENTIALS_DIRECTORY"}
    with tempfile.TemporaryDirectory(prefix="ormel-home-") as directory:
        home = pathlib.Path(directory)
        make_home(home)
        sys.exit(subprocess.run(sys.argv[1:], cwd=home / "bin", env=environment).returncode)


if __name__ == "__main__":
    main()
