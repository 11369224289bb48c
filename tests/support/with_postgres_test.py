#!/usr/bin/env python3
"""Checks that the server of with_postgres.py can be restarted, and does not outlive it."""
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import time

SCRIPT = pathlib.Path(__file__).with_name("with_postgres.py")
TELL = "import os, sys, time; print(os.environ['ORMEL_POSTGRES_CONTROL'], flush=True); sys.stdin.read()"


def server_process(control):
    return int((pathlib.Path(control).parent / "data/postmaster.pid").read_text().split()[0])


def restart(control, name):
    before = server_process(control)
    with socket.socket(socket.AF_UNIX) as asker:
        asker.connect(control)
        asker.send(name.encode())
        assert asker.recv(1) == b"", "the control socket says nothing"
    assert server_process(control) != before, f"{name} does not restart the server"


def wait_until(condition, what):
    deadline = time.monotonic() + 60
    while not condition():
        if time.monotonic() > deadline:
            sys.exit(f"with_postgres_test.py: {what}")
        time.sleep(0.05)


def is_gone(process):
    return not pathlib.Path(f"/proc/{process}").exists()


def ends_with(name):
    """Ends the script by a signal, and returns its directory."""
    with subprocess.Popen([SCRIPT, sys.executable, "-c", TELL], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          encoding="utf-8") as script:
        control = script.stdout.readline().strip()
        for way in ("SIGQUIT", "SIGKILL"):
            restart(control, way)
        server = server_process(control)
        script.send_signal(signal.Signals[name])
        wait_until(lambda: is_gone(server), f"the server outlives {name}")
    return pathlib.Path(control).parent


def main():
    assert not ends_with("SIGTERM").exists(), "the directory outlives SIGTERM"
    shutil.rmtree(ends_with("SIGKILL"))  # nobody else was there to remove it


if __name__ == "__main__":
    main()
