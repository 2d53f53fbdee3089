#!/usr/bin/env python3
"""The connector between two profiles that Firefox itself has made.

Firefox starts on an empty home, imports a bookmarks file and gets two thousand more, with titles that are hard on a
file of markup. What it lists itself is what its database holds. The command line reads the profile and exports its
bookmarks, and a second Firefox on an empty home imports the export. The bookmarks of both are compared: titles, urls,
folders, separators, order, dates to the second. While the first Firefox runs, its database is read as of a moment that
is told.

usage: firefox.py PROGRAM
"""
import contextlib
import datetime
import json
import os
import pathlib
import sqlite3
import subprocess
import sys
import tempfile
import zoneinfo

from marionette import Application

ZONE = zoneinfo.ZoneInfo("Europe/Berlin")
IMPORTED = """<!DOCTYPE NETSCAPE-Bookmark-file-1>
<META HTTP-EQUIV="Content-Type" CONTENT="text/html; charset=UTF-8">
<TITLE>Bookmarks</TITLE>
<H1>Bookmarks Menu</H1>
<DL><p>
    <DT><A HREF="https://www.example.org/" ADD_DATE="1262304000" LAST_MODIFIED="1273415405">Example</A>
    <DT><H3 ADD_DATE="1262304001" LAST_MODIFIED="1262304002">Größen &amp; Maße</H3>
    <DL><p>
        <DT><A HREF="https://www.example.org/gr%C3%B6%C3%9Fe?a=1&b=2" ADD_DATE="1262304003">Größe &quot;XL&quot;</A>
        <DT><H3>Innen, außen</H3>
        <DL><p>
            <DT><A HREF="https://www.example.org/tief" ADD_DATE="1767225600" LAST_MODIFIED="1767225601">Tief</A>
            <DT><A HREF="https://www.example.org/tiefer" ADD_DATE="1782864000" LAST_MODIFIED="1782864001">5 €</A>
        </DL><p>
        <DT><A HREF="https://www.example.org/zuletzt" ADD_DATE="1262304004" LAST_MODIFIED="1262304005">Zuletzt</A>
    </DL><p>
    <HR>
    <DT><H3>Doppelt</H3>
    <DL><p>
        <DT><A HREF="https://www.example.org/first" ADD_DATE="1262304006" LAST_MODIFIED="1262304007">Erster</A>
    </DL><p>
    <DT><A HREF="https://www.example.org/emoji" ADD_DATE="1262304008" LAST_MODIFIED="1262304009">Fire 🦊 fox</A>
    <DT><H3 PERSONAL_TOOLBAR_FOLDER="true">Symbolleiste</H3>
    <DL><p>
        <DT><A HREF="https://www.example.org/toolbar" ADD_DATE="1262304010" LAST_MODIFIED="1262304011">Leiste</A>
        <DT><H3>Leerer Ordner</H3>
        <DL><p>
        </DL><p>
    </DL><p>
    <DT><H3 UNFILED_BOOKMARKS_FOLDER="true">Weitere</H3>
    <DL><p>
        <DT><A HREF="file:///C:/Daten/a.html" ADD_DATE="1262304012" LAST_MODIFIED="1262304013">it's | here\\</A>
    </DL><p>
</DL><p>
"""
TITLES = ["Example", "Größe \"XL\"", "Tief", "5 €", "Zuletzt", "Erster", "Fire 🦊 fox", "Leiste", "it's | here\\"]

# What no bookmarks file gave Firefox, put in by its own interface: title and url, a folder's title, or a separator.
HARD = [
    ("two\nlines", "https://hard.example.org/lines"),
    ("a < b & c > d \"e\" 'f'", "https://hard.example.org/?a=1&b=<2>"),
    ("&lt;b&gt; &amp; &#10;", "https://hard.example.org/references"),
    ("</A><HR></DL>", "https://hard.example.org/tags"),
    ("👩‍👩‍👧‍👦 Ω 漢字 العربية", "https://hard.example.org/scripts"),
    ("e\u0301 \u00e9", "https://hard.example.org/forms"),
    ("", "https://hard.example.org/empty"),
    ("https://hard.example.org/own", "https://hard.example.org/own"),
    None, ("Gleich",), ("Gleich",), (" ",), ("<&>\n\"Ordner\", 🦊",), None,
]

