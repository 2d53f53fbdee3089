#!/usr/bin/env python3
"""The command line as a program: exit codes, messages, and what it leaves untouched.

usage: command_line_test.py PROGRAM ROOT [unittest arguments]
"""
import base64
import contextlib
import email
import email.header
import json
import os
import pwd
import re
import sqlite3
import subprocess
import unittest
import unittest.mock
import urllib.parse

from program_case import INBOX, LOCAL, ROOT, ProgramCase, file_size_limit, mail, tree_bytes


def mail_of_files(subject, *files):
    parts = b"".join(b"--B\r\nContent-Type: a/b\r\nContent-Disposition: attachment; filename=\"" + name +
                     b"\"\r\n\r\n" + content + b"\r\n" for name, content in files)
    return mail(subject, b"Content-Type: multipart/mixed; boundary=B\r\n", parts + b"--B--\r\n")


def marked(mailbox, *subjects):
    for subject in subjects:
        digit = mailbox.rindex(b"Status: 0001", 0, mailbox.index(b"Subject: " + subject + b"\r\n")) + 11
        mailbox = mailbox[:digit] + b"9" + mailbox[digit + 1:]
    return mailbox


class CommandLine(ProgramCase):
    def write_inbox(self, *mails):
        (self.samples / INBOX).write_bytes(b"".join(mails))

    def inbox(self):
        return (self.samples / INBOX).read_bytes()

    def run_into_full_disk(self, *arguments):
        with open("/dev/full", "wb") as full:
            done = subprocess.run(self.command(*arguments), cwd=self.work, env=self.environment(), timeout=60,
                                  stdin=subprocess.DEVNULL, stdout=full, stderr=subprocess.PIPE)
        return done.returncode, done.stderr.decode("utf-8")

    def read(self, address, *arguments):
        code, out, err = self.run_program("read", address, "--json", *arguments)
        self.assertEqual((code, err), (0, ""))
        return [json.loads(line) for line in out.splitlines()]

    # --- Use ------------------------------------------------------------------------------------------------------

    def test_help_names_every_command_and_ends_with_0(self):
        code, out, _ = self.run_program("--help", sample=False)
        self.assertEqual(code, 0)
        table = (ROOT / "src/Apps/CommandLine/Verbs.def").read_text(encoding="utf-8")
        verbs = re.findall(r'^VERB\("(\w+)", "(.+?)", "(.*?)", \w+\)$', table, re.M)
        self.assertEqual(len(verbs), table.count("\nVERB("))
        for name, summary, group in verbs:
            line = rf"(?m)^  {name} +{re.escape(summary)}$"
            (self.assertRegex if group else self.assertNotRegex)(out, line)
        self.assertIn("Exit codes", out)

    def test_an_unknown_command_is_named(self):
        for arguments, name in ((["foo"], "foo"), (["foo", "--bar", "x"], "foo"),
                                (["calendar", "foo"], "calendar foo")):
            code, out, err = self.run_program(*arguments)
            self.assertEqual((code, out), (2, ""))
            self.assertEqual(err, f"vorlent-mozilla: unknown command '{name}'\nRun with --help for all commands.\n")

    def test_a_path_that_can_not_be_is_told_with_its_reason(self):
        file = self.work / "file"
        file.write_bytes(b"mine")
        before = tree_bytes(self.samples)
        long = "n" * 5000
        temporary = self.work / "tmp"
        temporary.mkdir()
        for arguments, path in (
                (["stream", LOCAL + "/Inbox/-", "--output", str(file)], str(file)),
                (["stream", LOCAL + "/Inbox/-", "--output", "/proc/x"], "/proc/x"),
                (["get", LOCAL + "/Inbox/-", "1", "--output", str(file)], str(file)),
                (["import", LOCAL + "/Inbox/-", "--target", ""], "''"),
                (["search", ""], "''"), (["search", long], long), (["import", long, "--target", "archive"], long),
                (["import", LOCAL + "/Inbox/-", "--target", long], long),
                (["read", LOCAL, "--appdata", long], long), (["read", LOCAL, "--drive", "X=" + long], long)):
            with unittest.mock.patch.dict(os.environ, TMPDIR=str(temporary)):
                code, out, err = self.run_program(*arguments, sample="--appdata" not in arguments)
            self.assertEqual((code, out), (3, ""), arguments[:2])
            self.assertIn(path, err)
            self.assertTrue(err.startswith("vorlent-mozilla: "), err)
            self.assertIn(err.splitlines()[1:], ([], ["Make its folder first, or check how the path is written."]))
        self.assertEqual(list(temporary.iterdir()), [])
        self.assertEqual((file.read_bytes(), tree_bytes(self.samples)), (b"mine", before))

    def test_output_that_can_not_be_written_is_an_error(self):
        before = tree_bytes(self.samples)
        for arguments in (["read", LOCAL + "/Inbox/-"], ["browse", "thunderbird://*"],
                          ["stream", LOCAL + "/Inbox/-", "--records", "--delete"],
                          ["stream", LOCAL + "/Inbox/-", "--json"], ["get", LOCAL + "/Inbox/-", "1"]):
            code, err = self.run_into_full_disk(*arguments)
            self.assertEqual(code, 3, arguments)
            self.assertIn("standard output could not be written", err)
        self.assertEqual(tree_bytes(self.samples), before)

    def test_no_command_is_wrong_use(self):
        self.assertEqual(self.run_program(sample=False)[0], 2)

    def test_unknown_option_is_wrong_use(self):
        self.assertEqual(self.run_program("read", "--nosuch", LOCAL)[0], 2)

    def test_text_without_a_scheme_is_wrong_use(self):
        code, out, err = self.run_program("read", "inbox")
        self.assertEqual((code, out), (2, ""))
        self.assertIn("'inbox' is no address", err)
        self.assertIn("thunderbird://", err)

    def test_missing_appdata_folder_is_wrong_use(self):
        code, _, err = self.run_program("--appdata", "/nosuch", "read", "thunderbird://", sample=False)
        self.assertEqual(code, 2)
        self.assertIn("/nosuch", err)

    def test_bad_drive_is_wrong_use(self):
        for drive in ("C", "C=/nosuch", "=x"):
            self.assertEqual(self.run_program("--drive", drive, "read", "thunderbird://", sample=False)[0], 2, drive)

    def test_global_options_may_stand_behind_the_command(self):
        code, out, _ = self.run_program("read", LOCAL + "/Sent", "--json", "--appdata", str(self.samples / "AppData"),
                                        "--drive", f"S={self.samples}", sample=False)
        self.assertEqual(code, 0)
        self.assertEqual(len(out.splitlines()), 1)

    # --- Reading --------------------------------------------------------------------------------------------------

    def test_json_lines_hold_the_names_of_the_record(self):
        mail = self.read(LOCAL + "/Inbox/-")[0]
        self.assertEqual(list(mail), ["ID", "Type", "Text", "Date", "Keywords", "Owner", "Log", "Data"])
        self.assertEqual(mail["ID"], "20260112081528-plain-1@example.org")
        self.assertEqual(mail["Text"], "Grüße aus Köln")
        self.assertEqual(mail["Date"], "12.01.2026 08:15:28")
        self.assertEqual(mail["Keywords"], "Account=Local Folders,Inbox")
        self.assertEqual(mail["Owner"], pwd.getpwuid(os.getuid()).pw_name)
        self.assertEqual(mail["Data"]["From"], "Jürgen Müller <juergen@example.org>")
        self.assertEqual(mail["Data"]["_SourceOffset"], "0")

    def test_expunged_mails_are_passed_over(self):
        subjects = [mail["Text"] for mail in self.read(LOCAL + "/Inbox/-")]
        self.assertEqual(subjects, ["Grüße aus Köln", "Rechnung | Januar", "Einladung: Sommerfest für 5 €",
                                    "Ohne Message-ID", "Ohne Datum", "Notizen zur Sitzung", "Neuigkeiten",
                                    "Übersicht der Kosten: 100 € und mehr"])

    def test_both_sets_of_rules_read_the_sample_alike(self):
        def differs(item):  # by what separates mails, by what a mailbox is, and by when a mail without a date came
            return "Zitate" in item["Keywords"] or "Ohne Index" in item["Keywords"] or item["Text"] == "Ohne Datum"

        def alike(item):  # but for when it was read and how its mailbox is named
            file = item["Data"]["_SourceFile"].replace("S:", str(self.samples)).replace("\\", "/")
            # The rules of old show the blank between encoded words, and the sender's time of day; they count the next
            # mail's separator, and tell of an attachment's name what stands in the header.
            text = item["Text"].replace("  ", " ")
            data = {key: re.sub(r"\s*originalfile=.*", "", value) for key, value in item["Data"].items()}
            whole = {**item, "Log": "", "Text": text, "Data": {**data, "_SourceFile": file, "Size": ""}}
            return json.loads(re.sub(r"\b(\d\d\.\d\d\.\d{4}) \d\d:\d\d:\d\d", r"\1", json.dumps(whole)))
        for address in ("thunderbird://default", "thunderbird://Büro"):
            windows, today = ([alike(item) for item in self.read(address, "--rules", rules)]
                              for rules in ("windows", "today"))
            self.assertEqual([item for item in windows if not differs(item)],
                             [item for item in today if not differs(item)])

    def test_quoted_separator_is_text_today_and_began_a_mail_of_old(self):
        address = LOCAL + "/Zitate/-"
        self.assertEqual(len(self.read(address, "--rules", "windows")), len(self.read(address)) + 1)

    def test_names_with_umlauts_are_found_as_they_read(self):
        mails = self.read("thunderbird://Büro/Büro-Konto/Inbox")
        self.assertEqual([mail["Text"] for mail in mails], ["Schlüssel für das Büro"])

    def test_a_folder_without_index_is_read_when_named(self):
        self.assertEqual(len(self.read(LOCAL + "/Ohne Index", "--rules", "windows")), 1)

    def test_a_folder_without_index_is_read_with_the_others_today(self):
        subject = "In einem Ordner ohne Index"
        self.assertIn(subject, [mail["Text"] for mail in self.read(LOCAL)])
        self.assertNotIn(subject, [mail["Text"] for mail in self.read(LOCAL, "--rules", "windows")])
        self.assertIn("Ohne Index", self.run_program("browse", LOCAL)[1])

    def test_an_empty_folder_is_nothing_found(self):
        code, out, err = self.run_program("read", LOCAL + "/Entwürfe", "--json")
        self.assertEqual((code, out), (1, ""))
        self.assertIn("no items", err)

    def test_a_missing_profile_cannot_be_read(self):
        code, out, err = self.run_program("read", "thunderbird://nosuch")
        self.assertEqual((code, out), (3, ""))
        self.assertIn("Profile 'nosuch' not found", err)

    def test_a_missing_account_cannot_be_read(self):
        code, _, err = self.run_program("read", "thunderbird://default/nosuch")
        self.assertEqual(code, 3)
        self.assertIn("Account 'nosuch' not found", err)

    def test_a_missing_folder_cannot_be_read_and_is_named(self):
        code, _, err = self.run_program("read", LOCAL + "/NoSuch")
        self.assertEqual(code, 3)
        self.assertIn("Mail/Local Folders/NoSuch: no such mailbox", err)

    def test_a_mailbox_that_is_not_there_is_told_alike_by_what_reads_it(self):
        lost = (self.samples / INBOX).with_name("Lost")
        lost.with_name("Lost.msf").write_bytes(b"")
        for name in ("NoSuch", "NoSuch/-", "Inbox/NoSuch", "NoSuch/Sub/-", "Weiß nicht", "Lost", "Lost/-"):
            told = {self.run_program(*command) for command in (
                ("read", f"{LOCAL}/{name}"), ("stream", f"{LOCAL}/{name}"), ("get", f"{LOCAL}/{name}", "1"),
                ("delete", f"{LOCAL}/{name}", "1"))}
            self.assertEqual(len(told), 1, told)
            code, out, err = told.pop()
            self.assertEqual((code, out), (3, ""))
            self.assertIn(": no such mailbox\n", err)

    def test_a_read_only_mailbox_is_an_error_with_path_and_reason(self):
        (self.samples / INBOX).chmod(0o444)
        code, _, err = self.run_program("read", LOCAL + "/Inbox/-", "--rules", "windows")
        self.assertEqual(code, 3)
        self.assertIn(f"{self.samples / INBOX}: is read-only", err)

    def test_a_browse_segment_that_does_not_resolve_is_told(self):
        code, _, err = self.run_program("browse", "thunderbird://nosuch/*")
        self.assertEqual(code, 3)
        self.assertIn("thunderbird://nosuch not found", err)

    def test_browse_lists_profiles_and_the_drives(self):
        code, out, _ = self.run_program("browse", "thunderbird://*", "--json")
        self.assertEqual(code, 0)
        places = [json.loads(line) for line in out.splitlines()]
        self.assertEqual([place["Text"] for place in places], ["Profil 'default'", "Profil 'Büro'", "Lokale Laufwerke"])
        self.assertEqual(places[0]["Data"]["Location"], "thunderbird://default/*")

    def test_all_profiles_are_read_without_a_complaint_about_drives(self):
        code, out, err = self.run_program("read", "thunderbird://", "--json")
        self.assertEqual((code, err), (0, ""))
        self.assertEqual(len(out.splitlines()), 15)

    def test_an_empty_home_cannot_be_read(self):
        code, _, err = self.run_program("read", "thunderbird://default", sample=False)
        self.assertEqual(code, 3)
        self.assertIn("Profile 'default' not found", err)

    def test_reading_changes_no_file_of_the_profile(self):
        before = tree_bytes(self.samples)
        for command in (["read", "thunderbird://"], ["browse", "thunderbird://default"],
                        ["get", LOCAL + "/Inbox/-", "2", "--output", "out"]):
            self.assertEqual(self.run_program(*command)[0], 0)
        self.assertEqual(tree_bytes(self.samples), before)

    def test_the_tree_shows_nodes_and_mails(self):
        code, out, _ = self.run_program("read", "--tree", LOCAL + "/Inbox")
        self.assertEqual(code, 0)
        self.assertIn("Account 'Local Folders'", out)
        self.assertIn("Projekte", out)
        self.assertIn("- Altes Projekt", out)

    # --- Files ----------------------------------------------------------------------------------------------------

    def test_get_brings_out_all_files_of_a_mail(self):
        code, out, _ = self.run_program("get", LOCAL + "/Inbox/-", "2", "--output", "out")
        self.assertEqual(code, 0)
        files = {path.name: path.read_bytes() for path in (self.work / "out").iterdir()}
        self.assertEqual(sorted(files), ["20260113100000-rechnung-2@example.org#2_Rechnung Januar.pdf",
                                         "20260113100000-rechnung-2@example.org.eml"])
        pdf = files["20260113100000-rechnung-2@example.org#2_Rechnung Januar.pdf"]
        self.assertTrue(pdf.startswith(b"%PDF-1.4\n") and pdf.endswith(b"%%EOF\n"))
        self.assertEqual(len(out.splitlines()), 2)

    def test_get_of_one_file_by_id_and_key(self):
        code, out, _ = self.run_program("get", LOCAL + "/Inbox/-", "20260114123000-nested-3@example.org", "FileAttach1",
                                        "--output", "out")
        self.assertEqual(code, 0)
        self.assertEqual(out, "out/20260114123000-nested-3@example.org#2_Lageplan.png\n")
        self.assertTrue((self.work / out.strip()).read_bytes().startswith(b"\x89PNG"))

    ODD_NAMES = (b"..", b".", b" ", b"n" * 296 + b".txt", "ж".encode() * 51, b"CON", b"a/b.txt", b"..")

    def test_get_shows_true_names_as_far_as_they_can_stand(self):
        self.write_inbox(mail_of_files(b"odd", *((name, b"%d" % i) for i, name in enumerate(self.ODD_NAMES))))
        code, out, err = self.run_program("get", LOCAL + "/Inbox/-", "1", "--output", "out")
        self.assertEqual((code, err), (0, ""))
        front = "20260112081528-odd@x#"
        files = {path.name: path.read_bytes().strip() for path in (self.work / "out").iterdir()}
        long_name = "n" * (255 - len(front + "4_.txt")) + ".txt"
        del files["20260112081528-odd@x.eml"]
        self.assertEqual(files, {f"{front}{i + 1}_{name}": b"%d" % i for i, name in enumerate(
            ("", "", "", long_name, "ж" * 51, "CON", "a_b.txt", ""))})
        self.assertEqual(len(out.splitlines()), 9)

    def test_get_replaces_no_file_unless_told_to(self):
        target = self.work / "out" / "20260114123000-nested-3@example.org#2_Lageplan.png"
        command = ["get", LOCAL + "/Inbox/-", "3", "--output", "out"]
        target.parent.mkdir()
        target.write_bytes(b"mine")
        code, out, err = self.run_program(*command)
        self.assertEqual((code, out), (3, ""))
        self.assertIn("out/20260114123000-nested-3@example.org#2_Lageplan.png is there already", err)
        self.assertEqual(tree_bytes(target.parent), {target.name: b"mine"})
        code, out, _ = self.run_program(*command, "--force")
        self.assertEqual((code, len(out.splitlines())), (0, 2))
        self.assertTrue(target.read_bytes().startswith(b"\x89PNG"))

    def test_get_of_a_mail_whose_id_is_longer_than_a_name(self):
        self.write_inbox(mail_of_files(b"i" * 400, (b"a.txt", b"1"), (b"b.txt", b"2")))
        code, out, err = self.run_program("get", LOCAL + "/Inbox/-", "1", "--output", "out")
        self.assertEqual((code, err), (0, ""))
        files = {path.name: path.read_bytes().strip() for path in (self.work / "out").iterdir()}
        self.assertEqual(sorted(len(name) for name in files), [255, 255, 255])
        self.assertEqual(sorted(value for name, value in files.items() if name.endswith(".txt")), [b"1", b"2"])

    def test_get_of_a_mail_that_hides_its_place_is_refused(self):
        self.write_inbox(mail(b"one"), mail(b"two", b"Address: 0\r\n"))
        code, out, err = self.run_program("--rules", "windows", "get", LOCAL + "/Inbox/-", "2", "--output", "out")
        self.assertEqual((code, out), (1, ""))
        self.assertIn("the header Address of 20260112081528-two@x hides its place", err)
        self.assertFalse((self.work / "out").exists())

    def test_mail_with_an_own_address_goes_like_any_other(self):
        mails = mail(b"one") + mail(b"two", b"Address: 0\r\n") + mail(b"three", b"Address: 5 Main St\r\n")
        self.write_inbox(mails)
        self.assertEqual(self.run_program("get", LOCAL + "/Inbox/-", "2", "--output", "out")[0], 0)
        self.assertIn(b"Subject: two", next((self.work / "out").iterdir()).read_bytes())
        self.assertEqual(self.run_program("delete", LOCAL + "/Inbox/-", "2")[0], 0)
        self.assertEqual(self.inbox(), marked(mails, b"two"))
        self.assertEqual(self.run_program("stream", LOCAL + "/Inbox/-", "--delete")[0], 0)
        self.assertEqual(self.inbox(), marked(mails, b"one", b"two", b"three"))

    def test_get_of_an_unknown_mail_says_so(self):
        code, _, err = self.run_program("get", LOCAL + "/Inbox/-", "nosuch")
        self.assertEqual(code, 1)
        self.assertIn("no item nosuch", err)

    # --- Streaming and deleting -----------------------------------------------------------------------------------

    def test_stream_keeps_each_mail_with_its_files_and_record(self):
        code, out, err = self.run_program("stream", LOCAL + "/Inbox/-", "--output", "out")
        self.assertEqual((code, err), (0, "found 9 = delivered 8 + expunged 1 + failed 0\n"))
        self.assertEqual(len(out.splitlines()), 8)
        folder = self.work / "out" / "20260114123000-nested-3@example.org"
        self.assertEqual(sorted(path.name for path in folder.iterdir()),
                         ["Lageplan.png", "mail.eml", "mail.html", "record.txt"])
        self.assertIn(b"|Source=thunderbird://default/Local Folders/Inbox/", (folder / "record.txt").read_bytes())
        self.assertIn("<b>herzlich</b> zum Sommerfest ein. Eintritt".encode(), (folder / "mail.html").read_bytes())

    def test_stream_shows_true_names_as_far_as_they_can_stand(self):
        mails = mail_of_files(b"odd", *((name, b"%d" % i) for i, name in enumerate((*self.ODD_NAMES, b"record.txt"))))
        self.write_inbox(mails)
        code, out, err = self.run_program("stream", LOCAL + "/Inbox/-", "--output", "out", "--json", "--delete")
        self.assertEqual((code, err), (0, "found 1 = delivered 1 + expunged 0 + failed 0\n"))
        self.assertEqual(self.inbox(), marked(mails, b"odd"))
        folder = self.work / "out" / "20260112081528-odd@x"
        names = ["unnamed", "(2) unnamed", "(3) unnamed", "n" * 251 + ".txt", "ж" * 51, "_CON", "a_b.txt",
                 "(4) unnamed", "(2) record.txt"]
        for i, name in enumerate(names):
            self.assertEqual((folder / name).read_bytes().strip(), b"%d" % i)
        self.assertEqual(sorted(path.name for path in folder.iterdir()), sorted([*names, "mail.eml", "record.txt"]))
        record = (folder / "record.txt").read_bytes().decode()
        self.assertNotIn("vorlent-", record)
        self.assertIn("|DataFile=mail.eml\\nfile=mail.eml\\n", record)
        self.assertIn("|DataFileAttach1=unnamed\\nfile=..\\n", record)
        self.assertIn("|DataFileAttach7=a_b.txt\\nfile=a%2Fb.txt\\nsize=", record)
        path, *lines = json.loads(out)["Data"]["FileAttach1"].split("\r\n")
        self.assertEqual(path, str(folder / "unnamed"))
        self.assertEqual(lines[0], "file=..")

    def test_stream_of_mails_of_one_id_keeps_them_all(self):
        box = self.samples / INBOX
        box.write_bytes(b"".join(b"From - x\r\nSubject: %d\r\n\r\n%d\r\n\r\n" % (n, n) for n in range(3)))
        self.assertEqual(self.run_program("stream", LOCAL + "/Inbox/-", "--output", "out")[0], 0)
        self.assertEqual(sorted(path.name for path in (self.work / "out").iterdir()),
                         ["00000000000000-", "00000000000000-~2", "00000000000000-~3"])

    def test_stream_of_a_mail_whose_file_is_lost_tells_it_and_leaves_it_unmarked(self):
        for files, reason in ((((b"f", b"1"), (b"f", b"2")), "one of two files called 'f' is lost"),
                              (((b"mail.eml", b"1"),), "one of two files called 'mail.eml' is lost")):
            mails = mail(b"one") + mail_of_files(b"two", *files) + mail(b"three")
            self.write_inbox(mails)
            code, out, err = self.run_program("--rules", "windows", "stream", LOCAL + "/Inbox/-", "--output", "out",
                                              "--delete")
            self.assertEqual((code, len(out.splitlines())), (1, 3))
            self.assertIn(f"Local Folders/Inbox, mail at offset {len(mail(b'one'))}: ", err)
            self.assertIn(reason, err)
            self.assertEqual(err.splitlines()[-1], "found 3 = delivered 2 + expunged 0 + failed 1")
            self.assertEqual(self.inbox(), marked(mails, b"one", b"three"))

    def test_attachments_of_one_name_are_all_kept(self):
        mails = mail_of_files(b"one", (b"f", b"1"), (b"f", b"2"), (b"mail.eml", b"3"))
        self.write_inbox(mails)
        code, _, err = self.run_program("stream", LOCAL + "/Inbox/-", "--output", "out", "--delete")
        self.assertEqual((code, err), (0, "found 1 = delivered 1 + expunged 0 + failed 0\n"))
        self.assertEqual(self.inbox(), marked(mails, b"one"))
        folder = self.work / "out" / "20260112081528-one@x"
        for name, content in (("f", b"1"), ("(2) f", b"2"), ("(2) mail.eml", b"3")):
            self.assertEqual((folder / name).read_bytes(), content)

    def test_mailbox_of_other_programs_is_read_mail_by_mail(self):
        box = self.samples / INBOX
        text = (b"From a@b.c Mon Jan  5 10:00:00 1998\nSubject: one\nMessage-ID: <1>\nDKIM: 1\nTo: x@y.z\n"
                b"DKIM: 2\n 3\n\nDear X,\n\nFrom now on\n>From - me\n\n>From - \nA: b\n\n"
                b"From \nSubject: two\nMessage-ID: <2>\n\nlast line")
        box.write_bytes(text)
        self.assertEqual([item["Text"] for item in self.read(LOCAL + "/Inbox/-")], ["one", "two"])
        self.assertEqual(self.read(LOCAL + "/Inbox/-")[0]["Data"]["To"], "x@y.z")
        self.assertEqual(self.run_program("get", LOCAL + "/Inbox/-", "1", "--output", "one")[0], 0)
        self.assertEqual(self.run_program("get", LOCAL + "/Inbox/-", "2", "--output", "two")[0], 0)
        first, second = (next((self.work / name).iterdir()).read_bytes().replace(b"\r\n", b"\n")
                         for name in ("one", "two"))
        self.assertEqual(first + second, text + b"\n")
        self.assertEqual(self.run_program("read", LOCAL + "/Inbox/-", "--rules", "windows")[0], 1)

    def test_mails_of_one_id_are_found_by_numbers(self):
        mails = mail(b"one") + mail(b"one", body=b"other\r\n") + mail(b"two")
        self.write_inbox(mails)
        ids = [item["ID"] for item in self.read(LOCAL + "/Inbox/-")]
        self.assertEqual(ids, ["20260112081528-one@x", "20260112081528-one@x~2", "20260112081528-two@x"])
        self.assertEqual(self.run_program("get", LOCAL + "/Inbox/-", ids[1], "--output", "out")[0], 0)
        self.assertIn(b"other", next((self.work / "out").iterdir()).read_bytes())
        self.assertEqual(self.run_program("delete", LOCAL + "/Inbox/-", ids[1])[0], 0)
        self.assertEqual(self.inbox(), mail(b"one") + marked(mail(b"one", body=b"other\r\n"), b"one") + mail(b"two"))

    def test_read_only_mailbox_is_read_and_says_that_it_can_not_be_marked(self):
        mails = mail(b"one") + mail(b"two")
        self.write_inbox(mails)
        (self.samples / INBOX).chmod(0o444)
        self.assertEqual(len(self.read(LOCAL + "/Inbox/-")), 2)
        self.assertEqual(self.run_program("get", LOCAL + "/Inbox/-", "1", "--output", "out")[0], 0)
        code, _, err = self.run_program("delete", LOCAL + "/Inbox/-", "1")
        self.assertEqual(code, 1)
        self.assertIn("is not marked: the mailbox may not be written", err)
        code, _, err = self.run_program("stream", LOCAL + "/Inbox/-", "--delete")
        self.assertEqual((code, err.splitlines()[-1]),
                         (1, "found 2 = delivered 2 + expunged 0 + failed 0, not marked as deleted 2"))
        self.assertEqual(self.inbox(), mails)

    def test_stream_tells_mails_that_can_not_be_marked(self):
        mails = mail(b"one") + mail(b"two", status=b"") + mail(b"three", b"Address: 0\r\n")
        self.write_inbox(mails)
        code, out, err = self.run_program("--rules", "windows", "stream", LOCAL + "/Inbox/-", "--delete")
        self.assertEqual((code, len(out.splitlines())), (1, 3))
        box = self.samples / INBOX
        second, third = len(mail(b"one")), mails.index(b"From - x", len(mail(b"one")) + 1)
        self.assertEqual(err.splitlines(), [
            f"vorlent-mozilla: {box}, mail at offset {third}: not marked as deleted: its own header Address hides its "
            "place",
            f"vorlent-mozilla: {box}, mail at offset {second}: not marked as deleted: "
            "it has no header X-Mozilla-Status",
            "found 3 = delivered 3 + expunged 0 + failed 0, not marked as deleted 2"])
        self.assertEqual(self.inbox(), marked(mails, b"one"))

    def test_stream_keeps_a_mail_whose_id_is_longer_than_a_name(self):
        self.write_inbox(mail(b"i" * 400))
        self.assertEqual(self.run_program("stream", LOCAL + "/Inbox/-", "--output", "out")[0], 0)
        self.assertEqual([len(path.name) for path in (self.work / "out").iterdir()], [240])

    def test_stream_and_import_find_nothing_in_an_empty_mailbox(self):
        self.write_inbox()
        for command, verb in ((["stream"], "delivered"), (["import", "--target", "archive"], "imported")):
            code, out, err = self.run_program(*command, LOCAL + "/Inbox/-")
            self.assertEqual((code, out, err), (1, "", f"found 0 = {verb} 0 + expunged 0 + failed 0\n"))

    def test_stream_with_delete_marks_the_streamed_mails_only(self):
        before = (self.samples / INBOX).read_bytes()
        self.assertEqual(self.run_program("stream", LOCAL + "/Inbox/-", "--delete")[0], 0)
        after = (self.samples / INBOX).read_bytes()
        self.assertEqual(len(before), len(after))
        changed = [i for i in range(len(before)) if before[i] != after[i]]
        self.assertEqual(len(changed), 8)
        self.assertTrue(all(before[i - 21:i].startswith(b"X-Mozilla-Status: 000") for i in changed))
        self.assertFalse((self.samples / (INBOX + ".msf")).exists())
        code, _, err = self.run_program("read", LOCAL + "/Inbox/-")
        self.assertEqual(code, 1)

    def test_delete_by_number_and_id_changes_one_digit_each(self):
        before = (self.samples / INBOX).read_bytes()
        code, out, _ = self.run_program("delete", LOCAL + "/Inbox/-", "1", "20260114123000-nested-3@example.org")
        self.assertEqual(code, 0)
        self.assertIn("Local Folders/Inbox", out)
        after = (self.samples / INBOX).read_bytes()
        changed = [(before[i:i + 1], after[i:i + 1]) for i in range(len(before)) if before[i] != after[i]]
        self.assertEqual(changed, [(b"1", b"9"), (b"1", b"9")])
        subjects = [mail["Text"] for mail in self.read(LOCAL + "/Inbox/-")]
        self.assertEqual(len(subjects), 6)
        self.assertNotIn("Grüße aus Köln", subjects)

    def test_delete_of_one_mail_told_twice_marks_it_once(self):
        code, out, err = self.run_program("delete", LOCAL + "/Inbox/-", "1", "1", "20260112081528-plain-1@example.org")
        self.assertEqual((code, err, len(out.splitlines())), (0, "", 1))

    def test_delete_of_a_mail_that_hides_its_place_is_refused(self):
        mails = mail(b"one") + mail(b"two", b"Address: 0\r\n") + mail(b"three", b"Address: 5 Main St\r\n")
        self.write_inbox(mails)
        code, out, err = self.run_program("--rules", "windows", "delete", LOCAL + "/Inbox/-", "2", "3")
        self.assertEqual((code, out), (1, ""))
        self.assertEqual(err.count("its own header Address hides its place"), 2)
        self.assertEqual(self.inbox(), mails)

    def test_delete_of_a_mail_that_can_not_be_marked_says_so(self):
        mails = mail(b"one", status=b"") + mail(b"two")
        self.write_inbox(mails)
        code, out, err = self.run_program("delete", LOCAL + "/Inbox/-", "1", "2")
        self.assertEqual((code, out), (1, f"deleted: 'two' in {self.samples / INBOX}\n"))
        self.assertIn("'one' in", err)
        self.assertIn("is not marked: it has no header X-Mozilla-Status", err)
        self.assertEqual(self.inbox(), marked(mails, b"two"))

    def test_delete_of_a_status_that_is_no_number_tells_what_it_changed(self):
        for header, before, after, listed in ((b"Status: zz", "zz", "z8", True),
                                              (b"Status: 000g", "000g", "0008", False),
                                              (b"Status: ?", "?", "8", False),
                                              (b"Status: 0001 ", "0001 ", "00018", False),
                                              (b"Status:", ":", "8", True)):
            mails = mail(b"one", status=b"X-Mozilla-" + header + b"\r\n") + mail(b"two")
            self.write_inbox(mails)
            code, out, err = self.run_program("--rules", "windows", "delete", LOCAL + "/Inbox/-", "1")
            self.assertIn(f"the status '{before}' became '{after}'", err if listed else out)
            self.assertNotIn("it has no header", err)
            self.assertEqual((code, out.startswith("deleted:")), (1, False) if listed else (0, True), header)
            self.assertEqual(self.inbox(), mails.replace(header + b"\r\n", header[:-1] + b"8\r\n", 1))
            self.assertEqual(len(self.read(LOCAL + "/Inbox/-", "--rules", "windows")), 2 if listed else 1)

    def test_delete_of_an_unknown_mail_deletes_the_others(self):
        code, _, err = self.run_program("delete", LOCAL + "/Inbox/-", "nosuch", "1")
        self.assertEqual(code, 1)
        self.assertIn("no item nosuch", err)
        self.assertEqual(len(self.read(LOCAL + "/Inbox/-")), 7)

    # --- Archive --------------------------------------------------------------------------------------------------

    def import_inbox(self, *arguments):
        return self.run_program("import", LOCAL + "/Inbox/-", "--target", "archive", *arguments)

    def search(self, *words):
        code, out, _ = self.run_program("search", "archive", *words, "--json", sample=False)
        return [json.loads(line) for line in out.splitlines()]

    def test_import_accounts_for_every_mail_and_copy_leaves_the_mailbox(self):
        before = tree_bytes(self.samples)
        code, out, err = self.import_inbox()
        self.assertEqual((code, out, err), (0, "", "found 9 = imported 8 + expunged 1 + failed 0\n"))
        self.assertEqual(tree_bytes(self.samples), before)
        self.assertEqual(len(self.search()), 8)

    def test_import_with_move_marks_the_imported_mails(self):
        before = (self.samples / INBOX).read_bytes()
        self.assertEqual(self.import_inbox("--move")[0], 0)
        after = (self.samples / INBOX).read_bytes()
        self.assertEqual(len(before), len(after))
        self.assertEqual(sum(a != b for a, b in zip(before, after)), 8)
        code, _, err = self.import_inbox("--move")
        self.assertEqual((code, err), (0, "found 9 = imported 0 + expunged 9 + failed 0\n"))
        self.assertEqual(len(self.search()), 8)

    def test_import_with_move_leaves_the_mails_that_are_not_whole_or_hide_their_place(self):
        mails = mail(b"one") + mail_of_files(b"two", (b"f", b"1"), (b"f", b"2")) + mail(b"three", b"Address: 0\r\n")
        self.write_inbox(mails)
        code, _, err = self.import_inbox("--move", "--rules", "windows")
        self.assertEqual(code, 1)
        self.assertIn("one of two files called 'f' is lost", err)
        self.assertIn("not marked as deleted: its own header Address hides its place", err)
        self.assertEqual(err.splitlines()[-1],
                         "found 3 = imported 2 + expunged 0 + failed 1, not marked as deleted 1")
        self.assertEqual(self.inbox(), marked(mails, b"one"))
        self.assertEqual(len(self.search()), 3)

    def test_no_name_of_an_attachment_ends_an_import(self):
        odd = mail_of_files(b"odd", *((name, b"%d" % i) for i, name in enumerate(self.ODD_NAMES)))
        single = [mail_of_files(b"odd%d" % i, (name, b"single %d" % i)) for i, name in enumerate(self.ODD_NAMES)]
        mails = mail(b"one") + odd + b"".join(single) + mail(b"last")
        self.write_inbox(mails)
        for move in ([], ["--move"]):
            code, _, err = self.run_program("import", LOCAL + "/Inbox/-", "--target", "archive", *move)
            self.assertEqual((code, err.splitlines()[-1].split(" = ")[0]), (0, "found 11"))
        self.assertEqual(self.inbox().count(b"X-Mozilla-Status: 0009"), 11)
        stored = [path.read_bytes().strip() for path in (self.work / "archive" / "files").rglob("*") if path.is_file()]
        for i in range(len(self.ODD_NAMES)):
            self.assertEqual((stored.count(b"%d" % i), stored.count(b"single %d" % i)), (1, 1))
        code, out, _ = self.run_program("search", "archive", "odd", "--json", sample=False)
        data = json.loads(out.splitlines()[0])["Data"]
        self.assertEqual([data[f"FileAttach{i}"].split("\r\n")[1] for i in (1, 2, 3, 6)],
                         ["file=..", "file=.", "file= ", "file=CON"])

    def test_no_attachment_takes_the_marker_of_the_temporary_folder(self):
        self.write_inbox(mail_of_files(b"marked", (b".in-use", b"1")), mail(b"last"))
        code, _, err = self.run_program("import", LOCAL + "/Inbox/-", "--target", "archive", "--move")
        self.assertEqual((code, err), (0, "found 2 = imported 2 + expunged 0 + failed 0\n"))

    def test_an_import_repeated_tells_what_was_there_already(self):
        self.write_inbox(mail(b"one"), mail(b"two"), mail(b"gone", status=b"X-Mozilla-Status: 0009\r\n"))
        # By these rules a mail may lose a file to another.
        command = ["import", LOCAL + "/Inbox/-", "--target", "archive", "--rules", "windows"]
        self.assertEqual(self.run_program(*command)[2], "found 3 = imported 2 + expunged 1 + failed 0\n")
        self.assertEqual(self.run_program(*command)[2],
                         "found 3 = imported 0 + already there 2 + expunged 1 + failed 0\n")
        self.write_inbox(mail(b"one"), mail(b"three"), mail_of_files(b"lost", (b"f", b"1"), (b"f", b"2")))
        for imported, there in ((1, 1), (0, 2)):
            code, _, err = self.run_program(*command)
            self.assertEqual((code, err.splitlines()[-1]),
                             (1, f"found 3 = imported {imported} + already there {there} + expunged 0 + failed 1"))

    def test_a_dry_run_of_an_import_tells_what_would_come_and_changes_nothing(self):
        def places():
            temporary.mkdir(exist_ok=True)
            return {str(path): (path.stat().st_mtime_ns, path.read_bytes() if path.is_file() else b"")
                    for path in sorted(self.work.rglob("*"))}
        temporary = self.work / "tmp"
        command = ["import", LOCAL + "/Inbox/-", "--target", "archive"]
        odd = mail_of_files(b"odd", *((name, b"%d" % i) for i, name in enumerate(self.ODD_NAMES)))
        self.write_inbox(mail(b"one"), odd)
        with unittest.mock.patch.dict(os.environ, TMPDIR=str(temporary)):
            before = places()
            code, out, err = self.run_program(*command, "--dry-run", "--move")
            self.assertEqual((code, out, err), (0, "", "found 2 = to import 2 + expunged 0 + failed 0\n"))
            self.assertEqual({**places(), str(temporary): 0}, {**before, str(temporary): 0})
            self.assertEqual(self.run_program(*command)[0], 0)
            self.write_inbox(mail(b"one"), mail(b"two"), mail(b"two"), odd)
            before = places()
            code, out, err = self.run_program(*command, "--dry-run")
            self.assertEqual((code, err), (0, "found 4 = to import 1 + already there 3 + expunged 0 + failed 0\n"))
            self.assertEqual({**places(), str(temporary): 0}, {**before, str(temporary): 0})
            self.assertEqual(self.run_program(*command)[2],
                             "found 4 = imported 1 + already there 3 + expunged 0 + failed 0\n")

    def test_a_mail_that_lost_a_file_to_another_ends_no_import(self):
        mails = mail(b"one") + mail_of_files(b"two", (b"att2", b"1"), (b"f", b"2")) + mail(b"three")
        self.write_inbox(mails)
        for _ in range(2):
            code, _, err = self.import_inbox("--move", "--rules", "windows")
            self.assertEqual(code, 1)
            self.assertIn(f"Local Folders/Inbox, mail at offset {len(mail(b'one'))}: one of two files called 'att2' is "
                          "lost", err)
            self.assertNotIn("before its time", err)
        self.assertEqual(self.inbox(), marked(mails, b"one", b"three"))
        code, out, _ = self.run_program("search", "archive", "two", sample=False)
        self.assertEqual(len(out.splitlines()), 2, "a mail that fails each time is in the archive once")

    def test_topics_of_a_later_import_reach_the_mails_that_are_there(self):
        self.import_inbox()
        self.import_inbox("--autotopic", "Rechnung = Finanzen")
        self.assertEqual([mail["Keywords"] for mail in self.search("Rechnung")],
                         ["Account=Local Folders,Inbox,Finanzen"])

    def test_an_import_repeated_keeps_each_mail_once(self):
        self.import_inbox()
        self.import_inbox()
        self.assertEqual(len(self.search()), 8)

    def test_search_finds_words_of_subjects_and_of_attachment_names(self):
        self.import_inbox()
        self.assertEqual([mail["Text"] for mail in self.search("Lageplan")], ["Einladung: Sommerfest für 5 €"])
        self.assertEqual([mail["Text"] for mail in self.search("Grüße")], ["Grüße aus Köln"])
        code, out, err = self.run_program("search", "archive", "nirgends", sample=False)
        self.assertEqual((code, out), (1, ""))

    def test_keywords_and_topics_reach_the_items(self):
        self.import_inbox("--keyword", "Privat", "--autotopic", "Rechnung = Finanzen, Post")
        mails = {mail["Text"]: mail["Keywords"] for mail in self.search()}
        self.assertEqual(mails["Neuigkeiten"], "Account=Local Folders,Inbox,Privat")
        self.assertEqual(mails["Rechnung | Januar"], "Account=Local Folders,Inbox,Privat,Finanzen,Post")

    def test_log_of_an_import(self):
        _, _, err = self.import_inbox("--verbose")
        lines = err.splitlines()
        self.assertRegex(lines[0], r"^Import Thunderbird .*archive$")
        self.assertRegex(lines[1], r"^ \d\d:\d\d:\d\d: /.*/AppData/Thunderbird/.*/Inbox$")
        self.assertRegex(lines[2], r"^  8 items in \d+ seconds")
        self.assertRegex(lines[3], r"^ \d\d:\d\d:\d\d finished \(8 Items\)$")

    def test_import_of_a_mailbox_file(self):
        code, _, err = self.run_program("import", str(self.samples / INBOX), "--target", "archive")
        self.assertEqual((code, err), (0, "found 9 = imported 8 + expunged 1 + failed 0\n"))

    def test_import_of_a_missing_mailbox_makes_no_archive(self):
        for source in ("/nosuch", LOCAL + "/NoSuch"):
            code, _, err = self.run_program("import", source, "--target", "archive")
            self.assertEqual(code, 3)
            self.assertIn("no such mailbox", err)
            self.assertFalse((self.work / "archive").exists())

    def test_search_in_a_folder_without_an_archive_says_so_and_makes_none(self):
        code, _, err = self.run_program("search", "archive", "x", sample=False)
        self.assertEqual(code, 3)
        self.assertIn("there is no archive", err)
        self.assertFalse((self.work / "archive").exists())

    def test_a_restored_mail_reads_as_it_was(self):
        self.import_inbox()
        code, out, _ = self.run_program(
            "restore", LOCAL + "/Sent/-", "20260114123000-nested-3@example.org", "--archive", "archive")
        self.assertEqual(code, 0)
        self.assertIn("appended: 'Einladung: Sommerfest", out)
        restored = self.read(LOCAL + "/Sent/-")[1]
        original = self.read(LOCAL + "/Inbox/-")[2]
        self.assertEqual(restored["ID"], original["ID"])
        self.assertEqual(restored["Text"], original["Text"])
        for address, number, folder in ((LOCAL + "/Sent/-", "2", "restored"), (LOCAL + "/Inbox/-", "3", "original")):
            self.assertEqual(self.run_program("get", address, number, "FileAttach1", "--output", folder)[0], 0)
        self.assertEqual([path.read_bytes() for path in (self.work / "restored").iterdir()],
                         [path.read_bytes() for path in (self.work / "original").iterdir()])

    def restore(self, *items, verb="restore"):
        return self.run_program(verb, LOCAL + "/Sent/-", *items, "--archive", "archive")

    def sent(self):
        return (self.samples / INBOX).with_name("Sent")

    def test_a_restored_attachment_keeps_its_type_and_its_name(self):
        def part(kind, disposition, content):
            return b"--B\r\nContent-Type: " + kind + b"\r\nContent-Disposition: attachment" + disposition + \
                   b"\r\nContent-Transfer-Encoding: base64\r\n\r\n" + base64.b64encode(content) + b"\r\n"
        long = "Ж" * 12 + " +.txt"
        self.write_inbox(mail(b"one", b"MIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=B\r\n",
                              b"--B\r\nContent-Type: text/plain\r\n\r\nbody\r\n" +
                              part(b"image/png; name=\"Lage plan.png\"", b"; filename=\"Lage plan.png\"", b"1") +
                              part(b"application/pdf", b"; filename=\"=?utf-8?Q?R=C3=BCck.pdf?=\"", b"2") +
                              part(b"text/plain; charset=utf-8", b"; filename*=UTF-8''" +
                                   urllib.parse.quote(long).encode(), b"3") +
                              part(b"message/rfc822", b"; filename=a.eml", b"Subject: inner\r\n\r\n4\r\n") +
                              b"--B--\r\n"))
        self.import_inbox()
        before = self.sent().read_bytes()
        self.assertEqual(self.restore("1")[0], 0)
        restored = email.message_from_bytes(self.sent().read_bytes()[len(before):].split(b"\r\n", 1)[1])
        attached = [part for part in restored.walk() if part.get_content_disposition() == "attachment"]
        self.assertEqual([(part.get_content_type(), part.get_content_charset(), part.get_filename(),
                           part.get_payload(decode=True)) for part in attached],
                         [("image/png", None, "Lage plan.png", b"1"), ("application/pdf", None, "Rück.pdf", b"2"),
                          ("text/plain", "utf-8", long, b"3"), ("message/rfc822", None, "a.eml", None)])
        self.assertEqual(attached[3].get_payload(0)["Subject"], "inner")
        self.assertEqual(attached[3].get_payload(0).get_payload(), "4\r\n")
        # What mail programs without RFC 2231 show.
        name = email.header.make_header(email.header.decode_header(attached[1].get_param("name")))
        self.assertEqual(str(name), "Rück.pdf")

    def test_numbers_of_search_are_those_of_restore(self):
        self.import_inbox()
        _, out, _ = self.run_program("search", "archive", "Lageplan", sample=False)
        self.assertEqual(out.splitlines()[1].split()[0], "3")
        code, out, _ = self.restore("3")
        self.assertEqual(code, 0)
        self.assertIn("appended: 'Einladung: Sommerfest", out)

    def test_mails_of_one_id_are_told_apart_by_their_numbers(self):
        self.write_inbox(*(mail(b"x", b"X-Number: %d\r\n" % n) for n in (1, 2, 3)))
        self.import_inbox()
        before = self.sent().read_bytes()
        code, out, err = self.restore("20260112081528-x@x")
        self.assertEqual((code, out), (1, ""))
        self.assertIn("3 mails in archive have the ID 20260112081528-x@x", err)
        self.assertEqual(self.sent().read_bytes(), before)
        self.assertEqual(self.restore("2", "3")[0], 0)
        self.assertEqual(self.restore("1", verb="shortcut")[0], 0)
        added = self.sent().read_bytes()[len(before):]
        self.assertEqual([line for line in added.split(b"\r\n") if line.startswith(b"X-Number")],
                         [b"X-Number: 2", b"X-Number: 3", b"X-Number: 1"])

    def test_mails_are_appended_behind_an_empty_line_only(self):
        self.import_inbox()
        for end, code in ((b"hello", 1), (b"hello\r\n", 1), (b"\r\nhello\n", 1), (b"hello\r\n\r\n", 0),
                          (b"hello\n\n", 0), (b"hello\n\r\n", 0), (b"\r\n", 0), (b"", 0)):
            for verb in ("restore", "shortcut"):
                self.sent().write_bytes(end)
                done, out, err = self.restore("1", verb=verb)
                self.assertEqual(done, code, end)
                if code == 1:
                    self.assertEqual((out, self.sent().read_bytes()), ("", end))
                    self.assertIn(f"{self.sent()}: 'Grüße aus Köln' can't be appended, as the mailbox doesn't end in "
                                  "an empty line", err)
                else:
                    self.assertTrue(self.sent().read_bytes().startswith(end + b"From - "))
        self.sent().write_bytes(b"hello\n\n")
        self.assertEqual(self.restore("1", "--rules", "windows")[0], 1)

    def test_a_mail_whose_attachment_is_gone_is_not_restored(self):
        self.import_inbox()
        (attachment,) = (self.work / "archive").rglob("*Lageplan.png")
        attachment.unlink()
        before = tree_bytes(self.samples)
        code, out, err = self.restore("3", "1")
        self.assertEqual(code, 1)
        self.assertIn("the attachment 'Lageplan.png' is missing in the archive: ", err)
        self.assertEqual(out.count("appended"), 1)
        self.assertTrue(self.sent().read_bytes().startswith(before[str(self.sent().relative_to(self.samples))]))
        self.assertNotIn(b"Sommerfest", self.sent().read_bytes())

    def test_an_attachment_that_comes_back_empty_is_told(self):
        self.write_inbox(mail_of_files(b"one", (b"a.txt", b"x" * 54), (b"b.txt", b"x" * 53)))
        self.import_inbox()
        code, out, err = self.restore("1")
        self.assertEqual((code, err), (0, ""))
        self.assertIn(base64.b64encode(b"x" * 54), self.sent().read_bytes())
        code, out, err = self.restore("1", "--rules", "windows")
        self.assertEqual(code, 0)
        self.assertEqual(
            err, "vorlent-mozilla: the attachment 'a.txt' comes back empty, as every one of 54 bytes does\n")

    def test_a_mail_that_was_written_in_part_is_told(self):
        self.write_inbox(mail(b"one", body=b"text\r\n" * 50000))
        self.import_inbox()
        before = self.sent().read_bytes()

        code, out, err = self.run_program("restore", LOCAL + "/Sent/-", "1", "--archive", "archive",
                                          preexec_fn=file_size_limit(200000))
        self.assertEqual((code, out), (1, ""))
        self.assertIn(f"'one' was appended in part only, at offset {len(before)}", err)
        self.assertEqual(len(self.sent().read_bytes()), 200000)

    def test_a_shortcut_links_to_the_archived_mail(self):
        self.import_inbox()
        for rules, charset, encoding in (("today", b"; charset=UTF-8", "utf-8"), ("windows", b"", "cp1252")):
            before = self.sent().read_bytes()
            self.assertEqual(self.restore("1", "--rules", rules, verb="shortcut")[0], 0)
            after = self.sent().read_bytes()
            self.assertTrue(after.startswith(before))
            added = after[len(before):]
            self.assertIn(b"Content-Type: text/html" + charset + b'\r\n\r\n<A HREF="sendarium:', added)
            self.assertTrue(added.endswith("\">Mail aus Archiv öffnen</A>\r\n\r\n".encode(encoding)))

    def test_restore_of_an_unknown_mail_writes_nothing(self):
        self.import_inbox()
        before = tree_bytes(self.samples)
        code, _, err = self.run_program("restore", LOCAL + "/Sent/-", "nosuch", "--archive", "archive")
        self.assertEqual(code, 1)
        self.assertIn("no item nosuch", err)
        self.assertEqual(tree_bytes(self.samples), before)

    def test_restore_into_a_read_only_mailbox_says_so(self):
        self.import_inbox()
        (self.samples / INBOX).with_name("Sent").chmod(0o444)
        code, _, err = self.run_program("restore", LOCAL + "/Sent/-", "1", "--archive", "archive")
        self.assertEqual(code, 1)
        self.assertRegex(err, "could not be appended: .+\n")

    # --- Bookmarks and calendars ----------------------------------------------------------------------------------

    def test_control_characters_of_a_mail_do_not_reach_the_terminal(self):
        box = self.samples / INBOX
        box.write_bytes(b"From - x\r\nSubject: a\x1b[31mb\r\nDate: Mon, 12 Jan 2026 08:15:28 +0100\r\n\r\nx\r\n\r\n"
                        b"From - y\r\nSubject: last\r\n\r\n")
        code, out, _ = self.run_program("read", LOCAL + "/Inbox/-")
        self.assertEqual(code, 0)
        self.assertNotIn("\x1b", out)
        self.assertIn("a [31mb", out)

    # --- Bookmarks ------------------------------------------------------------------------------------------------

    def firefox(self, *names):
        return self.samples.joinpath("AppData/Mozilla/FireFox/Profiles/k7f2m4ax.default", *names)

    def database(self, sql):
        with contextlib.closing(sqlite3.connect(self.firefox("places.sqlite"))) as places:
            places.executescript(sql)

    def test_bookmarks_are_read_and_leave_the_profile_as_it_was(self):
        before = tree_bytes(self.samples)
        first = self.read("firefox://default/menu/")[0]
        self.assertEqual((first["Type"], first["Text"], first["Date"], first["Keywords"]),
                         ("url", "Example", "15.01.2026 10:00:01", "menu"))
        self.assertEqual(first["Data"], {"Url": "https://www.example.org/"})
        self.assertEqual(self.run_program("browse", "firefox://default/menu/Größen & Maße/*")[0], 0)
        self.assertEqual(tree_bytes(self.samples), before)

    def test_bookmarks_are_exported_into_the_profile(self):
        before = tree_bytes(self.samples)
        code, out, err = self.run_program("bookmarks", "firefox://default")
        file = self.firefox("bookmarks.html")
        self.assertEqual((code, out, err), (0, f"{file}\n", ""))
        text = file.read_text()
        self.assertIn(">Größe &quot;XL&quot;, Übermaß</A>\n", text)
        self.assertEqual(text.count("<DT><A HREF="), 14)
        file.unlink()
        self.assertEqual(tree_bytes(self.samples), before)

    def test_a_copy_of_the_export_goes_where_it_is_wanted(self):
        copy = self.work / "copy.html"
        code, out, err = self.run_program("bookmarks", "firefox://default/menu/", "--output", str(copy))
        self.assertEqual((code, out), (0, f"{copy}\n"))
        self.assertIn(f"written into the profile: {self.firefox('bookmarks.html')}", err)
        self.assertEqual(copy.read_bytes(), self.firefox("bookmarks.html").read_bytes())

    def test_export_that_can_not_be_copied_is_told(self):
        code, out, err = self.run_program("bookmarks", "firefox://default", "--output", "/nosuch/copy.html")
        self.assertEqual((code, out), (3, ""))
        self.assertIn("/nosuch/copy.html could not be written", err)
        self.assertFalse(self.firefox("bookmarks.html").exists())

    def test_a_copy_is_written_where_the_profile_takes_none(self):
        self.firefox("bookmarks.html").mkdir()
        copy = self.work / "copy.html"
        code, out, err = self.run_program("bookmarks", "firefox://default", "--output", str(copy))
        self.assertEqual((code, out), (0, f"{copy}\n"), err)
        self.assertIn(f"{self.firefox('bookmarks.html')}: ", err)
        self.assertEqual(copy.read_text().count("<DT><A HREF="), 14)

    def test_only_bookmarks_are_exported(self):
        for address in (LOCAL + "/Inbox/-", "firefox://default/*"):
            code, out, err = self.run_program("bookmarks", address)
            self.assertEqual((code, out), (2, ""))
            self.assertIn("is no place of bookmarks", err)

    def test_nothing_is_exported_where_nothing_could_be_read(self):
        self.firefox("bookmarks.html").write_bytes(b"earlier")
        for sql, expected, message in (
                ("DELETE FROM moz_bookmarks WHERE type=1", 1, "no bookmarks at firefox://default"),
                ("ALTER TABLE moz_bookmarks DROP COLUMN title", 3, "no such column"),
                ("DROP TABLE moz_bookmarks", 3, "no such table: moz_bookmarks")):
            self.database(sql)
            code, out, err = self.run_program("bookmarks", "firefox://default")
            self.assertEqual((code, out), (expected, ""), err)
            self.assertIn(message, err)
        self.assertEqual(self.firefox("bookmarks.html").read_bytes(), b"earlier")

    def assert_unreadable(self, reason, code=3, commands=("read", "browse", "bookmarks"), address="firefox://default"):
        """Each command ends with the code, tells reason and file, gives no result and changes nothing."""
        before = tree_bytes(self.samples)
        self.assert_told(reason, code, commands, address)
        self.assertEqual(tree_bytes(self.samples), before)

    def assert_told(self, reason, code=3, commands=("read", "browse", "bookmarks"), address="firefox://default",
                    rules="today"):
        for command in commands:
            done, out, err = self.run_program("--rules", rules, command, address)
            self.assertEqual((done, out), (code, ""), f"{command}: {err}")
            self.assertIn(reason, err, command)
            self.assertIn(str(self.firefox("places.sqlite")), err, command)

    def test_a_missing_database_is_told(self):
        self.firefox("places.sqlite").unlink()
        self.assert_unreadable("places.sqlite: no such file", code=1)
        self.assertFalse(self.firefox("places.sqlite").exists())

    def test_a_missing_profile_folder_is_told(self):
        self.firefox().rename(self.work / "moved")
        self.assert_unreadable("places.sqlite: no such file", code=1)

    def test_an_empty_database_is_told(self):
        self.firefox("places.sqlite").write_bytes(b"")
        self.assert_unreadable("no such table: moz_bookmarks")

    def test_a_file_that_is_no_database_is_told(self):
        self.firefox("places.sqlite").write_bytes(b"x" * 5000)
        self.assert_unreadable("file is not a database")

    def test_a_damaged_database_is_told(self):
        content = bytearray(self.firefox("places.sqlite").read_bytes())
        content[100:] = b"\xff" * (len(content) - 100)
        self.firefox("places.sqlite").write_bytes(content)
        self.assert_unreadable("malformed")

    def test_a_database_of_other_columns_is_told(self):
        self.database("ALTER TABLE moz_bookmarks DROP COLUMN dateAdded")
        self.assert_unreadable("no such column: moz_bookmarks.dateAdded", commands=("read", "bookmarks"))
        self.database("ALTER TABLE moz_bookmarks DROP COLUMN title")
        self.assert_unreadable("no such column: title", commands=("browse",))

    def test_a_locked_database_is_told(self):
        before = tree_bytes(self.samples)
        with contextlib.closing(sqlite3.connect(self.firefox("places.sqlite"))) as firefox:
            firefox.execute("BEGIN EXCLUSIVE")
            # Reading the file here would end the lock: closing it drops those of the whole process.
            self.assert_told("database is locked", rules="windows")
            self.assert_told("please close FireFox", rules="windows")
        self.assertEqual(tree_bytes(self.samples), before)

    def test_a_folder_of_many_rows_is_read(self):
        self.database("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<40000) "
                      "INSERT INTO moz_bookmarks(type, parent, position, title) SELECT 2, 6, i, 'x' FROM n")
        self.assertEqual(self.run_program("read", "firefox://default")[0], 0)
        self.assertEqual(self.run_program("browse", "firefox://default/mobile")[0], 0)
        for command in ("read", "bookmarks"):
            code, out, err = self.run_program("--rules", "windows", command, "firefox://default")
            self.assertEqual((code, out), (3, ""), command)
            self.assertIn("the result has 40000 rows, at most 32767 fit", err)

    def test_a_circle_of_folders_is_named_and_all_else_is_read(self):
        whole = self.run_program("read", "firefox://default", "--json")[1].count("\n")
        self.database("INSERT INTO moz_bookmarks(id, type, parent, position, title) VALUES(0, 2, 6, 0, 'circle')")
        code, out, err = self.run_program("read", "firefox://default", "--json")
        self.assertEqual((code, out.count("\n")), (1, whole), err)
        self.assertRegex(err, "places.sqlite: .*0 'circle': .*folder 0 lies within itself")
        code, out, err = self.run_program("bookmarks", "firefox://default")
        self.assertEqual((code, out), (1, f"{self.firefox('bookmarks.html')}\n"), err)
        self.assertRegex(err, "places.sqlite: .*0 'circle': .*folder 0 lies within itself")
        self.firefox("bookmarks.html").unlink()
        for command in ("read", "bookmarks"):
            code, out, err = self.run_program("--rules", "windows", command, "firefox://default")
            self.assertEqual((code, out), (3, ""), command)
            self.assertIn("folder 0 lies within itself", err)

    def test_an_export_that_can_not_be_written_is_told(self):
        for make in (lambda file: file.mkdir(), lambda file: (file.write_bytes(b"earlier"), file.chmod(0o444))):
            file = self.firefox("bookmarks.html")
            make(file)
            before = tree_bytes(self.samples)
            code, out, err = self.run_program("bookmarks", "firefox://default")
            self.assertEqual((code, out), (3, ""))
            self.assertIn(f"{file}: ", err)
            self.assertEqual(tree_bytes(self.samples), before)
            file.rmdir() if file.is_dir() else file.unlink()

    # --- Calendars ------------------------------------------------------------------------------------------------

    def sunbird(self, *names):
        return self.samples.joinpath("AppData/Mozilla/Sunbird/Profiles/h7w2m4tz.default", *names)

    def calendar_rows(self, sql):
        with contextlib.closing(sqlite3.connect(self.sunbird("storage.sdb"))) as storage:
            return storage.execute(sql).fetchall()

    def work_items(self):
        return self.read("sunbird://default/Arbeit")

    def add_event(self, *arguments):
        code, out, err = self.run_program("calendar", "add", "sunbird://default/Arbeit", *arguments)
        self.assertEqual((code, err), (0, ""))
        return out.split()[-1]

    def test_calendars_are_listed_and_read_and_left_as_they_were(self):
        before = tree_bytes(self.samples)
        code, out, _ = self.run_program("browse", "sunbird://default", "--json")
        self.assertEqual((code, [json.loads(line)["Data"]["Location"] for line in out.splitlines()]),
                         (0, ["sunbird://default/Privat/", "sunbird://default/Arbeit/"]))
        items = self.read("sunbird://default/Privat")
        self.assertEqual([item["Text"] for item in items][:3],
                         ["Nacht der Zeitumstellung", "Frühstück | Brunch", "Die doppelte Stunde"])
        self.assertEqual((items[0]["Date"], items[0]["Data"]["DateEnd"]), ("27.03.2010 23:30", "28.03.2010 03:30"))
        self.assertEqual(items[1]["Data"]["Location"], "Café Müller | Terrasse")
        self.assertEqual(tree_bytes(self.samples), before)

    def test_an_event_is_added_changed_moved_and_removed(self):
        identity = self.add_event("--text", "Übergabe", "--start", "09.05.2010 14:30", "--end", "09.05.2010 15:00")
        self.assertEqual(self.calendar_rows(
            f"SELECT cal_id, title, event_start, event_end, flags FROM cal_events WHERE id='{identity}'"),
            [(2, "Übergabe", 1273408200000000, 1273410000000000, 4)])
        event = next(item for item in self.work_items() if item["ID"] == identity)
        self.assertEqual((event["Text"], event["Date"], event["Data"]["DateEnd"], event["Data"]["Location"]),
                         ("Übergabe", "09.05.2010 14:30", "09.05.2010 15:00", ""))

        code, out, err = self.run_program("calendar", "set", "sunbird://default/Arbeit", identity, "--text", "Besuch",
                                          "--start", "28.03.2010 01:30", "--end", "28.03.2010 03:30",
                                          "--location", "Großer Saal")
        self.assertEqual((code, out, err), (0, f"changed: 'Besuch' {identity}\n", ""))
        event = next(item for item in self.work_items() if item["ID"] == identity)
        self.assertEqual((event["Text"], event["Date"], event["Data"]["DateEnd"], event["Data"]["Location"]),
                         ("Besuch", "28.03.2010 01:30", "28.03.2010 03:30", "Großer Saal"))
        self.assertEqual(self.calendar_rows(f"SELECT event_end-event_start FROM cal_events WHERE id='{identity}'"),
                         [(3600000000,)])
        self.assertEqual(self.calendar_rows(f"SELECT key, value FROM cal_properties WHERE item_id='{identity}'"),
                         [("LOCATION", "Großer Saal")])

        code, out, err = self.run_program("calendar", "remove", "sunbird://default/Arbeit", identity)
        self.assertEqual((code, out, err), (0, "removed: 'Besuch'\n", ""))
        self.assertNotIn(identity, [item["ID"] for item in self.work_items()])
        self.assertEqual(self.calendar_rows(f"SELECT * FROM cal_properties WHERE item_id='{identity}'"), [])

    def test_an_event_lasts_an_hour_unless_told_otherwise(self):
        identity = self.add_event("--text", "x", "--start", "28.03.2010 01:30")
        event = next(item for item in self.work_items() if item["ID"] == identity)
        self.assertEqual(event["Data"]["DateEnd"], "28.03.2010 03:30")

    def test_a_second_location_is_added_behind_the_first_and_that_is_told(self):
        code, out, err = self.run_program("calendar", "set", "sunbird://default/Arbeit", "1", "--location", "Raum 7")
        self.assertEqual(code, 0)
        self.assertIn("keeps the location 'Raum 5' in front of the new one", err)
        self.assertEqual(self.work_items()[0]["Data"]["Location"], "Raum 5")
        self.assertEqual(self.calendar_rows("SELECT value FROM cal_properties WHERE key='LOCATION' AND "
                                            "item_id LIKE '%f05'"), [("Raum 5",), ("Raum 6",), ("Raum 7",)])

    def calendar_dump(self):
        with contextlib.closing(sqlite3.connect(self.sunbird("storage.sdb"))) as database:
            return list(database.iterdump())

    def test_no_text_of_an_event_leaves_its_place(self):
        first = self.work_items()[0]["ID"]
        before = self.calendar_dump()
        for option, text in (("--text", "Anna' --Notiz"), ("--text", "x' OR 'a'='a"), ("--text", "''"),
                             ("--location", "x' OR 'a'='a"), ("--location", "x' --")):
            code, out, err = self.run_program(
                "--rules", "windows", "--log", "calendar", "set", "sunbird://default/Arbeit", first, option, text)
            self.assertEqual((code, out), (1, ""), text)
            self.assertRegex(err, "1<-[^\\n]*'" + re.escape(text))
            self.assertNotIn("in front of the new one", err)
            changed = [line for line in self.calendar_dump() if line not in before]
            # A location has its event's time of change written before it.
            self.assertEqual(len(changed), 1 if option == "--location" else 0, text)
            self.assertTrue(all("cal_events" in line and "Besprechung" in line for line in changed))

    def test_removing_an_event_whose_id_holds_quotes_leaves_the_others(self):
        identity = "x' OR 'a'='a"
        with contextlib.closing(sqlite3.connect(self.sunbird("storage.sdb"))) as database:
            database.execute("INSERT INTO cal_events (cal_id, id, title, time_created, last_modified, event_start, "
                             "event_end) VALUES (2, ?, 'Einladung', 0, 0, 0, 0)", (identity,))
            database.commit()
        before = self.calendar_dump()
        self.assertEqual([item["Data"]["Location"] for item in self.work_items() if item["ID"] == identity], [""])
        code, out, err = self.run_program("--rules", "windows", "--log", "calendar", "remove",
                                          "sunbird://default/Arbeit", identity)
        self.assertEqual((code, out), (1, ""))
        self.assertIn(f"1<-DELETE FROM cal_events WHERE id='{identity}';", err)
        self.assertIn(f"1<-DELETE FROM cal_properties WHERE item_id='{identity}';", err)
        self.assertEqual(self.calendar_dump(), before)

    def test_a_task_is_added_changed_and_removed(self):
        identity = self.add_event("--task", "--text", "Anrufen | dringend")
        self.assertEqual([item["Text"] for item in self.work_items() if item["ID"] == identity],
                         ["Anrufen | dringend"])
        self.assertEqual(self.run_program("calendar", "set", "sunbird://default/Arbeit", identity, "--text", "Ab")[0],
                         0)
        self.assertEqual(self.calendar_rows(f"SELECT cal_id, title FROM cal_todos WHERE id='{identity}'"), [(2, "Ab")])
        self.assertEqual(self.run_program("calendar", "remove", "sunbird://default/Arbeit", identity, "2")[0], 0)
        self.assertEqual(self.calendar_rows("SELECT * FROM cal_todos WHERE cal_id=2"), [])

    def test_rows_of_the_first_calendar_are_written_under_0(self):
        code, _, _ = self.run_program("calendar", "add", "sunbird://default/Privat", "--task", "--text", "Blumen")
        self.assertEqual(code, 0)
        self.assertEqual(self.calendar_rows("SELECT cal_id FROM cal_todos WHERE title='Blumen'"), [(0,)])
        self.assertIn("Blumen", [item["Text"] for item in self.read("sunbird://default/Privat")])

    def test_the_database_log_shows_every_statement(self):
        code, _, err = self.run_program("--log", "calendar", "set", "sunbird://default/Arbeit", "1", "--text", "Neu")
        self.assertEqual(code, 0)
        self.assertRegex(err, r"RedoAction: \d{14} 5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f05 ChangeText: Neu")
        self.assertRegex(err, r"DBConnect: \w+ \(Driver=\{SQLite3 ODBC Driver\};Database=.*storage.sdb;Timeout=2000\)")
        self.assertRegex(err, r"0<-UPDATE cal_events SET title='Neu', last_modified=\d+000000 WHERE id='5d0c")

    def test_a_text_that_the_database_refuses_is_told_and_changes_nothing(self):
        before = tree_bytes(self.samples)
        for text in ("Anna's", "x'; DELETE FROM cal_events; --"):
            code, out, err = self.run_program("--rules", "windows", "calendar", "set", "sunbird://default/Arbeit", "1",
                                              "--text", text)
            self.assertEqual((code, out), (1, ""))
            self.assertIn("the database refused: UPDATE cal_events SET title='" + text, err)
            self.assertIn("WHERE id='5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f05'; -> 1\n", err)
        self.assertEqual(tree_bytes(self.samples), before)

    def test_a_locked_calendar_is_told(self):
        with contextlib.closing(sqlite3.connect(self.sunbird("storage.sdb"))) as sunbird:
            sunbird.execute("BEGIN EXCLUSIVE")
            code, out, err = self.run_program("calendar", "remove", "sunbird://default/Arbeit", "1")
        self.assertEqual((code, out), (3, ""))
        self.assertIn("database is locked", err)

    def test_times_that_the_calendar_can_not_keep_are_wrong_use(self):
        before = tree_bytes(self.samples)
        for command, message in (
                (("add", "--text", "x", "--start", "soon"), "'soon' is no date and time"),
                (("add", "--text", "x", "--start", "01.02.2038 00:00"), "is no time that the calendar can keep"),
                (("add", "--text", "x", "--start", "09.05.2010 14:30", "--end", "09.05.2010 14:29"), "lies before"),
                (("add", "--text", "x"), "an event needs a --start"),
                (("add", "--text", "x", "--task", "--end", "09.05.2010 14:30"), "a task has no start"),
                (("set", "1", "--end", "01.01.2010 00:00"), "lies before"),
                (("set", "2", "--location", "x"), "a task has no start"),
                (("set", "1"), "nothing to set")):
            code, out, err = self.run_program("--rules", "windows", "calendar", command[0], "sunbird://default/Arbeit",
                                              *command[1:])
            self.assertEqual((code, out), (2, ""), command)
            self.assertIn(message, err)
        self.assertEqual(tree_bytes(self.samples), before)

    def test_an_event_that_is_stored_with_its_end_before_its_start_takes_other_changes(self):
        with contextlib.closing(sqlite3.connect(self.sunbird("storage.sdb"))) as storage:
            storage.execute("UPDATE cal_events SET event_end=event_start-1000000 WHERE id LIKE '5d0c7a66%'")
            storage.commit()
        code, _, err = self.run_program("calendar", "set", "sunbird://default/Arbeit", "1", "--text", "Neu",
                                        "--location", "Raum 5")
        self.assertEqual((code, err), (0, ""))
        self.assertEqual(self.work_items()[0]["Text"], "Neu")
        code, _, err = self.run_program("calendar", "set", "sunbird://default/Arbeit", "1", "--start",
                                        "01.01.2011 00:00")
        self.assertEqual(code, 2)
        self.assertIn("lies before", err)

    def test_an_item_told_twice_is_removed_once(self):
        code, out, err = self.run_program("calendar", "remove", "sunbird://default/Arbeit", "1", "1", "nosuch")
        self.assertEqual((code, len(out.splitlines())), (1, 1))
        self.assertIn("no item nosuch at sunbird://default/Arbeit", err)

    def test_only_one_calendar_is_changed_at_a_time(self):
        for address in ("sunbird://", "sunbird://default", "sunbird://default/*", "thunderbird://default/Local Folders",
                        "firefox://default/menu/"):
            code, out, err = self.run_program("calendar", "remove", address, "1")
            self.assertEqual((code, out), (2, ""))
            self.assertIn(f"'{address}' names no calendar", err)

    def test_missing_calendars_and_items_are_told(self):
        code, _, err = self.run_program("calendar", "remove", "sunbird://default/Nichts", "1")
        self.assertEqual(code, 3)
        self.assertIn("sunbird://default/Nichts could not be read", err)
        code, _, err = self.run_program("calendar", "set", "sunbird://default/Arbeit", "99", "--text", "x")
        self.assertEqual(code, 1)
        self.assertIn("no item 99 at sunbird://default/Arbeit", err)
        self.assertEqual(self.run_program("calendar")[0], 2)


if __name__ == "__main__":
    unittest.main(verbosity=1)
