"""The calendars of today's Thunderbird at the command line.

lightning_test.py PROGRAM SOURCE_FOLDER
"""
import contextlib
import json
import os
import re
import sqlite3
import subprocess
import sys
import unittest

from program_case import ROOT, ProgramCase, tree_bytes

FAMILY, WORK = "65089248-54be-4d44-a3fc-922ffc102e8d", "19cf1c7b-f359-4b80-8f47-e511ea4346d2"
NINE, TEN = 1781946000000000, 1781949600000000  # 20 June 2026 in UTC
MIDSUMMER, NEXT_DAY = 1782000000000000, 1782086400000000

# Holds the database as Thunderbird does, until its input ends.
HOLDER = """
import sqlite3, sys
held = sqlite3.connect(sys.argv[1], isolation_level=None)
held.execute("PRAGMA locking_mode=EXCLUSIVE")
held.execute("UPDATE cal_events SET title='Nur im Log' WHERE id='float'")
print("held", flush=True)
sys.stdin.read()
"""


def schema():
    """That of the tests' own builder, which is Thunderbird's."""
    text = (ROOT / "tests/Support/LightningFile.cpp").read_text(encoding="utf-8")
    return re.search(r'R"\((.*?)\)"', text, re.S).group(1)


class Lightning(ProgramCase):
    def setUp(self):
        super().setUp()
        self.profile = self.home / ".thunderbird/abc.default"
        (self.profile / "calendar-data").mkdir(parents=True)
        (self.home / ".thunderbird/profiles.ini").write_text(
            "[Profile0]\nName=default\nIsRelative=1\nPath=abc.default\n", encoding="utf-8")
        lines = [f'user_pref("calendar.list.sortOrder", "{FAMILY} {WORK}");',
                 'user_pref("calendar.timezone.local", "Europe/Berlin");']
        for identity, name in ((FAMILY, "Familie 🦊"), (WORK, 'A \\"B\\" / C')):
            lines += [f'user_pref("calendar.registry.{identity}.{key}", {json.dumps(value)});'.replace('\\\\\\"', '\\"')
                      for key, value in (("disabled", True), ("name", name), ("type", "storage"))]
        (self.profile / "prefs.js").write_text("\n".join(lines) + "\n", encoding="utf-8")
        self.file = self.profile / "calendar-data/local.sqlite"
        with self.database() as database:
            database.executescript(schema())
            for identity, calendar, title, start, end, zone, flags in (
                    ("float", FAMILY, "Überall um neun", NINE, TEN, "floating", 4),
                    ("day", FAMILY, "Ein Tag ☀", MIDSUMMER, NEXT_DAY, "floating", 12),
                    ("zone", WORK, "In Tokio", NINE, TEN, "Asia/Tokyo", 4),
                    ("bad", WORK, "Ohne Anfang", None, None, "UTC", 4)):
                database.execute(
                    "INSERT INTO cal_events(id, cal_id, title, event_start, event_end, event_start_tz, event_end_tz, "
                    "flags, time_created, last_modified) VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                    (identity, calendar, title, start, end, zone, zone, flags, NINE, NINE))

    @contextlib.contextmanager
    def database(self):
        with contextlib.closing(sqlite3.connect(self.file)) as database:
            yield database
            database.commit()

    def rows(self, sql):
        with self.database() as database:
            return database.execute(sql).fetchall()

    def run_here(self, *arguments):
        return self.run_program(*arguments, sample=False)

    @contextlib.contextmanager
    def held(self):
        holder = subprocess.Popen([sys.executable, "-c", HOLDER, str(self.file)], stdin=subprocess.PIPE,
                                  stdout=subprocess.PIPE)
        self.assertEqual(holder.stdout.readline(), b"held\n")
        try:
            yield holder.pid
        finally:
            holder.communicate()

    def test_calendars_are_read_as_thunderbird_shows_them(self):
        before = tree_bytes(self.home)
        code, out, err = self.run_here("read", "lightning://default/Familie 🦊", "--json")
        self.assertEqual((code, err), (0, ""))
        items = [json.loads(line) for line in out.splitlines()]
        self.assertEqual([(each["ID"], each["Text"], each["Date"], each["Data"]["DateEnd"]) for each in items],
                         [("float", "Überall um neun", "20.06.2026 09:00", "20.06.2026 10:00"),
                          ("day", "Ein Tag ☀", "21.06.2026 00:00", "21.06.2026 00:00")])
        self.assertEqual(tree_bytes(self.home), before)

    def test_an_event_that_can_not_be_read_is_named_and_the_others_come(self):
        code, out, err = self.run_here("read", "lightning://default", "--json")
        self.assertEqual(code, 1)
        self.assertEqual([json.loads(line)["ID"] for line in out.splitlines()], ["float", "day", "zone"])
        self.assertEqual(err.count("local.sqlite"), 1)
        self.assertRegex(err, "local.sqlite: .*'A \"B\" / C', ID bad: ")

    def test_names_are_addressed_as_they_are_listed(self):
        code, out, _ = self.run_here("browse", "lightning://default/*", "--json")
        listed = [json.loads(line) for line in out.splitlines()]
        self.assertEqual((code, [each["Text"] for each in listed]), (0, ["Familie 🦊", 'A "B" / C']))
        code, out, _ = self.run_here("read", listed[1]["Data"]["Location"], "--json")
        self.assertEqual([json.loads(line)["Text"] for line in out.splitlines()], ["In Tokio"])

    def test_changes_are_written_as_thunderbird_keeps_them(self):
        address = "lightning://default/Familie 🦊"
        code, out, err = self.run_here("calendar", "add", address, "--text", "Anna's Fest", "--start",
                                       "01.02.2039 10:00", "--location", "O'Hara")
        self.assertEqual((code, err), (0, ""))
        identity = out.split()[-1]
        self.assertEqual(self.rows("SELECT cal_id, title, event_start/1000000, event_end/1000000, event_start_tz, "
                                   f"flags FROM cal_events WHERE id='{identity}'"),
                         [(FAMILY, "Anna's Fest", 2180163600, 2180167200, "Europe/Berlin", 4)])
        self.assertEqual(self.run_here("calendar", "set", address, "day", "--start", "24.12.2026", "--end",
                                       "26.12.2026", "--location", "Köln"), (0, "changed: 'Ein Tag ☀' day\n", ""))
        self.assertEqual(self.run_here("calendar", "set", address, "day", "--location", "Bonn")[::2], (0, ""))
        self.assertEqual(self.rows("SELECT event_start/1000000, event_end/1000000, event_end_tz, flags FROM cal_events "
                                   "WHERE id='day'"), [(1798070400, 1798329600, "floating", 12)])
        self.assertEqual(self.rows("SELECT key, value FROM cal_properties WHERE item_id='day'"), [("LOCATION", "Bonn")])
        self.assertEqual(self.run_here("calendar", "remove", address, identity, "float")[0], 0)
        self.assertEqual(self.rows("SELECT id FROM cal_events ORDER BY rowid"), [("day",), ("zone",), ("bad",)])
        self.assertEqual(self.rows("SELECT item_id FROM cal_properties"), [("day",)])

    def test_a_file_in_use_is_read_as_of_a_moment_and_its_user_is_told(self):
        with self.held() as process:
            for address in ("lightning://default", "lightning://default/Familie 🦊"):
                code, out, err = self.run_here("read", address, "--json")
                self.assertIn("Nur im Log", out)
                self.assertEqual(len(re.findall(r"local.sqlite: .*\d\d\.\d\d\.\d{4} \d\d:\d\d:\d\d", err)), 1, err)
            before = tree_bytes(self.profile / "calendar-data")
            code, out, err = self.run_here("calendar", "remove", "lightning://default/Familie 🦊", "day")
            self.assertEqual((code, out), (3, ""))
            self.assertRegex(err, rf"local\.sqlite: .*python3?.* \(\w+ {process}\)")
            self.assertEqual(tree_bytes(self.profile / "calendar-data"), before)

    def test_a_file_that_may_not_be_written_is_read_and_not_said_to_be_in_use(self):
        self.file.chmod(0o444)
        folders = [self.file.parent, *self.file.parent.parents]
        for folder in folders[:folders.index(self.work) + 1]:
            folder.chmod(0o555)
        options = {"user": 65534, "group": 65534, "extra_groups": []} if os.geteuid() == 0 else {}
        try:
            code, out, err = self.run_program("read", "lightning://default/Familie 🦊", "--json", sample=False,
                                              **options)
        except PermissionError:
            self.skipTest("an ordinary user may not run the program where it lies")
        self.assertEqual((code, err, len(out.splitlines())), (0, "", 2))
        code, out, err = self.run_program("calendar", "remove", "lightning://default/Familie 🦊", "day", sample=False,
                                          **options)
        self.assertEqual((code, out), (3, ""))
        self.assertIn("local.sqlite: attempt to write a readonly database", err)

    def test_an_item_of_an_id_that_two_calendars_have_is_removed_alone(self):
        with self.database() as database:
            database.execute("INSERT INTO cal_events SELECT * FROM cal_events WHERE id='float'")
            database.execute("UPDATE cal_events SET cal_id=? WHERE rowid=(SELECT max(rowid) FROM cal_events)", (WORK,))
            database.execute("INSERT INTO cal_alarms(cal_id, item_id) VALUES(?, 'float')", (WORK,))
        self.assertEqual(self.run_here("calendar", "remove", "lightning://default/Familie 🦊", "float"),
                         (0, "removed: 'Überall um neun'\n", ""))
        self.assertEqual(self.rows("SELECT cal_id FROM cal_events WHERE id='float'"), [(WORK,)])
        self.assertEqual(self.rows("SELECT cal_id FROM cal_alarms"), [(WORK,)])

    def test_what_can_not_be_read_is_told_but_is_no_failure_of_a_change(self):
        code, out, err = self.run_here("calendar", "add", 'lightning://default/A "B" %2F C', "--text", "Neu", "--start",
                                       "01.02.2039 10:00")
        self.assertEqual(code, 0)
        self.assertRegex(out, "^added: 'Neu' ")
        self.assertEqual(err.count("ID bad: "), 1)

    def test_a_database_that_can_not_be_opened_is_told_and_no_other_stands_in_for_it(self):
        with contextlib.closing(sqlite3.connect(self.profile / "storage.sdb")) as old:
            old.executescript("CREATE TABLE cal_calendars_prefs(calendar INTEGER, name TEXT, value TEXT);"
                              "INSERT INTO cal_calendars_prefs VALUES(2, 'name', 'Familie 🦊');")
        self.file.write_bytes(b"no database at all" * 100)
        before = tree_bytes(self.profile)
        for arguments in (("read", "lightning://default", "--json"),
                          ("calendar", "add", "lightning://default/Familie 🦊", "--text", "Neu", "--start",
                           "01.02.2039 10:00")):
            code, out, err = self.run_here(*arguments)
            self.assertEqual((code, out), (3, ""))
            self.assertIn("local.sqlite: file is not a database", err)
        self.assertEqual(tree_bytes(self.profile), before)

    def test_whole_days_take_no_time_of_day(self):
        code, out, err = self.run_here("calendar", "set", "lightning://default/Familie 🦊", "day", "--start",
                                       "24.12.2026 10:00")
        self.assertEqual((code, out), (1, ""))
        self.assertIn("local.sqlite: an event of whole days has no time of day", err)
        self.assertEqual(self.rows("SELECT event_start, event_end FROM cal_events WHERE id='day'"),
                         [(MIDSUMMER, NEXT_DAY)])

    def test_an_event_without_an_end_is_moved_as_a_whole(self):
        with self.database() as database:
            database.execute("UPDATE cal_events SET event_end=NULL WHERE id='float'")
        for start, seconds in (("24.12.2026 10:00", 1798106400), ("01.12.2026 10:00", 1796119200)):
            self.assertEqual(self.run_here("calendar", "set", "lightning://default/Familie 🦊", "float", "--start",
                                           start)[::2], (0, ""))
            self.assertEqual(self.rows("SELECT event_start/1000000, event_end/1000000 FROM cal_events "
                                       "WHERE id='float'"), [(seconds, seconds)])

    def test_an_event_of_one_whole_day_stays_one_wherever_it_is_moved(self):
        for start, seconds in (("24.12.2026", 1798070400), ("01.12.2026", 1796083200)):
            self.assertEqual(self.run_here("calendar", "set", "lightning://default/Familie 🦊", "day", "--start",
                                           start)[::2], (0, ""))
            self.assertEqual(self.rows("SELECT event_start/1000000, event_end/1000000 FROM cal_events WHERE id='day'"),
                             [(seconds, seconds + 86400)])

    def test_by_the_other_rules_only_the_storage_of_old_is_read(self):
        code, out, _ = self.run_here("--rules", "windows", "browse", "lightning://default/*")
        self.assertNotIn("Familie", out)


if __name__ == "__main__":
    unittest.main()
