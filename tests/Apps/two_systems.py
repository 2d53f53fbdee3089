#!/usr/bin/env python3
"""The tests of the command line under the rules of Windows, run for two programs: each command must tell the same.

What a test expects by other rules is of no matter here; that both programs tell the same is.

usage: two_systems.py PROGRAM OTHER_PROGRAM ROOT LAUNCHER...

LAUNCHER starts the other program, which is one for Windows.
"""
import difflib
import os
import pathlib
import shlex
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).parent
SUITES = ("command_line_test", "import_faults_test", "language_test", "lightning_test", "shown_paths_test",
          "todays_disk_test", "unicode_test")
SECONDS = 1500  # for all suites of a program

# What differs, with the reason.
DIFFERENT = {
}


def start(suite, program, root, transcripts, launcher):
    environment = dict(os.environ, VORLENT_RULES="windows", VORLENT_TRANSCRIPTS=str(transcripts),
                       VORLENT_LAUNCHER=shlex.join(launcher))
    return subprocess.Popen([sys.executable, str(HERE / (suite + ".py")), program, root], env=environment,
                            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


def transcripts_of(program, root, folder, launcher):
    """What each test left, by its name."""
    folder.mkdir()
    for suite in SUITES:
        process = start(suite, program, root, folder, launcher)
        process.wait(timeout=SECONDS)
    return {path.name: path.read_text(encoding="utf-8", errors="surrogateescape") for path in folder.iterdir()}


def show_difference(name, mine, other):
    other_name = name + " on Windows"
    for line in difflib.unified_diff(mine.splitlines(), other.splitlines(), name, other_name, lineterm="", n=1):
        print(line.encode("utf-8", "backslashreplace").decode())


def main():
    program, other, root, *launcher = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        mine = transcripts_of(program, root, pathlib.Path(folder, "here"), [])
        others = transcripts_of(other, root, pathlib.Path(folder, "there"), launcher)
    names = sorted(mine.keys() | others.keys())
    different = [name for name in names if mine.get(name) != others.get(name)]
    for name in different:
        if name not in DIFFERENT:
            show_difference(name, mine.get(name, ""), others.get(name, ""))
    commands = sum(text.count("\n= ") for text in mine.values())
    print(f"{commands} commands of {len(names)} tests, of which {len(different)} differ:")
    for name in different:
        print(f"  {name}: {DIFFERENT.get(name, 'not known')}")
    for name in DIFFERENT.keys() - set(different):
        print(f"  {name}: no longer different")
    return 0 if set(different) == set(DIFFERENT) else 1


if __name__ == "__main__":
    sys.exit(main())
