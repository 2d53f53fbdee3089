#!/usr/bin/env python3
"""Mailboxes of any size, copies of mails, and mailboxes that grow, through the command line.

usage: mailboxes_test.py PROGRAM ROOT [unittest arguments]
"""
import json
import resource
import shutil
import subprocess
import unittest
import unittest.mock

from program_case import INBOX, LOCAL, ProgramCase, mail

GIGABYTE = 1 << 30


def copy_of(subject, body=b"text\n"):
    """A mail of an ID that all copies share."""
    return mail(b"copy", b"", body).replace(b"Subject: copy", b"Subject: " + subject)


class MailboxCase(ProgramCase):
    def setUp(self):
        super().setUp()
        self.inbox = self.samples / INBOX
        self.sent = self.inbox.with_name("Sent")
        self.sent.write_bytes(b"")
        self.summarize()

    def summarize(self):
        """What Thunderbird does: without its summary, which goes with a mark, a mailbox counts as none."""
        for mailbox in (self.inbox, self.sent):
            mailbox.with_name(mailbox.name + ".msf").write_bytes(b"")

    def read(self, address=LOCAL + "/Inbox/-"):
        code, out, err = self.run_program("read", address, "--json")
        self.assertEqual(code, 0, err)
        return [json.loads(line) for line in out.splitlines()]

    def subjects_by_id(self, address=LOCAL + "/Inbox/-"):
        return {item["ID"]: item["Text"] for item in self.read(address)}

    def run_import(self, *options):
        code, _, err = self.run_program("import", LOCAL + "/Inbox/-", LOCAL + "/Sent/-", "--target", "archive",
                                        *options)
        self.assertIn(code, (0, 1), err)
        return err.splitlines()[-1]


