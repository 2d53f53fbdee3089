#!/usr/bin/env python3
"""Runs every command line that a document shows and compares the output shown with what comes.

A document shows commands in fenced blocks marked `console`: a line "$ command" and below it the output. An output
line "..." stands for any lines; a command without output below it only has to succeed. A line "[exit N]" after the
output is the exit code expected, 0 without one. The commands of one document run one after the other in one folder
that holds a copy of the samples, with "./run" being the program under test.

usage: documented_commands.py PROGRAM ROOT DOCUMENT...
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile


def blocks(text):
    return re.findall(r"^```console\n(.*?)^```", text, re.M | re.S)


def commands(block):
    """The commands of a block as (command, expected lines, expected exit code)."""
    result = []
    for line in block.splitlines():
        if line.startswith("$ "):
            result.append([line[2:], [], 0])
        elif result and result[-1][0].endswith("\\"):
            result[-1][0] = result[-1][0][:-1] + line.strip()
        elif result and re.fullmatch(r"\[exit \d+\]", line):
            result[-1][2] = int(line[6:-1])
        elif result:
            result[-1][1].append(line)
    for entry in result:
        while entry[1] and not entry[1][-1].strip():
            entry[1].pop()
    return result


def line_matches(expected, got):
    if expected.endswith("..."):
        return got.startswith(expected[:-3])
    return got.rstrip() == expected.rstrip()


def matches(expected, got):
    """Whether the lines that came are those expected, "..." standing for any."""
    if not expected:
        return not got
    if expected[0].strip() == "...":
        return any(matches(expected[1:], got[i:]) for i in range(len(got) + 1))
    return bool(got) and line_matches(expected[0], got[0]) and matches(expected[1:], got[1:])


def run_document(program, root, document):
    failures = count = 0
    with tempfile.TemporaryDirectory() as folder:
        work = pathlib.Path(folder, "work")
        home = pathlib.Path(folder, "home")
        work.mkdir()
        home.mkdir()
        shutil.copytree(root / "samples", work / "samples")
        (work / "run").write_text(f'#!/bin/sh\nexec "{program}" "$@"\n')
        (work / "run").chmod(0o755)
        environment = dict(os.environ, HOME=str(home), LC_ALL="C.UTF-8", TZ="Europe/Berlin", USER="anna",
                           LOGNAME="anna", QT_QPA_PLATFORM="offscreen")
        environment.pop("COLUMNS", None)
        for block in blocks(document.read_text(encoding="utf-8")):
            for command, expected, code in commands(block):
                count += 1
                done = subprocess.run(["bash", "-c", command], cwd=work, env=environment, stdin=subprocess.DEVNULL,
                                      stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60)
                output = done.stdout.decode("utf-8", "replace").splitlines()
                if done.returncode != code or (expected and not matches(expected, output)):
                    failures += 1
                    print(f"{document}: $ {command}\n  exit code {done.returncode}, expected {code}; it printed:")
                    print("\n".join("  " + line for line in output))
                    print("  where the document shows:")
                    print("\n".join("  " + line for line in expected))
    return count, failures


def main():
    program, root = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
    count = failures = 0
    for name in sys.argv[3:]:
        ran, failed = run_document(program, root, root / name)
        count += ran
        failures += failed
    print(f"{count} commands run, {failures} failed")
    return 1 if failures or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
