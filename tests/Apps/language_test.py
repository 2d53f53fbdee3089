#!/usr/bin/env python3
"""What a person reads of the command line, in English and in German.

usage: language_test.py PROGRAM ROOT [unittest arguments]
"""
import contextlib
import json
import os
import pty
import sqlite3
import subprocess
import unittest

from program_case import INBOX, LOCAL, ProgramCase, tree_bytes

LANGUAGES = {"en": ("C.UTF-8", "en_US.UTF-8", "fr_FR.UTF-8"), "de": ("de_DE.UTF-8", "de_AT", "de")}


class LanguageTest(ProgramCase):
    locale = "C.UTF-8"

    def environment(self, home=None):
        return dict(super().environment(home), LC_ALL=self.locale)

    def told(self, language, *arguments, sample=True):
        self.locale = LANGUAGES[language][0]
        return self.run_program(*arguments, sample=sample)

    def expect(self, arguments, code, en, de):
        """Both texts come, each in its language and in that only."""
        for language, wanted, other in (("en", en, de), ("de", de, en)):
            got, out, err = self.told(language, *arguments)
            self.assertEqual(got, code, err)
            self.assertIn(wanted, out + err)
            self.assertNotIn(other, out + err)

    def test_the_locale_chooses(self):
        for language, heading in (("en", "Subject"), ("de", "Betreff")):
            for self.locale in LANGUAGES[language]:
                _, out, _ = self.run_program("read", f"{LOCAL}/Inbox/-")
                self.assertIn(heading, out.splitlines()[0])

    def test_the_option_goes_before_the_locale(self):
        self.locale = "de_DE.UTF-8"
        _, out, _ = self.run_program("--language", "en", "read", f"{LOCAL}/Inbox/-")
        self.assertIn("Subject", out)
        self.locale = "C.UTF-8"
        _, out, _ = self.run_program("--language", "de", "read", f"{LOCAL}/Inbox/-")
        self.assertIn("Betreff", out)
        code, _, err = self.run_program("--language", "de", "read")
        self.assertEqual((code, err), (2, "ADDRESS fehlt\nMehr dazu zeigt --help.\n"))
        self.assertEqual(self.run_program("--language", "fr", "read", LOCAL)[0], 2)

    def test_captions_of_every_list(self):
        for arguments, en, de in (
                (("browse", "thunderbird://*"), "#  Name  Address  Path", "#  Name  Adresse  Pfad"),
                (("read", f"{LOCAL}/Inbox/-"), "#  Date  From  Subject  Size  Files  ID",
                 "#  Datum  Von  Betreff  Größe  Dateien  ID"),
                (("read", "firefox://default"), "#  Date  Title  Folder  Address", "#  Datum  Titel  Ordner  Adresse"),
                (("read", "sunbird://default/Arbeit"), "#  Start  End  Event  Location  Calendar  ID",
                 "#  Beginn  Ende  Termin  Ort  Kalender  ID")):
            for language, heading in (("en", en), ("de", de)):
                code, out, err = self.told(language, *arguments)
                self.assertEqual(code, 0, err)
                self.assertEqual(out.splitlines()[0].split(), heading.split())

    def test_what_is_listed_has_its_name(self):
        self.expect(("browse", "thunderbird://*"), 0, "Profile 'default'", "Profil 'default'")
        self.expect(("browse", "thunderbird://*"), 0, "Local drives", "Lokale Laufwerke")
        self.expect(("read", "--tree", "firefox://default"), 0, "(unnamed)", "(ohne Namen)")

    def test_what_the_component_tells(self):
        self.expect(("read", "thunderbird://nosuch"), 3, "Profile 'nosuch' not found",
                    "Profil 'nosuch' nicht gefunden!")
        self.expect(("read", "thunderbird://default/x"), 3, "Account 'x' not found", "Account 'x' nicht gefunden!")
        os.mkfifo(self.samples / (INBOX + "2"))
        (self.samples / (INBOX + "2.msf")).touch()
        self.expect(("read", f"{LOCAL}/Inbox2/-"), 3, "no file, but a pipe, socket or device; passed over",
                    "keine Datei, sondern Pipe, Socket oder Gerät; wird übergangen!")

    def test_own_messages_and_hints(self):
        self.expect(("read", "nonsense"), 2, "'nonsense' is no address\nAn address begins with thunderbird://",
                    "'nonsense' ist keine Adresse\nEine Adresse beginnt mit thunderbird://")
        self.expect(("read", f"{LOCAL}/None"), 3, ": no such mailbox\nList what there is with",
                    ": dieses Postfach gibt es nicht\nWas es gibt, zeigt")
        self.expect(("get", f"{LOCAL}/Inbox/-", "none"), 1, "no item none at", "kein Eintrag none an")
        self.expect(("search", "none", "x"), 3, "none: there is no archive", "none: dort ist kein Archiv")
        self.expect(("calendar", "add", "sunbird://default/Arbeit", "--text", "x", "--start", "soon"), 2,
                    "'soon' is no date and time", "'soon' ist kein Datum mit Uhrzeit")

    def test_what_the_system_tells(self):
        (self.work / "file").touch()
        self.expect(("bookmarks", "firefox://default", "--output", "file/x"), 3,
                    "file/x could not be written: Not a directory",
                    "file/x konnte nicht geschrieben werden: Ist kein Verzeichnis")
        (self.work / "archive").mkdir()
        (self.work / "archive/archive.sqlite").write_bytes(b"x" * 5000)
        self.expect(("search", "archive", "x"), 3, "file is not a database", "die Datei ist keine Datenbank")

    def test_wrong_use(self):
        self.expect((), 2, "A subcommand is required\nRun with --help for more information.",
                    "ein Befehl fehlt\nMehr dazu zeigt --help.")
        self.expect(("read", "x", "--nosuch"), 2, "The following argument was not expected: --nosuch",
                    "dieses Argument ist hier nicht vorgesehen: --nosuch")
        self.expect(("read", "x", "--json", "--tree"), 2, "--json excludes --tree", "--json schließt --tree aus")
        self.expect(("import", "x", "--target"), 2, "--target: 1 required DIR missing", "--target: 1 mal DIR fehlt")
        self.expect(("--rules", "none", "read", "x"), 2, "--rules: none not in {",
                    "--rules: none ist nicht eines von {")
        self.expect(("nosuch",), 2, "unknown command 'nosuch'", "unbekannter Befehl 'nosuch'")

    def test_sums_and_logs_of_a_run(self):
        for language, log, done, total in (
                ("en", "  8 items in 0 seconds", "finished (8 Items)", "found 9 = imported 8 + expunged 1 + failed 0"),
                ("de", "  8 Items in 0 Sekunden", "fertig (8 Items)",
                 "gefunden 9 = importiert 8 + gelöscht 1 + gescheitert 0")):
            code, _, err = self.told(language, "--verbose", "import", f"{LOCAL}/Inbox/-", "--target", language)
            lines = err.splitlines()
            self.assertEqual(code, 0, err)
            self.assertEqual((lines[2], lines[-1]), (log, total))
            self.assertTrue(lines[3].endswith(done), lines[3])
        self.expect(("import", f"{LOCAL}/Inbox/-", "--target", "en", "--dry-run"), 0, "to import 0 + already there 8",
                    "zu importieren 0 + schon da 8")

    def test_what_can_not_be_read_is_counted_last(self):
        places = self.samples / "AppData/Mozilla/FireFox/Profiles/k7f2m4ax.default/places.sqlite"
        command = ("read", "firefox://default", "--json")
        self.assertEqual(self.run_program(*command)[2], "")
        for broken, code in (("id IN (SELECT id FROM moz_bookmarks WHERE type=1 LIMIT 1)", 1),
                             ("id IN (SELECT id FROM moz_bookmarks WHERE type=1 LIMIT 1)", 1), ("type=1", 3)):
            with contextlib.closing(sqlite3.connect(places)) as database:
                database.execute("UPDATE moz_bookmarks SET type=32768 WHERE " + broken)
                database.commit()
                count = database.execute("SELECT count(*) FROM moz_bookmarks WHERE type=32768").fetchone()[0]
            for language, each, total in (("en", "bookmark ", f"not read, or not whole: {count}"),
                                          ("de", "Lesezeichen ", f"nicht oder nicht ganz gelesen: {count}")):
                got, _, err = self.told(language, *command)
                self.assertEqual((got, err.splitlines()[-1]), (code, total), err)
                self.assertEqual(sum(f"places.sqlite: {each}" in line for line in err.splitlines()), count, err)
        self.assertNotIn("gelesen", self.told("de", *command, "--rules", "windows")[2])

    def test_questions_take_answers_of_both(self):
        english, german = "as deleted? [y/N]", "als gelöscht markieren? [j/N]"
        for language, question, yes in (("en", english, "y"), ("de", german, "ja"), ("de", german, "y")):
            self.locale = LANGUAGES[language][0]
            for answer, code in (("n", 130), (yes, 0)):
                ours, theirs = pty.openpty()
                os.write(ours, answer.encode() + b"\n")
                done = subprocess.run(self.command("delete", f"{LOCAL}/Inbox/-", "1"), stdin=theirs, stderr=theirs,
                                      stdout=subprocess.PIPE, env=self.environment(), cwd=self.work, timeout=60,
                                      check=False)
                told = os.read(ours, 65536).decode()
                os.close(ours)
                os.close(theirs)
                self.assertEqual(done.returncode, code, told)
                self.assertIn(question, told)

    def test_json_and_records_are_the_same(self):
        for arguments in (("browse", "thunderbird://*"), ("read", f"{LOCAL}/Inbox/-"),
                          ("read", "sunbird://default/Arbeit")):
            lists = []
            for language in LANGUAGES:
                code, out, err = self.told(language, *arguments, "--json")
                self.assertEqual((code, err), (0, ""))
                items = [json.loads(line) for line in out.splitlines()]
                lists.append([{**item, "Log": "", "ID": ""} for item in items])
            self.assertEqual(*lists)

    def test_what_is_written_is_the_same(self):
        kept = []
        for language in LANGUAGES:
            self.told(language, "stream", f"{LOCAL}/Inbox/-", "--output", language)
            kept.append({name: content for name, content in tree_bytes(self.work / language).items()
                         if not name.endswith("record.txt")})
        self.assertEqual(*kept)

    def test_by_the_other_rules_the_component_speaks_german(self):
        _, _, err = self.told("en", "--rules", "windows", "read", "thunderbird://nosuch")
        self.assertEqual(err, "vorlent-mozilla: Profil 'nosuch' nicht gefunden!\n")
        _, out, _ = self.told("en", "--rules", "windows", "browse", "thunderbird://*")
        self.assertIn("Profil 'default'", out)


if __name__ == "__main__":
    unittest.main()