class Mailboxes(MailboxCase):
    # --- Copies

    def test_a_copy_is_brought_out_marked_and_restored_by_its_number(self):
        self.inbox.write_bytes(copy_of(b"one", b"1\r\n") + copy_of(b"two", b"22\r\n") + copy_of(b"three", b"333\r\n"))
        first, second, third = (item["ID"] for item in self.read())
        self.assertEqual((second, third), (first + "~2", first + "~3"))
        code, _, err = self.run_program("get", LOCAL + "/Inbox/-", second, "File", "--output", "out")
        self.assertEqual(code, 0, err)
        self.assertIn(b"\r\n\r\n22\r\n", next((self.work / "out").iterdir()).read_bytes())
        self.run_import()
        before = self.inbox.read_bytes()
        code, out, err = self.run_program("--yes", "delete", LOCAL + "/Inbox/-", second)
        self.assertEqual(code, 0, err)
        self.assertIn("'two'", out)
        place = before.index(b"0001", before.index(b"0001") + 1) + 3
        self.assertEqual(self.inbox.read_bytes(), before[:place] + b"9" + before[place + 1:])
        # The others keep their numbers, so that the same command names no other mail.
        self.assertEqual(self.subjects_by_id(), {first: "one", third: "three"})
        code, out, err = self.run_program("--yes", "delete", LOCAL + "/Inbox/-", second)
        self.assertEqual(code, 1)
        self.assertIn("no item " + second, err)
        code, out, err = self.run_program("search", "archive", "--json")
        self.assertEqual([(item["ID"], item["Text"]) for item in map(json.loads, out.splitlines())],
                         [(first, "one"), (second, "two"), (third, "three")])
        for words, wanted in (("three", third), ("one", first)):
            code, out, err = self.run_program("search", "archive", words)
            self.assertEqual(out.split()[-1], wanted)
        code, out, err = self.run_program("search", "archive", "--json", "--rules", "windows")
        self.assertEqual({json.loads(line)["ID"] for line in out.splitlines()}, {first})
        for wanted, subject in ((second, "two"), (first + "~1", "one"), (third, "three")):
            code, out, err = self.run_program("--yes", "restore", LOCAL + "/Sent/-", wanted, "--archive", "archive")
            self.assertEqual(code, 0, err)
            self.assertIn(f"appended: '{subject}'", out)
        self.assertEqual([item["Text"] for item in self.read(LOCAL + "/Sent/-")], ["two", "one", "three"])
        for wanted in (first + "~4", first + "~0", "~2", first):
            code, _, err = self.run_program("--yes", "restore", LOCAL + "/Sent/-", wanted, "--archive", "archive")
            self.assertEqual(code, 1, err)

    def test_copies_are_streamed_under_the_numbers_of_the_list(self):
        self.inbox.write_bytes(copy_of(b"one") + copy_of(b"two"))
        code, out, err = self.run_program("stream", LOCAL + "/Inbox/-", "--json")
        self.assertEqual(code, 0, err)
        streamed = [json.loads(line) for line in out.splitlines()]
        self.assertEqual({item["ID"]: item["Text"] for item in streamed}, self.subjects_by_id())

    def test_a_restored_mail_is_told_where_its_old_id_is_asked_for(self):
        self.inbox.write_bytes(copy_of(b"one"))
        wanted = self.read()[0]["ID"]
        self.run_import()
        for verb in ("delete", "restore"):
            more = ["--archive", "archive"] if verb == "restore" else []
            code, _, err = self.run_program("--yes", verb, LOCAL + "/Inbox/-", wanted, *more)
            self.assertEqual(code, 0, err)
        for arguments in (("get", LOCAL + "/Inbox/-", wanted), ("--yes", "delete", LOCAL + "/Inbox/-", wanted)):
            code, _, err = self.run_program("--language", "en", *arguments)
            self.assertEqual(code, 1)
            self.assertIn("A mail of this ID is there as " + wanted + "~2.", err)
        self.assertEqual(self.run_program("--yes", "delete", LOCAL + "/Inbox/-", wanted + "~2")[0], 0)
        code, _, err = self.run_program("--yes", "delete", LOCAL + "/Inbox/-", wanted)
        self.assertNotIn("A mail of this ID", err)

    def test_what_the_mail_client_or_the_clock_changes_makes_no_mail_another(self):
        marks = b"X-Mozilla-Status: %b\r\nX-Mozilla-Status2: %b\r\nX-Mozilla-Keys: %b\r\n"

        def write(status=b"0000", status2=b"00000000", keys=b" " * 80, separator=b"From - x\r\n"):
            head = marks % (status, status2, keys)
            mails = mail(b"one", status=head) + mail(b"two", status=head)
            self.inbox.write_bytes(mails.replace(b"From - x\r\n", separator))

        def expect_known():
            self.assertEqual(self.run_import("--dry-run"),
                             "found 2 = to import 0 + already there 2 + expunged 0 + failed 0")
            self.assertEqual(self.run_import(), "found 2 = imported 0 + already there 2 + expunged 0 + failed 0")
        write()
        self.assertEqual(self.run_import(), "found 2 = imported 2 + expunged 0 + failed 0")
        for change in ({"status": b"0001"}, {"status": b"0007"}, {"status2": b"10400000"}, {"keys": b"$label1 work"},
                       {"separator": b"From - Sun Nov 22 15:00:00 2026\r\n"},
                       {"separator": b"From a@b.c Mon Jan  5 10:00:00 2026\r\n"}):
            with self.subTest(change=change):
                write(**change)
                expect_known()
        berlin = self.environment()
        with unittest.mock.patch.object(self, "environment", lambda home=None: dict(berlin, TZ="America/New_York")):
            expect_known()

    def test_a_mail_is_the_same_however_often_it_is_restored(self):
        related = b"MIME-Version: 1.0\r\nContent-Type: multipart/related; boundary=R\r\n"
        picture = (b"--R\r\nContent-Type: image/png; name=\"pic.png\"\r\nContent-Transfer-Encoding: base64\r\n"
                   b"Content-ID: <part1.A@b.c>\r\nContent-Disposition: inline; filename=\"pic.png\"\r\n\r\nQUFB\r\n")
        html = b"--R\r\nContent-Type: text/html\r\n\r\n<img src=\"cid:part1.A@b.c\">\r\n"
        for original in (mail(b"plain"), mail(b"blank", body=b"text\r\n\r\n"),
                         mail(b"picture", related, html + picture + b"--R--\r\n")):
            self.sent.write_bytes(original)
            for turn in range(3):
                archive = f"archive{turn}"
                self.assertEqual(self.run_program("import", LOCAL + "/Sent/-", "--target", archive)[0], 0)
                self.sent.write_bytes(b"")
                code, _, err = self.run_program("--yes", "restore", LOCAL + "/Sent/-", "1", "--archive", archive)
                self.assertEqual(code, 0, err)
                restored = self.sent.read_bytes()
                shutil.rmtree(self.work / archive)
                # The content type comes last.
                self.assertEqual(sorted(restored.splitlines()), sorted(original.splitlines()))
                self.assertEqual(restored.split(b"\r\n\r\n", 1)[1], original.split(b"\r\n\r\n", 1)[1])

    def test_copies_of_other_places_are_items_of_the_archive(self):
        self.inbox.write_bytes(copy_of(b"same") + copy_of(b"other"))
        self.sent.write_bytes(copy_of(b"same"))
        self.assertEqual(self.run_import("--dry-run"), "found 3 = to import 3 + expunged 0 + failed 0")
        self.assertEqual(self.run_import(), "found 3 = imported 3 + expunged 0 + failed 0")
        self.assertEqual(self.run_import(), "found 3 = imported 0 + already there 3 + expunged 0 + failed 0")

    # --- Mailboxes that grow

    def test_the_last_mail_is_known_again_after_the_mailbox_has_grown(self):
        for ending in (b"\r\n", b"", b"\r\n\r\n"):
            with self.subTest(ending=ending):
                archive = "archive" + str(len(ending))
                whole = mail(b"one") + mail(b"last").removesuffix(b"\r\n") + ending
                self.inbox.write_bytes(whole)
                importing = ("import", LOCAL + "/Inbox/-", "--target", archive)
                self.assertEqual(self.run_program(*importing)[0], 0)
                # Whoever appends a mail ends the one before with an empty line.
                self.inbox.write_bytes(whole + b"\r\n" * (ending == b"") + mail(b"new"))
                for dry in (["--dry-run"], []):
                    code, _, err = self.run_program(*importing, *dry)
                    self.assertEqual(code, 0, err)
                    self.assertRegex(err, r"found 3 = (imported|to import) 1 \+ already there 2 \+")
                # So it is where the mails after it are gone.
                self.inbox.write_bytes(whole)
                code, _, err = self.run_program(*importing)
                self.assertIn("found 2 = imported 0 + already there 2 +", err)

    def test_a_mail_that_came_in_part_is_another_when_it_is_whole(self):
        self.inbox.write_bytes(mail(b"one") + mail(b"last", body=b"first line\r\n"))
        self.run_import()
        self.inbox.write_bytes(mail(b"one") + mail(b"last", body=b"first line\r\nsecond line\r\n"))
        self.assertEqual(self.run_import(), "found 2 = imported 1 + already there 1 + expunged 0 + failed 0")

    # --- Separators and status

    def test_a_mail_with_the_separator_of_an_earlier_host_is_a_mail(self):
        self.inbox.write_bytes(mail(b"one") + b"From uucp Mon Jan  5 10:00:00 1998\n"
                               b">From joe Mon Jan  5 09:00:00 1998 remote from far\nSubject: two\n\ntext\n\n")
        self.assertEqual([item["Text"] for item in self.read()], ["one", "two"])

    def test_a_status_with_blanks_before_its_colon_is_read_and_marked(self):
        status = b"X-Mozilla-Status : 0001 \r\n"
        self.inbox.write_bytes(mail(b"one", status=status) + mail(b"two"))
        code, out, err = self.run_program("--yes", "delete", LOCAL + "/Inbox/-", "1")
        self.assertEqual(code, 0, err)
        self.assertEqual(self.inbox.read_bytes(),
                         mail(b"one", status=status.replace(b"0001", b"0009")) + mail(b"two"))
        self.assertEqual(list(self.subjects_by_id().values()), ["two"])


class LargeMailboxes(MailboxCase):
    def test_five_gigabytes_without_a_line_end_take_little_memory(self):
        # The hole takes no room on the disk; it is a line of zero bytes in the first mail.
        with self.inbox.open("wb") as file:
            file.write(mail(b"one", body=b"begins\r\n").removesuffix(b"\r\n"))
            place = 5 * GIGABYTE + 4
            file.seek(place - 4)
            file.write(b"\r\n\r\n" + mail(b"last"))

        def limit():
            resource.setrlimit(resource.RLIMIT_AS, (GIGABYTE, GIGABYTE))
        done = subprocess.run(self.command("read", LOCAL + "/Inbox/-", "--json"), cwd=self.work,
                              env=self.environment(), capture_output=True, timeout=600, preexec_fn=limit, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        one, last = (json.loads(line) for line in done.stdout.splitlines())
        self.assertEqual(last["Data"]["_SourceOffset"], str(place))
        self.assertEqual(int(one["Data"]["Size"]), place)
        self.assertEqual((one["Text"], last["Text"]), ("one", "last"))


if __name__ == "__main__":
    unittest.main()
