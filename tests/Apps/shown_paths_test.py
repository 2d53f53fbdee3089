#!/usr/bin/env python3
"""Paths as a person sees them, and gives them back.

usage: shown_paths_test.py PROGRAM ROOT [unittest arguments]
"""
import json
import re
import unittest

from program_case import INBOX, LOCAL, ProgramCase

DRIVE = re.compile(r"\b[A-Z]:\\")


class ShownPathsTest(ProgramCase):
    def done(self, *arguments):
        code, out, err = self.run_program(*arguments)
        self.assertEqual(code, 0, err)
        return out, err

    def test_lists_show_native_paths(self):
        out, _ = self.done("browse", "thunderbird://*")
        self.assertIn(f"{self.samples}/AppData/Thunderbird/Profiles/k3j9x2ab.default/Mail/Local Folders/", out)
        self.assertNotRegex(out, DRIVE)
        out, _ = self.done("browse", "--json", "thunderbird://./*")
        root, samples = map(json.loads, out.splitlines())
        self.assertEqual((root["Text"], root["Data"]["Path"]), ("/", "/"))
        self.assertEqual(samples["Data"]["Path"], f"{self.samples}/")
        self.assertEqual(samples["Data"]["Location"], "thunderbird://./S/*")

    def test_by_the_other_rules_lists_show_drives(self):
        out, _ = self.done("--rules", "windows", "browse", "thunderbird://./*")
        self.assertEqual(out.splitlines()[1].split(), ["1", "C:\\", "thunderbird://./C/*", "C:\\"])
        out, _ = self.done("--rules", "windows", "read", "--json", f"{LOCAL}/Inbox/-")
        self.assertEqual(json.loads(out.splitlines()[0])["Data"]["_SourceFile"], "S:\\" + INBOX.replace("/", "\\"))
        code, _, err = self.run_program("--rules", "windows", "read", str(self.samples / INBOX))
        self.assertEqual(code, 2)
        self.assertIn("is no address", err)

    def test_json_names_files_where_they_can_be_opened(self):
        out, _ = self.done("read", "--json", f"{LOCAL}/Inbox/-")
        for line in out.splitlines():
            self.assertEqual(json.loads(line)["Data"]["_SourceFile"], str(self.samples / INBOX))
        self.done("import", f"{LOCAL}/Inbox/-", "--target", "archive")
        for arguments in (("search", "archive"), ("stream", "--output", "mails", f"{LOCAL}/Inbox/-")):
            out, _ = self.done(*arguments, "--json")
            for line in out.splitlines():
                data = json.loads(line)["Data"]
                files = [value.split("\r\n")[0] for key, value in data.items() if key.startswith("File")]
                self.assertTrue(files)
                for file in files:
                    with open(file, "rb") as opened:
                        self.assertTrue(opened.read(), file)

    def test_texts_of_a_mail_stay_its_own(self):
        text = "Siehe C:\\Windows\\notes.txt"
        box = self.samples / INBOX
        box.write_bytes(b"From - x\r\nX-Mozilla-Status: 0001\r\nMessage-ID: <a@b>\r\nSubject: " + text.encode() +
                        b"\r\n\r\nx\r\n\r\n")
        out, _ = self.done("read", f"{LOCAL}/Inbox/-")
        self.assertIn(text, out)
        out, _ = self.done("read", "--json", f"{LOCAL}/Inbox/-")
        self.assertEqual(json.loads(out)["Text"], text)

    def test_logs_name_native_paths(self):
        _, err = self.done("--verbose", "import", f"{LOCAL}/Inbox/-", "--target", "archive")
        self.assertIn(f": {self.samples / INBOX}\n", err)
        self.assertNotRegex(err, DRIVE)
        _, err = self.done("--log", "read", "sunbird://default/Arbeit")
        self.assertIn(f"Database={self.samples}/AppData/Mozilla/Sunbird/", err)
        self.assertNotRegex(err, DRIVE)

    def test_a_native_path_is_an_address(self):
        expected, _ = self.done("read", f"{LOCAL}/Inbox/-")
        for path in (self.samples / INBOX, f"samples/{INBOX}", f"./samples/{INBOX}/-"):
            self.assertEqual(self.done("read", str(path))[0], expected)
        out, _ = self.done("browse", str((self.samples / INBOX).parent))
        self.assertIn(f"{self.samples / INBOX}\n", out)
        self.done("get", str(self.samples / INBOX), "3", "--output", "out")
        self.assertEqual(len(list((self.work / "out").iterdir())), 2)
        code, _, err = self.run_program("read", str(self.samples / "nothing"))
        self.assertEqual(code, 3)
        self.assertIn(f"{self.samples / 'nothing'}: no such mailbox", err)
        code, _, err = self.run_program("read", "nothing/-")
        self.assertEqual(code, 2)
        self.assertIn("'nothing/-' is no address", err)

    def test_what_browse_shows_is_taken(self):
        out, _ = self.done("browse", "--json", "thunderbird://default")
        for place in map(json.loads, out.splitlines()):
            self.done("browse", place["Data"]["Path"])


if __name__ == "__main__":
    unittest.main()
