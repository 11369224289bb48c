#!/usr/bin/env python3
"""Kills what keeps rows, at moments of chance, and looks for every row that was reported as kept.

Runs in the bin/ of a home (run_in_home.py). The writer is killed on every engine; beside a server (with_postgres.py)
that is stopped at once as well, and the writer goes on when it is back. ORMEL_NIGHTLY asks for more kills. ORMEL_SEED
repeats how many reports are awaited before each and how long after them it comes; what the writer is at by then is up
to the machine.
"""
import os
import queue
import random
import socket
import subprocess
import sys
import threading
import time

KILLS = 200 if os.environ.get("ORMEL_NIGHTLY") else 20
TABLE = ("CREATE TABLE kept (id BIGINT PRIMARY KEY, run INTEGER, lot BIGINT, size INTEGER, name VARCHAR(40), "
         "body TEXT)")


def expect(condition, *what):
    if not condition:
        sys.exit("durability.py: " + " ".join(map(str, what)))


def seed_of_run():
    """As of the other tests (tests/support/seed.h)."""
    seed = random.SystemRandom().randrange(1 << 32) if os.environ.get("ORMEL_NIGHTLY") else 20260715
    seed = int(os.environ.get("ORMEL_SEED", seed))
    print(f"repeat with ORMEL_SEED={seed}", flush=True)
    return seed


class Writer:
    """The program that keeps rows, and what it has reported."""

    def __init__(self, keeper, run):
        self.process = subprocess.Popen([keeper, "write", str(run)], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        encoding="utf-8")
        self.reports = queue.SimpleQueue()
        self.reader = threading.Thread(target=self.read, daemon=True)
        self.reader.start()
        self.kept = []
        self.stop = None  # the server's last one, on the clock of reports: when it began, and when the server was back
        self.refusals = 0

    def read(self):
        for line in self.process.stdout:
            self.reports.put(line)
        self.reports.put("")

    def take(self, line):
        """Notes a report; whether it told of rows that are kept. One that was cut off tells of nothing."""
        words = line.split()
        if not line.endswith("\n") or words[0] != "kept":
            return False
        self.kept += range(int(words[1]), int(words[1]) + int(words[2]))
        return True

    def expect_excuse(self, line):
        """A refused call is excused where a stop of the server fell into its time."""
        begun, ended = map(int, line.split()[2:4])
        expect(self.stop and begun <= self.stop[1] and ended >= self.stop[0], "refused without a cause:", line)

    def report(self):
        """The next report. The one after a refusal tells of kept rows: a server that is back refuses nothing."""
        line = self.reports.get()
        expect(line, "the writer ended by itself")
        if not self.take(line):
            self.expect_excuse(line)
            self.refusals += 1
            print("", file=self.process.stdin, flush=True)
            line = self.reports.get()
            expect(self.take(line), "refused by a server that is back:", line)

    def work(self, chance):
        """Lets it work until a moment of chance: what it has reported, and a while more."""
        for _ in range(chance.randrange(2, 30)):
            self.report()
        while not self.reports.empty():
            self.report()
        time.sleep(chance.uniform(0, 0.03))

    def kill(self):
        self.process.kill()
        self.reader.join()
        while not self.reports.empty():
            self.take(self.reports.get())
        self.process.stdin.close()
        self.process.stdout.close()
        self.process.wait()


def body(number):
    length = number % 3000
    return (str(number) * (length // len(str(number)) + 1))[:length]


def rows_of(keeper, run):
    listed = subprocess.run([keeper, "list", str(run)], stdout=subprocess.PIPE, encoding="utf-8", check=False)
    expect(listed.returncode == 0, "the rows cannot be read")
    return [line.split("\t") for line in listed.stdout.splitlines()]


def check(keeper, run, kept):
    """The rows that are there: every reported one, each as it was written, of every lot all. How many were checked."""
    lots, found = {}, set()
    for number, lot, size, name, text in rows_of(keeper, run):
        expect(name == "row " + number and text == body(int(number)), "row", number, "is another:", name, text)
        lots.setdefault((lot, int(size)), []).append(number)
        found.add(int(number))
    for (lot, size), numbers in lots.items():
        expect(len(numbers) == size, "of the lot", lot, "with", size, "rows there are", len(numbers))
    expect(found.issuperset(kept), "reported and not there:", sorted(set(kept) - found)[:10])
    return len(found)


def kill_writers(keeper, chance):
    rows = 0
    for run in range(1, KILLS + 1):
        writer = Writer(keeper, run)
        writer.work(chance)
        writer.kill()
        rows += check(keeper, run, writer.kept)
    print(f"writers killed: {KILLS}, rows checked: {rows}", flush=True)


def restart_server():
    """An immediate stop; returns when the server takes connections again."""
    with socket.socket(socket.AF_UNIX) as control:
        control.connect(os.environ["ORMEL_POSTGRES_CONTROL"])
        control.sendall(b"SIGQUIT")
        expect(control.recv(1) == b"", "the server's keeper said something")


def wait_for_disk():
    """The tests' server does not wait for its disk, but the promise is about one that does. No transaction may do it."""
    environment = dict(os.environ, PGPASSWORD=os.environ["ORMEL_POSTGRES_PASSWORD"])
    subprocess.run(["psql", "-q", "-h", "127.0.0.1", "-p", os.environ["ORMEL_POSTGRES_PORT"], "-U", "postgres",
                    "-c", "ALTER SYSTEM SET fsync = on"], env=environment, check=True)
    restart_server()


def kill_servers(keeper, chance):
    """One writer lives through all of them."""
    run = KILLS + 1
    writer = Writer(keeper, run)
    for _ in range(KILLS):
        writer.work(chance)
        begun = time.monotonic_ns()
        restart_server()
        writer.stop = begun, time.monotonic_ns()
    writer.work(chance)
    rows = check(keeper, run, writer.kept)
    writer.kill()
    print(f"servers killed: {KILLS}, rows checked: {rows}, calls refused meanwhile: {writer.refusals}", flush=True)


def main():
    keeper, ormel = sys.argv[1:]
    chance = random.Random(seed_of_run())
    server = "ORMEL_POSTGRES_PORT" in os.environ
    subprocess.run([ormel, "--home", "..", "sql", TABLE], check=True)
    if server:
        wait_for_disk()
    kill_writers(keeper, chance)
    if server:
        kill_servers(keeper, chance)


if __name__ == "__main__":
    main()
