#!/usr/bin/env python3
"""Text of every script, from the disk to what the program shows: nothing becomes a question mark.

usage: unicode_test.py PROGRAM ROOT [unittest arguments]
"""
import json
import unicodedata
import unittest

from program_case import ProgramCase

NFC, NFD = "Entwürfe", unicodedata.normalize("NFD", "Entwürfe")
SUBJECTS = {
    "Inbox": ["=?utf-8?B?8J+RqeKAjfCfkanigI3wn5Gn?= 你好", "=?koi8-r?Q?=F0=D2=C9=D7=C5=D4?=",
              "=?ISO-2022-JP?B?GyRCJDMkcxsoQg==?=", "Ελλάδα", "=?windows-1256?Q?=E3=D1=CD=C8=C7?="],
    NFC: ["composed"],
    NFD: ["decomposed"],
    "Черновики 😀": ["Жук"],
    "草稿": ["a\u0301"],
}
READ = ["👩‍👩‍👧 你好", "Привет", "こん", "Ελλάδα", "مرحبا"]


def mail(number, subject):
    return (f"From - Sun May 09 14:30:05 2010\nX-Mozilla-Status: 0001\nMessage-ID: <{number}@x>\n"
            f"Date: Sun, 9 May 2010 14:30:05 +0200\nFrom: Żółć <a@b.c>\nTo: d@e.f\nSubject: {subject}\n"
            "Content-Type: multipart/mixed; boundary=b\n\n--b\nContent-Type: text/plain; charset=koi8-r\n\n").encode() \
        + "Берёза\n".encode("koi8-r") \
        + ("--b\nContent-Type: text/plain\nContent-Transfer-Encoding: base64\nContent-Disposition: attachment;\n"
           " filename*=UTF-8''%F0%9F%98%80%20%E4%BD%A0.txt\n\naGVsbG8=\n--b--\n\n").encode()


class UnicodeTest(ProgramCase):
    def setUp(self):
        super().setUp()
        self.thunderbird = self.home / ".thunderbird"
        account = self.thunderbird / "p.default/Mail/Konto ✉"
        account.mkdir(parents=True)
        (self.thunderbird / "profiles.ini").write_text(
            "[General]\nStartWithLastProfile=1\n\n[Profile0]\nName=Профиль\nIsRelative=1\nPath=p.default\n")
        preferences = {"mail.account.account1.server": "server1", "mail.server.server1.directory": str(account),
                       "mail.server.server1.name": "Konto ✉", "mail.accountmanager.accounts": "account1"}
        (self.thunderbird / "p.default/prefs.js").write_text(
            "".join(f'user_pref("{name}", "{value}");\n' for name, value in preferences.items()))
        for box, subjects in SUBJECTS.items():
            (account / box).write_bytes(b"".join(mail(f"{len(box)}{i}", s) for i, s in enumerate(subjects)))
            (account / (box + ".msf")).touch()

    def done(self, *arguments):
        code, out, err = self.run_program(*arguments, sample=False)
        self.assertEqual(code, 0, err)
        return out

    def subjects(self, address):
        return [json.loads(line)["Text"] for line in self.done("read", "--json", address).splitlines()]

    def test_mails_are_read_by_addresses_of_every_script(self):
        for box, subjects in SUBJECTS.items():
            self.assertEqual(self.subjects(f"thunderbird://Профиль/Konto ✉/{box}/-"),
                             READ if box == "Inbox" else subjects)

    def test_folders_and_keywords_keep_their_form(self):
        listed = self.done("browse", "thunderbird://Профиль/Konto ✉/*")
        for box in SUBJECTS:
            self.assertIn(box, listed)
        out = self.done("read", "--json", "thunderbird://Профиль")
        keywords = {json.loads(line)["Keywords"] for line in out.splitlines()}
        self.assertEqual(keywords, {f"Account=Konto ✉,{box}" for box in SUBJECTS})
        self.assertNotIn("?", out)

    def test_columns_count_what_a_terminal_shows(self):
        lines = self.done("read", "thunderbird://Профиль/Konto ✉/Inbox/-").splitlines()
        at = lines[0].index("Size")
        for line in lines[1:]:
            before = line[:line.index(" B")]
            columns = sum(0 if unicodedata.combining(c) or c == "\u200d" else
                          2 if unicodedata.east_asian_width(c) in "WF" else 1 for c in before)
            self.assertGreaterEqual(columns, at, line)
            self.assertLessEqual(columns, at + len("Size"), line)

    def test_streamed_files_have_their_names_and_bytes(self):
        self.done("stream", "thunderbird://Профиль/Konto ✉/草稿/-", "--output", "out")
        (file,) = (self.work / "out").rglob("*你.txt")
        self.assertEqual((file.name, file.read_bytes()), ("😀 你.txt", b"hello"))
        record = (file.parent / "record.txt").read_bytes().decode()
        self.assertIn("DataFrom=Żółć <a@b.c>", record)

    def test_an_archive_keeps_and_finds_every_script(self):
        self.done("import", "thunderbird://Профиль", "--target", "archive")
        for words, count in (("Привет", 1), ("привет", 1), ("Ελλάδα", 1), ("берёза", 9), ("你好", 1), ("Żółć", 9)):
            found = self.done("search", "--json", "archive", words).splitlines()
            self.assertEqual(len(found), count, words)
        (found,) = self.done("search", "--json", "archive", "Привет").splitlines()
        self.assertEqual(json.loads(found)["Text"], "Привет")
        code, _, err = self.run_program("import", "thunderbird://Профиль", "--target", "archive", sample=False)
        self.assertEqual(code, 0)
        self.assertIn("imported 0 + already there 9", err)


if __name__ == "__main__":
    unittest.main()