# Many more as people have them: the same address under several titles, empty titles, folders of equal names.
WORDS = ["Rezepte", "Größe", "漢字かな", "Привет", "مرحبا", "e\u0301te\u0301", "\u00e9t\u00e9", "👨‍👩‍👧 🇩🇪 👍🏽", "a\nb", ""]
MANY = [
    None if n % 97 == 0 else (WORDS[n % 8],) if n % 31 == 0
    else (WORDS[n % 10] and f"{WORDS[n % 10]} {n % 50}", f"https://many.example.org/{n % 400}?n={n % 3}#ö")
    for n in range(2000)
]
ADD = """
const { PlacesUtils } = ChromeUtils.importESModule("resource://gre/modules/PlacesUtils.sys.mjs");
const { TYPE_FOLDER, TYPE_SEPARATOR, TYPE_BOOKMARK } = PlacesUtils.bookmarks;
let inside = 0;
for (const entry of arguments[0]) {
  const parentGuid = PlacesUtils.bookmarks.menuGuid;
  if (!entry) {
    await PlacesUtils.bookmarks.insert({ parentGuid, type: TYPE_SEPARATOR });
  } else if (entry.length == 2) {
    await PlacesUtils.bookmarks.insert({ parentGuid, type: TYPE_BOOKMARK, title: entry[0], url: entry[1] });
  } else {
    const folder = await PlacesUtils.bookmarks.insert({ parentGuid, type: TYPE_FOLDER, title: entry[0] });
    await PlacesUtils.bookmarks.insert({ parentGuid: folder.guid, type: TYPE_BOOKMARK, title: "innen",
                                         url: "https://hard.example.org/inside" + ++inside });
  }
}
"""

# What Firefox itself lists: title and entries; title, address and date in seconds; null for a separator.
LIST = """
const { PlacesUtils } = ChromeUtils.importESModule("resource://gre/modules/PlacesUtils.sys.mjs");
const entryOf = node => {
  if (node.type == PlacesUtils.TYPE_X_MOZ_PLACE_SEPARATOR) return null;
  if (node.type == PlacesUtils.TYPE_X_MOZ_PLACE_CONTAINER)
    return [node.title ?? "", (node.children ?? []).map(entryOf)];
  return [node.title ?? "", node.uri, Math.floor((node.lastModified || node.dateAdded) / 1000000)];
};
const tree = await PlacesUtils.promiseBookmarksTree(PlacesUtils.bookmarks.rootGuid);
return tree.children.map(entryOf);
"""

# Replaces all bookmarks; what Firefox brings along would only be in the way.
IMPORT = """
const { BookmarkHTMLUtils } = ChromeUtils.importESModule("resource://gre/modules/BookmarkHTMLUtils.sys.mjs");
const { PlacesUtils } = ChromeUtils.importESModule("resource://gre/modules/PlacesUtils.sys.mjs");
await PlacesUtils.bookmarks.eraseEverything();
await BookmarkHTMLUtils.importFromFile(arguments[0], { replace: true });
return PathUtils.profileDir;
"""


def fail(text):
    print("FAILED:", text)
    sys.exit(1)


def expect(what, found, expected):
    if found == expected:
        return
    if isinstance(found, list) and isinstance(expected, list):
        for mine, other in zip(found, expected):
            if mine != other:
                found, expected = mine, other
                break
    fail(f"{what}:\n  found    {found!r}\n  expected {expected!r}")


