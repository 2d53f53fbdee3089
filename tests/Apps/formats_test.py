"""An archive can be read by what docs/formats.md tells of it, without the program.

formats_test.py PROGRAM SOURCE_FOLDER
"""
import json
import re
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PROGRAM, SOURCES = sys.argv.pop(1), Path(sys.argv.pop(1))


def run(*arguments):
    sample = ("--appdata", SOURCES / "samples/AppData", "--drive", f"S={SOURCES / 'samples'}")
    command = [PROGRAM, *map(str, (*sample, *arguments))]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def unescaped(parts):
    return "".join("\n" if part == "\\n" else part[-1] for part in parts)


def fields_of(lines):
    """The column `fields` as the document tells it."""
    fields = {}
    for line in lines.split("\n")[:-1]:
        parts = re.findall(r"\\.|[^\\]", line)
        cut = parts.index("=")
        fields[unescaped(parts[:cut])] = unescaped(parts[cut + 1:])
    return fields


class FormatsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = Path(tempfile.mkdtemp())
        cls.archive = cls.folder / "archive"
        run("import", "thunderbird://default", "--target", cls.archive)
        cls.database = sqlite3.connect(cls.archive / "archive.sqlite")
        cls.database.row_factory = sqlite3.Row
        cls.mails = [json.loads(line) for line in run("read", "--json", "thunderbird://default").splitlines()]

    @classmethod
    def tearDownClass(cls):
        cls.database.close()
        shutil.rmtree(cls.folder)

    def items(self):
        return self.database.execute("SELECT * FROM items ORDER BY number").fetchall()

    def path_of(self, file):
        return self.archive / "files" / f"{file['item'] // 100:06}" / f"{file['item']} {file['name']}"

    def test_format_has_the_number_of_the_document(self):
        told = re.search(r"number of the format, (\d+)", (SOURCES / "docs/formats.md").read_text(encoding="utf-8"))
        self.assertEqual(self.database.execute("PRAGMA user_version").fetchone()[0], int(told.group(1)))

    def test_tables_and_columns_are_those_of_the_document(self):
        document = (SOURCES / "docs/formats.md").read_text(encoding="utf-8")
        for table in ("items", "files", "settings", "state"):
            columns = [row["name"] for row in self.database.execute(f"PRAGMA table_info({table})")]
            row = re.search(rf"^\| `{table}` \| (.*?) \|", document, re.M).group(1)
            self.assertEqual(re.findall(r"`(\w+)`", row), columns)

    def test_items_are_the_mails(self):
        told = sorted((mail["ID"], mail["Text"], mail["Date"]) for mail in self.mails)
        kept = sorted((item["id"], item["text"], item["date"]) for item in self.items())
        self.assertEqual(kept, told)

    def test_fields_are_those_of_the_mails(self):
        senders = {mail["ID"]: (mail["Data"]["From"], int(mail["Data"]["Size"])) for mail in self.mails}
        for item in self.items():
            fields = fields_of(item["fields"])
            self.assertEqual((fields["DataFrom"], int(fields["DataSize"])), senders[item["id"]])

    def test_files_lie_where_the_document_says(self):
        files = self.database.execute("SELECT * FROM files").fetchall()
        self.assertGreater(len(files), len(self.mails))
        for file in files:
            self.assertEqual(file["missing"], 0)
            self.assertTrue(self.path_of(file).is_file(), file["name"])
        listed = {path for path in (self.archive / "files").rglob("*") if path.is_file()}
        self.assertEqual(listed, {self.path_of(file) for file in files})

    def test_descriptions_tell_the_size_of_the_files(self):
        for file in self.database.execute("SELECT files.*, fields FROM files JOIN items ON number = item"):
            description = fields_of(file["fields"])["Data" + file["key"]]
            lines = dict(line.split("=", 1) for line in description.split("\r\n"))
            self.assertEqual(int(lines["size"]), self.path_of(file).stat().st_size)

    def test_closed_archive_has_nothing_to_put_in_order(self):
        self.assertEqual(self.database.execute("SELECT value FROM state WHERE key = 'open'").fetchone()[0], 0)


unittest.main()
