#!/usr/bin/env python3
"""Bookmarks of a Firefox profile, exported, in Chromium.

The command line exports the bookmarks of a profile, and a Chromium that starts for the first time imports the file,
as its preferences for the first start tell it. What it then keeps is compared with what the profile has: titles,
addresses, folders, order.

Chromium has no separators, encodes some characters of addresses (as Firefox does before it stores them), leaves empty
folders out, and makes one of those beside each other that have the same name. It shows a line break in a title, which
Firefox keeps, as a blank.

usage: chromium.py PROGRAM
"""
import contextlib
import json
import os
import pathlib
import signal
import sqlite3
import subprocess
import sys
import tempfile
import time

from firefox import HARD, expect, fail

FIRST_START = "/etc/chromium/master_preferences"
SECONDS = 40

# Folders as (title, [what is in them]), bookmarks as (title, address), None for a separator.
TREE = [
    ("menu", [
        ("Größen & Maße", [("Größe \"XL\"", "https://www.example.org/gr%C3%B6%C3%9Fe?a=1&b=2"),
                           ("Innen, außen", [("Tief", "https://www.example.org/tief")])]),
        None,
        *[entry for entry in HARD if entry is None or len(entry) == 2],
        ("Gleich", [("eins", "https://same.example.org/"), ("zwei", "https://same.example.org/")]),
        ("Gleich", [("drei", "https://same.example.org/")]),
        ("<&>\n\"Ordner\", 🦊", [("fünf", "https://www.example.org/5")]),
        ("Leer", []),
    ]),
    ("toolbar", [("👨‍👩‍👧 e\u0301 \u00e9", "https://www.example.org/emoji")]),
    ("unfiled", [(f"Nummer {n} – {n % 7} €", f"https://www.example.org/{n}") for n in range(500)]),
]


def write_profile(home):
    """A home whose only Firefox profile has the bookmarks above."""
    place = home / ".mozilla" / "firefox"
    (place / "p").mkdir(parents=True)
    (place / "profiles.ini").write_text("[Profile0]\nName=p\nIsRelative=1\nPath=p\nDefault=1\n\n[General]\nVersion=2\n",
                                        encoding="utf-8")
    with contextlib.closing(sqlite3.connect(place / "p" / "places.sqlite")) as database:
        database.executescript(
            "CREATE TABLE moz_places (id INTEGER PRIMARY KEY, url LONGVARCHAR, title LONGVARCHAR);"
            "CREATE TABLE moz_bookmarks (id INTEGER PRIMARY KEY, type INTEGER, fk INTEGER, parent INTEGER,"
            " position INTEGER, title LONGVARCHAR, dateAdded INTEGER, lastModified INTEGER, guid TEXT);")

        def add(kind, fk, parent, position, title):
            return database.execute(
                "INSERT INTO moz_bookmarks (type, fk, parent, position, title, dateAdded, lastModified)"
                " VALUES (?, ?, ?, ?, ?, 1262304000000000, 1262304000000000)",
                (kind, fk, parent, position, title)).lastrowid

        def fill(parent, entries):
            for position, entry in enumerate(entries):
                if entry is None:
                    add(3, None, parent, position, None)
                elif isinstance(entry[1], list):
                    fill(add(2, None, parent, position, entry[0]), entry[1])
                else:
                    fk = database.execute("INSERT INTO moz_places (url) VALUES (?)", (entry[1],)).lastrowid
                    add(1, fk, parent, position, entry[0])

        fill(add(2, None, 0, 0, ""), TREE)
        database.commit()


def export(program, home, file):
    environment = {**os.environ, "HOME": str(home), "TZ": "Europe/Berlin", "LC_ALL": "C.UTF-8"}
    environment.pop("XDG_CONFIG_HOME", None)
    done = subprocess.run([program, "bookmarks", "firefox://", "--output", str(file)], env=environment,
                          stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120)
    if done.returncode != 0:
        fail(f"the export ended with {done.returncode}: {done.stderr.decode()}")


def import_into_chromium(folder, file):
    """Starts Chromium with an empty folder for its data, and gives what it has under its bookmarks bar."""
    preferences = folder / "first-start.json"
    preferences.write_text(json.dumps({"distribution": {"import_bookmarks_from_file": str(file),
                                                        "skip_first_run_ui": True}}), encoding="utf-8")
    # The system's own preferences for a first start stay as they are: another file lies over them, for this one only.
    command = ["mount --bind \"$1\" \"$2\" && exec xvfb-run -a chromium --no-sandbox --disable-gpu"
               " --no-default-browser-check --user-data-dir=\"$3\" about:blank"]
    bookmarks = folder / "data" / "Default" / "Bookmarks"
    with open(folder / "log", "wb") as log:
        process = subprocess.Popen(
            ["unshare", "-rm", "sh", "-c", *command, "sh", str(preferences), FIRST_START, str(folder / "data")],
            env={**os.environ, "HOME": str(folder)}, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
            start_new_session=True)
        try:
            for _ in range(SECONDS * 5):
                with contextlib.suppress(OSError, ValueError):
                    found = json.loads(bookmarks.read_text(encoding="utf-8"))["roots"]["bookmark_bar"]["children"]
                    if found:
                        return found
                if process.poll() is not None:
                    break
                time.sleep(0.2)
        finally:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)
            process.wait()
    return fail(f"Chromium imported nothing: {(folder / 'log').read_text(errors='replace')[-2000:]}")


def in_chromium(entries):
    """How Chromium keeps a tree."""
    tree = []
    for title, content in filter(None, entries):
        title = title.replace("\n", " ")
        if not isinstance(content, list):
            tree.append((title, content.replace("<", "%3C").replace(">", "%3E")))
            continue
        if not content:
            continue
        same = next((entry[1] for entry in tree if entry[0] == title and isinstance(entry[1], list)), None)
        if same is None:
            same = []
            tree.append((title, same))
        same.extend(in_chromium(content))
    return tree


def kept(nodes):
    """The tree of a file of Chromium's, as it is written above."""
    for node in nodes:
        yield (node["name"], list(kept(node["children"])) if node["type"] == "folder" else node["url"])


def main():
    program = str(pathlib.Path(sys.argv[1]).resolve())
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as name:
        folder = pathlib.Path(name)
        write_profile(folder / "home")
        exported = folder / "exported.html"
        export(program, folder / "home", exported)
        found = list(kept(import_into_chromium(folder, exported)))
        expected = in_chromium(TREE)
        for (name, entries), (expected_name, expected_entries) in zip(found, expected):
            expect("folder", name, expected_name)
            for entry, expected_entry in zip(entries, expected_entries):
                expect(f"in {name}", entry, expected_entry)
        expect("bookmarks", found, expected)
        print("Chromium has the bookmarks as Firefox had them: titles, addresses, folders, order")


if __name__ == "__main__":
    main()