class Home:
    """A user's empty home, the Firefox that lives there, and the command line run by that user."""

    def __init__(self, program, folder):
        self.program = program
        self.folder = folder
        self.folder.mkdir()
        self.profile = None

    @contextlib.contextmanager
    def firefox_with(self, bookmarks, further=()):
        """Firefox running, the file imported, further bookmarks in its menu."""
        application = Application(["firefox-esr"], self.folder, self.folder / "log")
        try:
            self.profile = pathlib.Path(application.run(IMPORT, str(bookmarks)))
            application.run(ADD, list(further))
            yield application
        finally:
            application.quit()

    def run(self, *arguments):
        environment = {**os.environ, "HOME": str(self.folder), "TZ": ZONE.key, "LC_ALL": "C.UTF-8"}
        environment.pop("XDG_CONFIG_HOME", None)
        done = subprocess.run([self.program, *arguments], env=environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120)
        return done.returncode, done.stdout.decode(), done.stderr.decode()

    def succeed(self, *arguments):
        code, out, err = self.run(*arguments)
        if code != 0:
            fail(f"{arguments} ended with {code}: {err}")
        return out

    def files(self):
        """What lies in the profile beside its database, with its bytes."""
        return {path.name: path.read_bytes() for path in self.profile.glob("places.sqlite*")}

    def places(self):
        """All that the database holds below the root: (title, entries), (title, url, date in seconds) or None."""
        with tempfile.TemporaryDirectory() as copy:
            for name, content in self.files().items():
                pathlib.Path(copy, name).write_bytes(content)
            with contextlib.closing(sqlite3.connect(pathlib.Path(copy, "places.sqlite"))) as database:
                rows = database.execute(
                    "SELECT b.id, b.type, b.title, b.parent, p.url, b.dateAdded, b.lastModified FROM moz_bookmarks b "
                    "LEFT JOIN moz_places p ON b.fk=p.id ORDER BY b.position").fetchall()

        def below(folder):
            for row, kind, title, parent, url, added, modified in rows:
                if parent != folder:
                    continue
                if kind == 2:
                    yield (title or "", list(below(row)))
                else:
                    yield (title or "", url, (modified or added) // 1000000) if kind == 1 else None

        return list(below(next(row for row, _, _, parent, *_ in rows if parent == 0)))


def as_tree(listed):
    """What an application has listed, in the form of Home.places."""
    return [entry and ((entry[0], as_tree(entry[1])) if isinstance(entry[1], list) else tuple(entry))
            for entry in listed]


def flat(tree, keywords=()):
    """The bookmarks of a tree as the connector tells them: each with its folders."""
    for entry in filter(None, tree):
        if isinstance(entry[1], list):
            yield from flat(entry[1], (*keywords, entry[0]))
        else:
            yield (entry[0] or entry[1], entry[1], entry[2], ",".join(keywords))


def in_code_page(text):
    """What a program that holds texts in the code page tells of one; any other tells it as it is."""
    return text.encode("cp1252", "replace").decode("cp1252")


def seconds(date):
    moment = datetime.datetime.strptime(date, "%d.%m.%Y %H:%M:%S").replace(tzinfo=ZONE)
    return int(moment.timestamp())


def check_reading(home, tree):
    before = home.files()
    items = [json.loads(line) for line in home.succeed("read", "firefox://", "--json").splitlines()]
    found = [(item["Text"], item["Data"]["Url"], seconds(item["Date"]), item["Keywords"]) for item in items]
    expected = list(flat(tree))
    if found != expected:
        expected = [(in_code_page(title), url, date, in_code_page(keywords)) for title, url, date, keywords in expected]
    expect("bookmarks as read", found, expected)
    expect("files of the profile after the reading", home.files(), before)
    menu = home.succeed("browse", "firefox://*")
    if "Profile '" not in menu:
        fail(f"no profile is listed: {menu}")


def main():
    program = str(pathlib.Path(sys.argv[1]).resolve())
    with tempfile.TemporaryDirectory() as folder:
        imported = pathlib.Path(folder, "imported.html")
        imported.write_text(IMPORTED, encoding="utf-8")
        exported = pathlib.Path(folder, "exported.html")

        first = Home(program, pathlib.Path(folder, "first"))
        with first.firefox_with(imported, HARD + MANY) as firefox:
            listed = as_tree(firefox.run(LIST))
            before = first.files()
            code, _, err = first.run("--rules", "windows", "read", "firefox://")
            if code != 3 or "database is locked" not in err:
                fail(f"a running Firefox by the other rules: ended with {code}: {err}")
            code, out, err = first.run("read", "firefox://", "--json")
            if code != 0 or "in use; read as of" not in err:
                fail(f"a running Firefox: ended with {code}: {err}")
            expect("bookmarks of a running Firefox", len(out.splitlines()), len(list(flat(first.places()))))
            expect("files of a running Firefox", first.files(), before)
        print("Firefox wrote", first.profile)
        tree = first.places()
        # Firefox doesn't list the folder of its tags.
        expect("what Firefox lists", listed, [entry for entry in tree if entry[0] != "tags"])
        given = sum(entry is not None for entry in HARD + MANY)
        expect("number of bookmarks", len(list(flat(tree))), len(TITLES) + given)
        check_reading(first, tree)
        first.succeed("bookmarks", "firefox://", "--output", str(exported))
        expect("file in the profile", (first.profile / "bookmarks.html").read_bytes(), exported.read_bytes())

        second = Home(program, pathlib.Path(folder, "second"))
        with second.firefox_with(exported) as firefox:
            listed = as_tree(firefox.run(LIST))
        # What was exported comes into the menu, the first profile's roots as plain folders.
        for what, found in (("holds", second.places()), ("lists", listed)):
            menu = next(entry[1] for entry in found if entry[0] == "menu")
            expect(f"bookmarks that the second Firefox {what}", menu, tree)
        print(f"{len(list(flat(tree)))} bookmarks came back as they were: "
              "titles, urls, folders, separators, order, dates")


if __name__ == "__main__":
    main()
