#!/usr/bin/env python3
"""Profiles, folders, databases and bookmarks as today's applications keep them, through the command line.

usage: todays_disk_test.py PROGRAM ROOT [unittest arguments]
"""
import contextlib
import datetime
import html.parser
import json
import sqlite3
import subprocess
import sys
import textwrap
import unittest

from program_case import ProgramCase, tree_bytes

PROFILE = "AppData/Mozilla/FireFox/Profiles/k7f2m4ax.default"

# A browser in the middle of its work: what was committed lies in the log only, and nobody else may read.
BROWSER = """
import sqlite3, sys
places = sqlite3.connect(sys.argv[1], isolation_level=None)
for statement in ("PRAGMA locking_mode=EXCLUSIVE", "PRAGMA journal_mode=WAL",
                  "UPDATE moz_bookmarks SET title='just renamed' WHERE title='Example'"):
    places.execute(statement).fetchall()
print("ready", flush=True)
sys.stdin.read()
"""


class BookmarksParser(html.parser.HTMLParser):
    """The bookmarks of a file as a browser takes them: ("folder", title, entries), ("link", title, url), ("line",)."""

    def __init__(self):
        super().__init__()
        self.lists = [[]]
        self.text = self.url = None

    def handle_starttag(self, tag, attrs):
        if tag == "dl":
            heads_list = self.lists[-1] and self.lists[-1][-1][0] == "folder" and self.lists[-1][-1][2] is None
            if heads_list:
                self.lists[-1][-1][2] = []
            # A list without a heading belongs to the folder around it.
            self.lists.append(self.lists[-1][-1][2] if heads_list else self.lists[-1])
        elif tag in ("a", "h3"):
            self.text, self.url = "", dict(attrs).get("href")
        elif tag == "hr":
            self.lists[-1].append(["line"])

    def handle_endtag(self, tag):
        if tag == "dl":
            self.lists.pop()
        elif tag == "a":
            self.lists[-1].append(["link", self.text, self.url])
        elif tag == "h3":
            self.lists[-1].append(["folder", self.text, None])
        if tag in ("a", "h3"):
            self.text = None

    def handle_data(self, data):
        if self.text is not None:
            self.text += data


def bookmarks_in(text):
    parser = BookmarksParser()
    # What a browser does first, and this parser leaves to others.
    parser.feed(text.replace("\r\n", "\n").replace("\r", "\n"))
    parser.close()
    return parser.lists[0]


HARD_TITLES = [
    "plain", "", None, "a < b & c > d", "&lt;b&gt; &amp; &#10;", "\"quoted\" 'too'", "two\nlines", "\r\nthree\nlines\r",
    "<A HREF=\"http://forged/\">x</A>", "</DL><p>", "<!-- ", "👩‍👩‍👧‍👦 🦊 Ω 漢字 العربية", "e\u0301 \u00e9", "http://1/",
    "a, b | c \\ d", " blanks around ", "\u00a0\u200b", "x" * 3000,
]


