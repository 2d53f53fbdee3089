"""Installs the library, builds the example host with it outside the tree, and runs that on a mailbox.

installed_test.py BUILD_FOLDER SOURCE_FOLDER COMPILER
"""
import os
import subprocess
import sys
import tempfile
from pathlib import Path

from small_profile import FOLDER, SHOWN, make_profile

BUILD, SOURCES, COMPILER = sys.argv[1], Path(sys.argv[2]), sys.argv[3]


def run(*command, **options):
    done = subprocess.run(list(map(str, command)), capture_output=True, text=True, **options)
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))}\n{done.stdout}{done.stderr}")
    return done.stdout


def check_headers(prefix):
    """What a header marks as public is of no use where the header itself isn't installed."""
    installed = [str(header) for header in prefix.rglob("*.h")]
    for header in (SOURCES / "src").rglob("*.h"):
        name = str(header.relative_to(SOURCES / "src"))
        is_public = "VORLENT_PUBLIC " in header.read_text(encoding="utf-8")
        if is_public and not any(i.endswith("/" + name) for i in installed):
            sys.exit(f"marked as public, but not installed: {name}")


def main():
    with tempfile.TemporaryDirectory() as folder:
        folder = Path(folder)
        prefix, home = folder / "usr", folder / "home"
        for component in ("library", "development"):
            run("cmake", "--install", BUILD, "--prefix", prefix, "--component", component)
        check_headers(prefix)
        by_cmake = folder / "build/read-mailbox"
        run("cmake", "-S", SOURCES / "examples/read-mailbox", "-B", by_cmake.parent, f"-DCMAKE_PREFIX_PATH={prefix}",
            f"-DCMAKE_CXX_COMPILER={COMPILER}", "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Werror")
        run("cmake", "--build", by_cmake.parent)
        by_package = folder / "read-mailbox"
        packages = next(prefix.rglob("vorlent-mozilla.pc")).parent
        flags = run("pkg-config", "--cflags", "--libs", "vorlent-mozilla",
                    env={**os.environ, "PKG_CONFIG_PATH": str(packages)})
        run(COMPILER, "-o", by_package, SOURCES / "examples/read-mailbox/Main.cpp", *flags.split())
        make_profile(home)
        for program in (by_cmake, by_package):
            listed = run(program, FOLDER,
                         env={**os.environ, "HOME": str(home), "LD_LIBRARY_PATH": str(packages.parent)})
            if listed != SHOWN:
                sys.exit(f"unexpected: {listed!r}")
        print(listed, end="")


main()
