#!/usr/bin/env python3
"""Runs a program in the bin/ of a fresh home, and removes the home afterwards.

The home's database is an embedded one, or on the server that with_postgres.py started.
"""
import os
import pathlib
import subprocess
import sys
import tempfile


def database():
    """The configuration and the password that lead to the database."""
    port = os.environ.get("ORMEL_POSTGRES_PORT")
    if port is None:
        return "db.driver=sqlite\ndb.dbname=../data/ormel.db\ndb.user=tester\n", "secret"
    return (f"db.driver=postgres\ndb.host=127.0.0.1\ndb.port={port}\ndb.dbname=postgres\ndb.user=postgres\n"
            "client.connect_timeout_ms=20000\n",  # the machine may have other things to do
            os.environ["ORMEL_POSTGRES_PASSWORD"])


def make_home(home):
    settings, secret = database()
    for folder in ("bin", "conf", "data", "var/log"):
        (home / folder).mkdir(parents=True)
    (home / "conf/db.conf").write_text(settings)
    password = home / "conf/db.password"
    password.touch(mode=0o600)
    password.write_text(secret + "\n")


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
