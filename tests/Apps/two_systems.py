#!/usr/bin/env python3
"""The tests of the command line under the rules of Windows, run for two programs: each command must tell the same.

What a test expects by other rules is of no matter here; that both programs tell the same is.

usage: two_systems.py PROGRAM OTHER_PROGRAM ROOT LAUNCHER...

LAUNCHER starts the other program, which is one for Windows.
"""
import concurrent.futures
import difflib
import os
import pathlib
import shlex
import subprocess
import sys
import tempfile
import typing

HERE = pathlib.Path(__file__).parent
# The other files kill the program at random, or read profiles in a home as this system has it.
SUITES = (["command_line_test", "-k", "*.test_[!a-m]*"], ["command_line_test", "-k", "*.test_[a-m]*"],
          ["language_test"], ["lightning_test"], ["mailboxes_test", "Mailboxes"], ["shown_paths_test"],
          ["todays_disk_test"],
          ["import_faults_test", "ImportFaults.test_read_only_mailbox_is_not_moved_by_the_rules_of_old"])
SECONDS = 1200  # for a suite

# What differs, with the reason.
DIFFERENT = {
    "CommandLine.test_a_dry_run_of_an_import_tells_what_would_come_and_changes_nothing":
        "Wine makes files in the home, and the test ends at that",
    "CommandLine.test_a_path_that_can_not_be_is_told_with_its_reason":
        "Windows doesn't tell a name that is too long from one that isn't there",
    "CommandLine.test_no_name_of_an_attachment_ends_an_import": "CON is a device, of which no size is told",
    "CommandLine.test_stream_shows_true_names_as_far_as_they_can_stand": "CON is a device, of which no size is told",
    "LanguageTest.test_what_the_system_tells": "a file in a folder's place is a place that isn't there",
    "Lightning.test_a_file_that_may_not_be_written_is_read_and_not_said_to_be_in_use":
        "the other user whom the test makes has no Wine",
}
DIFFERENT_THROUGH_COM = DIFFERENT | {
    "CommandLine.test_all_profiles_are_read_without_a_complaint_about_drives":
        "the contract with hosts doesn't tell an account that is a drive from one that isn't there",
    "CommandLine.test_reading_changes_no_file_of_the_profile": "as above",
}


class Way(typing.NamedTuple):
    """How the tests are run: by which name it is told of, which program, what starts it, and its further options."""
    name: str
    program: str
    launcher: list = []
    options: list = []
    different: dict = DIFFERENT


def run_suite(suite, way, root, folder):
    environment = dict(os.environ, VORLENT_RULES="windows", VORLENT_TRANSCRIPTS=str(folder),
                       VORLENT_LAUNCHER=shlex.join(way.launcher), VORLENT_OPTIONS=shlex.join(way.options))
    name, *tests = suite
    subprocess.run([sys.executable, str(HERE / (name + ".py")), way.program, root, *tests], env=environment,
                   check=False, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                   timeout=SECONDS)


def transcripts(folder):
    """What each test left, by its name."""
    return {path.name: path.read_text(encoding="utf-8", errors="surrogateescape") for path in folder.iterdir()}


def show_difference(test, mine, other, way):
    for line in difflib.unified_diff(mine.splitlines(), other.splitlines(), test, f"{test} {way.name}", lineterm="",
                                     n=1):
        print(line.encode("utf-8", "backslashreplace").decode())


def compare(mine, others, way):
    """Whether both tell the same but for what is known to differ, after saying what differs."""
    names = sorted(mine.keys() | others.keys())
    different = [name for name in names if mine.get(name) != others.get(name)]
    for name in different:
        if name not in way.different:
            show_difference(name, mine.get(name, ""), others.get(name, ""), way)
    commands = sum(text.count("\n= ") for text in mine.values())
    print(f"{commands} commands of {len(names)} tests, of which {len(different)} differ {way.name}:")
    for name in different:
        print(f"  {name}: {way.different.get(name, 'not known')}")
    for name in way.different.keys() - set(different):
        print(f"  {name}: no longer different")
    return set(different) == set(way.different)


def main():
    program, other, root, *launcher = sys.argv[1:]
    here, *there = [Way("here", program), Way("on Windows", other, launcher),
                    Way("on Windows through COM", other, launcher, ["--com"], DIFFERENT_THROUGH_COM)]
    with tempfile.TemporaryDirectory() as place, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        folders = {way.name: pathlib.Path(place, way.name) for way in (here, *there)}
        runs = []
        for way in (*there, here):
            folders[way.name].mkdir()
            runs += [pool.submit(run_suite, suite, way, root, folders[way.name]) for suite in SUITES]
        for run in runs:
            run.result()
        mine = transcripts(folders[here.name])
        # Each is told of, whatever came of the one before.
        are_same = [compare(mine, transcripts(folders[way.name]), way) for way in there]
    return 0 if all(are_same) else 1


if __name__ == "__main__":
    sys.exit(main())