class TodaysDiskTest(ProgramCase):
    def places(self):
        return self.samples / PROFILE / "places.sqlite"

    def rebuild_bookmarks(self, entries):
        """Replaces all bookmarks by these, in the form of bookmarks_in."""
        with contextlib.closing(sqlite3.connect(self.places())) as places, places:
            places.execute("DELETE FROM moz_bookmarks WHERE parent!=0")
            root = places.execute("SELECT id FROM moz_bookmarks WHERE parent=0").fetchone()[0]

            def add(parent, below):
                for position, (kind, title, rest) in enumerate(below):
                    place = None
                    if kind == "link":
                        place = places.execute("INSERT INTO moz_places(url) VALUES(?)", (rest,)).lastrowid
                    row = places.execute(
                        "INSERT INTO moz_bookmarks(type, fk, parent, position, title, dateAdded, lastModified) "
                        "VALUES(?,?,?,?,?,1262304000000000,1273415405000000)",
                        (("link", "folder", "line").index(kind) + 1, place, parent, position, title)).lastrowid
                    if kind == "folder":
                        add(row, rest)
            add(root, entries)

    def test_exported_bookmarks_are_read_again_as_they_were(self):
        hard = [("link", title, f"http://{i}/?a=<b>&c=\"d\"&amp;#é") for i, title in enumerate(HARD_TITLES)]
        entries = [("folder", "menu", [
            *hard, ("line", None, None), ("folder", "Twice", [("link", "in the first", "http://first/")]),
            ("line", None, None), ("folder", "Twice", [("link", "in the second", "http://second/")]),
            ("folder", "", [("link", "in the unnamed", "http://unnamed/")]),
            ("folder", "<&>\n\"folder\", of 👩‍👩‍👧‍👦", [("folder", "empty", [])]), ("line", None, None)]),
            ("folder", "toolbar", [("link", "last", "http://last/")])]
        self.rebuild_bookmarks(entries)

        def expected(below):
            for kind, title, rest in below:
                yield ["line"] if kind == "line" else \
                    [kind, title or "", list(expected(rest)) if kind == "folder" else rest]
        copy = self.work / "copy.html"
        code, _, err = self.run_program("bookmarks", "firefox://default", "--output", str(copy))
        self.assertEqual(code, 0, err)
        self.assertEqual(bookmarks_in(copy.read_bytes().decode("utf-8")), list(expected(entries)))
        # Some browsers read line by line: each bookmark, folder and separator has one of its own.
        lines = copy.read_bytes().split(b"\r\n")
        self.assertEqual(sum(b"<DT><A " in line and line.endswith(b"</A>") for line in lines), len(hard) + 4)
        self.assertEqual(sum(b"<DT><H3" in line and line.endswith(b"</H3>") for line in lines), 7)
        self.assertFalse([line for line in lines if b"\n" in line])
        self.assertIn(b">two\rlines</A>", copy.read_bytes())

    def test_bookmarks_that_can_not_be_read_are_named_and_all_others_exported(self):
        self.rebuild_bookmarks([("folder", "menu", [
            ("link", "first", "http://1/"), ("link", "broken", "http://2/"),
            ("folder", "inside", [("link", "also broken", "http://3/")]), ("link", "last", "http://4/")])])
        with contextlib.closing(sqlite3.connect(self.places())) as places, places:
            places.execute("UPDATE moz_bookmarks SET type=32768 WHERE title LIKE '%broken'")
            rows = [row[0] for row in places.execute("SELECT id FROM moz_bookmarks WHERE type=32768 ORDER BY id")]
        file = self.samples / PROFILE / "bookmarks.html"
        file.write_bytes(b"earlier")
        copy = self.work / "copy.html"
        code, out, err = self.run_program("--rules", "windows", "bookmarks", "firefox://default", "--output", str(copy))
        self.assertEqual((code, out, file.read_bytes()), (3, "", b"earlier"), err)
        self.assertFalse(copy.exists())

        code, out, err = self.run_program("bookmarks", "firefox://default", "--output", str(copy))
        self.assertEqual((code, out), (1, f"{copy}\n"), err)
        for row, title in zip(rows, ("broken", "also broken")):
            self.assertRegex(err, f"{self.places()}: [^\n]*{row} '{title}': ")
        self.assertIn("left out: 2;", err)
        self.assertEqual(bookmarks_in(copy.read_bytes().decode("utf-8")), [["folder", "menu", [
            ["link", "first", "http://1/"], ["folder", "inside", []], ["link", "last", "http://4/"]]]])
        self.assertEqual(file.read_bytes(), copy.read_bytes())

    def test_nothing_is_escaped_by_the_other_rules(self):
        self.rebuild_bookmarks([("folder", "menu", [("link", "a < b & c", "http://1/?a&b")])])
        copy = self.work / "copy.html"
        self.assertEqual(self.run_program("--rules", "windows", "bookmarks", "firefox://default", "--output",
                                          str(copy))[0], 0)
        self.assertIn(">a < b & c</A>", copy.read_text(encoding="utf-8"))

    def test_a_database_in_use_is_read_with_a_line_that_tells_as_of_when(self):
        with subprocess.Popen([sys.executable, "-c", BROWSER, str(self.places())], stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE) as browser:
            self.assertEqual(browser.stdout.readline(), b"ready\n")
            before = tree_bytes(self.samples)
            start = datetime.datetime.now()
            code, out, err = self.run_program("read", "firefox://default", "--json")
            end = datetime.datetime.now()
            self.assertEqual(code, 0)
            self.assertIn("just renamed", [json.loads(line)["Text"] for line in out.splitlines()])
            told = err.strip().split(f"{self.places()}: in use; read as of ")
            self.assertEqual(len(told), 2, err)
            zone = self.local_offset()
            moment = datetime.datetime.strptime(told[1], "%d.%m.%Y %H:%M:%S") - zone
            self.assertLessEqual(start.replace(microsecond=0), moment)
            self.assertLessEqual(moment, end)

            code, _, err = self.run_program("bookmarks", "firefox://default", "--output", str(self.work / "copy.html"))
            self.assertEqual(code, 0)
            self.assertIn("in use; read as of", err)
            self.assertIn(">just renamed</A>", (self.work / "copy.html").read_text(encoding="utf-8"))
            (self.samples / PROFILE / "bookmarks.html").unlink()

            code, out, err = self.run_program("--rules", "windows", "read", "firefox://default")
            self.assertEqual((code, out), (3, ""))
            self.assertIn("database is locked", err)
            self.assertEqual(tree_bytes(self.samples), before)
            browser.stdin.close()

    def local_offset(self):
        """How far the program's clock is ahead of this one's."""
        out = subprocess.run(["date", "+%z"], env=self.environment(), stdout=subprocess.PIPE, check=True).stdout
        own = datetime.datetime.now().astimezone().utcoffset()
        sign = -1 if out.startswith(b"-") else 1
        return sign * datetime.timedelta(hours=int(out[1:3]), minutes=int(out[3:5])) - own

    def thunderbird(self, *names):
        return self.samples.joinpath("AppData/Thunderbird", *names)

    def test_profiles_are_the_sections_called_so_and_the_one_in_use_comes_first(self):
        self.thunderbird("profiles.ini").write_text(textwrap.dedent("""\
            [Profile1]
            Name=used
            IsRelative=1
            Path=Profiles/w2x8q7cd.buero

            [Install4F96D1932A9F858E]
            Default=Profiles/w2x8q7cd.buero
            Locked=1

            [Profile0]
            Name=marked
            IsRelative=1
            Path=Profiles/k3j9x2ab.default
            Default=1

            [General]
            StartWithLastProfile=1
            """))

        def listed(*rules):
            code, out, _ = self.run_program(*rules, "browse", "thunderbird://*", "--json")
            self.assertEqual(code, 0)
            return [json.loads(line)["Text"] for line in out.splitlines()]
        self.assertEqual(listed()[:-1], ["Profil 'used'", "Profil 'marked'"])
        self.assertEqual(listed("--rules", "windows")[:-1], ["Profil ''", "Profil 'marked'", "Profil ''"])

    def test_folders_are_called_as_thunderbird_shows_them(self):
        account = self.thunderbird("Profiles/k3j9x2ab.default/Mail/Local Folders")
        (account / "Inbox").rename(account / "9e7872c0")
        (account / "Inbox.msf").rename(account / "9e7872c0.msf")
        (account / "Inbox.sbd").rename(account / "9e7872c0.sbd")
        cache = {"/an/old/place/k3j9x2ab.default/Mail/Local Folders/9e7872c0.msf":
                 {"folderName": "Größe: 1/2 #3", "flags": 4}}
        self.thunderbird("Profiles/k3j9x2ab.default/folderCache.json").write_text(json.dumps(cache))
        code, out, _ = self.run_program("browse", "thunderbird://default/Local Folders/*", "--json")
        places = {item["Text"]: item["Data"]["Location"] for item in map(json.loads, out.splitlines())}
        self.assertEqual((code, places["Größe: 1/2 #3"]), (0, "thunderbird://default/Local Folders/9e7872c0/*"))
        code, out, _ = self.run_program("read", "thunderbird://default/Local Folders/9e7872c0/-", "--json")
        self.assertEqual(code, 0)
        self.assertEqual({json.loads(line)["Keywords"] for line in out.splitlines()},
                         {"Account=Local Folders,Größe: 1/2 #3"})

        cache = {str(account / "9e7872c0.msf"): {"folderName": "Größe: 3"}}
        self.thunderbird("Profiles/k3j9x2ab.default/folderCache.json").write_text(json.dumps(cache))
        code, out, err = self.run_program("read", "thunderbird://default/Local Folders/Größe: 3/-", "--json")
        self.assertEqual(code, 0, err)
        self.assertEqual({json.loads(line)["Keywords"] for line in out.splitlines()},
                         {"Account=Local Folders,Größe: 3"})

    def test_a_maildir_store_is_named_as_what_it_is(self):
        prefs = self.thunderbird("Profiles/k3j9x2ab.default/prefs.js")
        prefs.write_bytes(prefs.read_bytes() + b'user_pref("mail.server.server2.storeContractID", '
                          b'"@mozilla.org/msgstore/maildirstore;1");\r\n')
        code, out, _ = self.run_program("browse", "thunderbird://default/*")
        self.assertEqual(code, 0)
        self.assertIn("anna@example.org (Maildir)", out)
        code, out, err = self.run_program("read", "thunderbird://default/anna@example.org")
        self.assertEqual((code, out), (3, ""))
        self.assertIn("Account 'anna@example.org': maildir, each mail in a file of its own", err)


if __name__ == "__main__":
    unittest.main()
