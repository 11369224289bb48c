#!/usr/bin/env python3
"""Installs a build to a new prefix and uses it as a stranger would: from there, and again after the prefix has moved.

What is installed runs with no environment variable at all.
"""
import argparse
import os
import pathlib
import re
import shlex
import subprocess
import tempfile

HERE = pathlib.Path(__file__).parent
ENGINES = ("postgres.so", "sqlite.so")
LIBRARIES = ("libormeldb.so", "libqdclient.so", "libopbbase.so", "liblog.so", "libdecrypt.so")


def run(command, **options):
    """Runs a command; its output is shown, and the test ends, where it fails."""
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True, **options)
    if done.returncode != 0:
        raise SystemExit(f"{' '.join(map(str, command))}: exit status {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout


def expect_equal(what, found, expected):
    if found != expected:
        raise SystemExit(f"{what}\n  found and not expected: {sorted(found - expected)}"
                         f"\n  expected and not found: {sorted(expected - found)}")


def expected_files(source, version):
    headers = {f"include/{path.relative_to(source / 'include')}" for path in (source / "include").rglob("*.h")}
    documents = {f"share/doc/ormeldb/{path.name}" for path in (source / "docs").iterdir()}
    engines = {f"lib/ormeldb/engines/{engine}" for engine in ENGINES}
    versions = {f"lib/libormeldb.so.{version}", f"lib/libormeldb.so.{version.split('.')[0]}"}
    package = {f"lib/cmake/ormeldb/ormeldbConfig{part}.cmake" for part in ("", "-CONFIGURATION", "Version")}
    return (headers | documents | engines | versions | package | {f"lib/{library}" for library in LIBRARIES}
            | {"bin/ormel", "include/ormeldb/qdc.h", "lib/pkgconfig/ormeldb.pc"})


def check_tree(prefix, expected):
    found = {re.sub(r"Config-\w+\.cmake$", "Config-CONFIGURATION.cmake", str(path.relative_to(prefix)))
             for path in prefix.rglob("*") if not path.is_dir()}
    expect_equal("the installed files", found, expected)


def dynamic_section(file):
    """The entries of a file's dynamic section, by tag."""
    entries = {}
    for tag, value in re.findall(r"\((NEEDED|SONAME|RUNPATH|RPATH)\)[^\[]*\[(.*)\]", run(["readelf", "-dW", file])):
        entries.setdefault(tag, set()).add(value)
    return entries


def check_links(prefix, version):
    """Sonames, where libraries are looked for, and that the library brings none of its neighbours in itself."""
    for library in LIBRARIES:
        entries = dynamic_section(prefix / "lib" / library)
        soname = f"{library}.{version.split('.')[0]}" if library == "libormeldb.so" else library
        expect_equal(f"the soname of {library}", entries["SONAME"], {soname})
        expect_equal(f"the run path of {library}", entries.get("RUNPATH"), {"$ORIGIN"})
    needed = dynamic_section(prefix / "lib/libormeldb.so")["NEEDED"]
    expect_equal("the libraries that libormeldb.so needs of ours", needed & set(LIBRARIES), set(LIBRARIES[1:]))
    expect_equal("the run path of ormel", dynamic_section(prefix / "bin/ormel").get("RUNPATH"), {"$ORIGIN/../lib"})


def build_with_pkg_config(prefix, work, flags):
    environment = os.environ | {"PKG_CONFIG_PATH": str(prefix / "lib/pkgconfig")}
    words = shlex.split(run(["pkg-config", "--cflags", "--libs", "ormeldb"], env=environment))
    program = work / "records"
    run(["gcc", "-std=c11", "-Wall", "-Wextra", "-Werror", *flags, HERE / "records.c", *words,
         f"-Wl,-rpath,{prefix / 'lib'}", "-o", program])
    return program


def build_with_cmake(prefix, work, flags):
    build = work / "cmake"
    run(["cmake", "-S", HERE / "cmake", "-B", build, "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={prefix}",
         "-DCMAKE_CXX_FLAGS=" + " ".join(flags)])
    run(["cmake", "--build", build])
    return build / "transaction"


def use(prefix, work, flags):
    """Builds both programs against the prefix and runs them in a home that the installed tool makes."""
    work.mkdir()
    (work / "password").write_text("secret\n")
    (work / "password").chmod(0o600)
    ormel, home = prefix / "bin/ormel", work / "home"
    run([ormel, "new", home, "--password-file", work / "password"], env={})
    run([ormel, "--home", home, "sql", "CREATE TABLE PERSON (ID INTEGER PRIMARY KEY, NAME VARCHAR(20))"], env={})
    for build in (build_with_pkg_config, build_with_cmake):
        run([build(prefix, work, flags)], cwd=home / "bin", env={})


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--source", type=pathlib.Path, required=True)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--version", required=True)
    parser.add_argument("--sanitize", default="", help="the sanitizers that the build has been made with")
    arguments = parser.parse_args()
    flags = [f"-fsanitize={arguments.sanitize}"] if arguments.sanitize else []
    with tempfile.TemporaryDirectory(prefix="ormel-consumer-") as directory:
        work = pathlib.Path(directory)
        prefix, elsewhere = work / "prefix", work / "moved/else where"
        run(["cmake", "--install", arguments.build, "--prefix", prefix])
        check_tree(prefix, expected_files(arguments.source, arguments.version))
        check_links(prefix, arguments.version)
        use(prefix, work / "first", flags)
        elsewhere.parent.mkdir()
        prefix.rename(elsewhere)
        use(elsewhere, work / "second", flags)
    print("installed, used, moved and used again")


if __name__ == "__main__":
    main()
