#!/usr/bin/env python3
"""Imports that something comes between: death, a full disk, other programs at the same files, Ctrl-C.

Whatever happens, every mail is in its mailbox or, whole, in the archive, and no byte of a mailbox changes but the
marks of the mails that were imported.

usage: import_faults_test.py PROGRAM ROOT [unittest arguments]
"""
import base64
import contextlib
import glob
import os
import pty
import random
import re
import shutil
import signal
import sqlite3
import subprocess
import time
import unittest

from program_case import INBOX, LOCAL, ProgramCase, file_size_limit, mail

SUM = re.compile(r"found (\d+) = (imported|delivered) (\d+)(?: \+ already there \d+)? \+ expunged (\d+) "
                 r"\+ failed (\d+)(?:, not marked as deleted \d+)?$", re.M)
BAR = re.compile(rb"\[#* *\] +\d+\.\d %  \d+ mails/s  \d+:\d\d left  ")
INDEX_BAR = re.compile(rb"\[#* *\] +\d+\.\d %  .*Index ")
ATTACHMENT = bytes(range(256)) * 20


def numbered_mail(number, attachment=b""):
    subject = b"mail %d" % number
    if not attachment:
        return mail(subject, body=b"Hallo %d\r\n" % number)
    data = base64.encodebytes(attachment).replace(b"\n", b"\r\n")
    return mail(subject, b"Content-Type: multipart/mixed; boundary=b\r\n",
                b"--b\r\nContent-Type: text/plain\r\n\r\nHallo\r\n"
                b"--b\r\nContent-Type: application/octet-stream\r\nContent-Transfer-Encoding: base64\r\n"
                b"Content-Disposition: attachment; filename=\"a%d.bin\"\r\n\r\n" % number + data + b"--b--\r\n")


def has_attachment(number):
    return number % 5 == 3


def usual_mail(number):
    return numbered_mail(number, ATTACHMENT if has_attachment(number) else b"")


class ImportFaults(ProgramCase):
    # A target that takes no mail any more ends the run after so many.
    MOST_FAILED_IN_A_ROW = 10

    # An archive waits for the disk at every step, and these tests are about the steps, not about the disk.
    place = "/dev/shm" if os.path.isdir("/dev/shm") else None

    def setUp(self):
        super().setUp()
        self.path = self.inbox = self.work / "Inbox"
        self.archive = self.work / "archive"
        self.temporary = self.work / "tmp"
        self.temporary.mkdir()

    def environment(self, home=None):
        return dict(super().environment(home), TMPDIR=str(self.temporary))

    def fill(self, count, path=None):
        """Makes the mailbox of mails 0 to count-1; every fifth has an attachment."""
        self.mails = [usual_mail(number) for number in range(count)]
        self.path = path or self.inbox
        self.path.write_bytes(b"".join(self.mails))

    def fill_with_a_large_one(self, path=None):
        """Three mails, the last of which has an attachment of two megabytes."""
        self.fill(2, path)
        self.mails.append(numbered_mail(2, ATTACHMENT * 400))
        self.path.write_bytes(b"".join(self.mails))

    def importing(self, *arguments, move=True):
        return ["--yes", "import", str(self.path), "--target", str(self.archive), *(["--move"] if move else []),
                *arguments]

    def start(self, *arguments, **options):
        return subprocess.Popen(self.command(*arguments), cwd=self.work, env=self.environment(),
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options)

    def finish(self, process):
        out, err = process.communicate(timeout=60)
        return process.returncode, out.decode(), err.decode()

    # --- At the right moment

    def starting_with_more_mails(self, count, target, path=None):
        """Fills the mailbox for an attempt to catch the program at its mails, and again with twice as many when the
        program was over before this one had its turn. What the attempt before has left in the target goes."""
        for attempt in range(5):
            shutil.rmtree(target, ignore_errors=True)
            self.fill(count << attempt, path)
            yield len(self.mails)
        self.fail(f"the program was always over before its time, at last with {len(self.mails)} mails")

    def stop(self, process):
        """Stops the program where it is. False if it is over."""
        process.send_signal(signal.SIGSTOP)
        if process.returncode is not None:
            return False
        state = os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
        return state.si_code == os.CLD_STOPPED

    def file_count(self, folder):
        return len(glob.glob("*/*", root_dir=folder))

    def import_stopped_amid_its_mails(self):
        """An import that moves, stopped when the first files of its mails have come and most have not."""
        for count in self.starting_with_more_mails(400, self.archive):
            process = self.start(*self.importing())
            while process.poll() is None and self.file_count(self.archive / "files") < 3:
                pass
            if self.stop(process) and self.file_count(self.archive / "files") < count // 2:
                return process
            process.kill()
            self.assertIn(self.finish(process)[0], (0, -signal.SIGKILL))

    # --- What is there afterwards

    def marked(self, there=None):
        """The numbers of the mails that are marked as deleted. No other byte of the mailbox has changed, which has
        the mails of these numbers."""
        there = there or range(len(self.mails))
        box = self.path.read_bytes()
        self.assertEqual(len(box), sum(len(self.mails[number]) for number in there))
        numbers, start = [], 0
        for number in there:
            original = self.mails[number]
            present = box[start:start + len(original)]
            start += len(original)
            if present != original:
                self.assertEqual(present, original.replace(b"Status: 0001", b"Status: 0009"))
                numbers.append(number)
        return numbers

    def archived(self):
        """The numbers of the mails that the archive has with all their bytes, each as often as it is there."""
        if not (self.archive / "archive.sqlite").exists():
            return []
        # A program that opens the archive puts it in order.
        self.assertIn(self.run_program("search", str(self.archive), "mail", sample=False)[0], (0, 1))
        with contextlib.closing(sqlite3.connect(self.archive / "archive.sqlite")) as database:
            self.assertEqual(database.execute("PRAGMA integrity_check").fetchall(), [("ok",)])
            rows = database.execute("SELECT number, text, key, name FROM items LEFT JOIN files ON item = number "
                                    "AND NOT missing").fetchall()
        items = {}
        for item, text, key, name in rows:
            file = self.archive / "files" / f"{item // 100:06}" / f"{item} {name}"
            items.setdefault((item, int(text.split()[1])), {})[key] = file.read_bytes() if key else None
        return sorted(number for (_, number), files in items.items() if self.is_whole(number, files))

    def is_whole(self, number, files):
        if has_attachment(number):
            return files.get("FileAttach1") == ATTACHMENT and b"Hallo" in files.get("File", b"")
        return files.get("File") == self.mails[number]

    def expect_nothing_lost(self):
        lost = set(self.marked()) - set(self.archived())
        self.assertEqual(lost, set())

    def expect_next_import_completes_it(self):
        code, _, err = self.run_program(*self.importing())
        self.assertEqual((code, SUM.search(err).group(5)), (0, "0"), err)
        everything = list(range(len(self.mails)))
        self.assertEqual(self.marked(), everything)
        self.assertEqual(self.archived(), everything)

    def account(self, err):
        """Found, delivered, expunged and failed; the last line, and it adds up."""
        found = SUM.search(err.strip().splitlines()[-1])
        self.assertIsNotNone(found, err)
        total, _, *parts = found.groups()
        self.assertEqual(int(total), sum(map(int, parts)))
        return tuple(map(int, (total, *parts)))

    # --- Death

    def test_death_at_any_moment_loses_no_mail(self):
        self.fill(40)
        begin = time.monotonic()
        self.assertEqual(self.run_program(*self.importing())[0], 0)
        duration = time.monotonic() - begin
        chance = random.Random(20100509)
        for moment in range(4):
            self.archive.rename(self.work / f"archive{moment}")
            self.fill(40)
            process = self.start(*self.importing())
            time.sleep(duration * (moment + chance.random()) / 4)
            process.kill()
            self.finish(process)
            self.expect_nothing_lost()
            self.expect_next_import_completes_it()

    def test_death_while_mails_are_marked_loses_no_mail(self):
        for count in self.starting_with_more_mails(200, self.archive):
            process = self.start(*self.importing())
            before = self.inbox.stat().st_mtime_ns
            while process.poll() is None and self.inbox.stat().st_mtime_ns == before:
                pass
            process.kill()
            code, _, err = self.finish(process)
            self.assertIn(code, (0, -signal.SIGKILL), err)
            self.assertNotEqual(self.marked(), [])
            self.expect_nothing_lost()
            if len(self.marked()) < count:
                break
        self.expect_next_import_completes_it()

    # --- A full disk

    def test_file_that_cannot_be_written_whole_fails_its_mail_alone(self):
        self.fill_with_a_large_one()
        code, _, err = self.run_program(*self.importing(), preexec_fn=file_size_limit(1 << 20))
        self.assertEqual((code, self.account(err)), (1, (3, 2, 0, 1)), err)
        self.assertRegex(err, rf"Inbox, mail at offset {len(self.mails[0] + self.mails[1])}: .*att\d: File too large")
        self.assertEqual(self.marked(), [0, 1])

    def test_archive_that_cannot_grow_ends_the_run_with_file_and_reason(self):
        self.fill(400)
        code, _, err = self.run_program(*self.importing(), preexec_fn=file_size_limit(300 * 1024))
        self.assertEqual(code, 1, err)
        found, _, _, failed = self.account(err)
        self.assertTrue(found < 400 and failed == self.MOST_FAILED_IN_A_ROW, err)
        self.assertRegex(err, r"Inbox, mail at offset \d+: .*archive\.sqlite: disk I/O error")
        self.assertIn("the run ended before its time", err)
        self.assertEqual(self.marked(), [])
        self.expect_next_import_completes_it()

    def test_disk_without_any_room_is_told(self):
        self.fill(3)
        code, _, err = self.run_program(*self.importing(), preexec_fn=file_size_limit(0))
        self.assertEqual(code, 3, err)
        self.assertRegex(err, r"archive\.sqlite: ")
        self.assertEqual(self.marked(), [])
        self.expect_next_import_completes_it()

    def test_stream_accounts_for_a_file_that_cannot_be_written_whole(self):
        self.fill_with_a_large_one(self.samples / INBOX)
        code, _, err = self.run_program("--yes", "stream", LOCAL + "/Inbox/-", "--output", "out", "--delete",
                                        preexec_fn=file_size_limit(1 << 20))
        self.assertEqual((code, self.account(err)), (1, (3, 2, 0, 1)), err)
        self.assertRegex(err, rf"Inbox, mail at offset {len(self.mails[0] + self.mails[1])}: .*att\d: File too large")
        self.assertEqual(self.marked(), [0, 1])

    # --- Other programs at the same files

    def test_read_only_mailbox_is_imported_and_keeps_its_mails(self):
        self.fill(3)
        self.inbox.chmod(0o444)
        code, _, err = self.run_program(*self.importing())
        self.assertEqual((code, self.account(err)), (1, (3, 3, 0, 0)), err)
        self.assertEqual(err.count("not marked as deleted: the mailbox may not be written"), 3)
        self.assertEqual((self.marked(), len(self.archived())), ([], 3))

    def test_read_only_mailbox_is_not_moved_by_the_rules_of_old(self):
        self.fill(3)
        self.inbox.chmod(0o444)
        code, _, err = self.run_program(*self.importing(), "--rules", "windows")
        self.assertEqual((code, self.account(err)), (3, (0, 0, 0, 0)), err)
        self.assertRegex(err, r"Inbox: .*read-only")
        self.assertEqual((self.marked(), self.archived()), ([], []))

    def test_mailbox_that_becomes_read_only_meanwhile_keeps_its_mails(self):
        process = self.import_stopped_amid_its_mails()
        self.inbox.chmod(0o444)
        process.send_signal(signal.SIGCONT)
        code, _, err = self.finish(process)
        self.assertEqual((code, self.account(err)), (1, (len(self.mails), len(self.mails), 0, 0)), err)
        self.assertIn("not marked as deleted: the mailbox may not be written", err)
        self.assertEqual(self.marked(), [])
        self.inbox.chmod(0o644)
        self.expect_next_import_completes_it()

    def import_beside_a_rewriting_of_the_mailbox(self, keeps, comes):
        """An import stopped amid its mails goes on in a mailbox that has only the mails from number `keeps` on, and as
        many new ones as `comes`. The numbers of the mails that it has."""
        process = self.import_stopped_amid_its_mails()
        self.mails += [usual_mail(number) for number in range(len(self.mails), len(self.mails) + comes)]
        self.inbox.write_bytes(b"".join(self.mails[keeps:]))
        process.send_signal(signal.SIGCONT)
        code, _, err = self.finish(process)
        self.assertEqual(code, 1, err)
        self.account(err)
        self.assertRegex(err, r"Inbox, mail at offset \d+: not marked as deleted: the mailbox has changed")
        return range(keeps, len(self.mails))

    def test_only_mails_that_are_in_the_archive_are_marked_in_a_mailbox_that_was_rewritten(self):
        # In the end it is smaller, or larger, than before.
        for keeps, comes in ((100, 0), (300, 600)):
            there = self.import_beside_a_rewriting_of_the_mailbox(keeps, comes)
            self.assertEqual(set(self.marked(there)) - set(self.archived()), set())
            shutil.rmtree(self.archive)

    def test_mailbox_that_is_gone_is_not_made_again(self):
        process = self.import_stopped_amid_its_mails()
        self.inbox.unlink()
        process.send_signal(signal.SIGCONT)
        code, _, err = self.finish(process)
        self.assertEqual(code, 1, err)
        self.assertEqual(self.account(err)[3], 0)
        self.assertEqual(err.count("not marked as deleted: the mailbox has changed"), len(self.mails))
        self.assertFalse(self.inbox.exists())

    def test_archive_that_goes_away_ends_the_run_and_the_mails_stay(self):
        process = self.import_stopped_amid_its_mails()
        self.archive.rename(self.work / "elsewhere")
        process.send_signal(signal.SIGCONT)
        code, _, err = self.finish(process)
        self.assertEqual(code, 1, err)
        self.assertEqual(self.account(err)[3], self.MOST_FAILED_IN_A_ROW)
        self.assertRegex(err, r"Inbox, mail at offset \d+: .*archive.files.*No such file or directory")
        self.assertEqual(self.marked(), [])
        (self.work / "elsewhere").rename(self.archive)
        self.expect_nothing_lost()
        self.expect_next_import_completes_it()

    def test_folder_of_the_stream_that_goes_away_is_told(self):
        self.fill(400, self.samples / INBOX)
        out = self.work / "out"
        # Nobody reads the list of the mails: it waits in a pipe that is full long before the last of them.
        process = self.start("--yes", "stream", LOCAL + "/Inbox/-", "--output", "out", "--delete", pipesize=4096)
        while process.poll() is None and self.file_count(out) < 3:
            pass
        out.rename(self.work / "elsewhere")
        code, _, err = self.finish(process)
        self.assertEqual((code, self.account(err)[3]), (1, self.MOST_FAILED_IN_A_ROW), err)
        self.assertRegex(err, r"Inbox, mail at offset \d+: .*out/.*No such file or directory")
        self.assertEqual(self.marked(), [])

    # --- Ctrl-C

    def interrupt(self, target, *arguments, path=None):
        """Presses Ctrl-C once the program shows rate and time left, before it has all mails: its code, what it has
        shown, and the account of it."""
        for count in self.starting_with_more_mails(10000, target, path):
            code, shown = self.run_on_terminal(*arguments)
            account = self.account(shown)
            if code != 0 and account[1] < count:
                return code, shown, account

    def run_on_terminal(self, *arguments, bar=BAR):
        """Runs the program on a terminal and presses Ctrl-C at the sight of its bar."""
        child, terminal = pty.fork()
        if child == 0:
            os.chdir(self.work)
            os.execve(self.command()[0], [str(word) for word in self.command(*arguments)], self.environment())
        shown = b""
        pressed = False
        with contextlib.suppress(OSError):  # the terminal's end
            while block := os.read(terminal, 65536):
                shown += block
                if not pressed and bar.search(shown):
                    pressed = True
                    os.write(terminal, b"\x03")
        os.close(terminal)
        return os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), shown.decode().replace("\r\n", "\n")

    def test_interrupted_move_keeps_what_came_in_and_leaves_the_rest(self):
        code, shown, (_, imported, expunged, failed) = self.interrupt(self.archive, *self.importing())
        self.assertEqual((code, expunged, failed), (130, 0, 0), shown[-500:])
        self.assertLess(0, imported)
        self.assertEqual(self.marked(), list(range(imported)))
        self.assertEqual(self.archived(), list(range(imported)))

    def test_interrupted_copy_can_be_searched(self):
        code, shown, (_, imported, _, _) = self.interrupt(self.archive, *self.importing(move=False))
        self.assertEqual(code, 130, shown[-500:])
        self.assertEqual(self.marked(), [])
        self.assertEqual(self.archived(), list(range(imported)))
        code, out, _ = self.run_program("search", str(self.archive), "Hallo", "mail", "0", "--json", sample=False)
        self.assertEqual((code, len(out.splitlines())), (0, 1))

    def test_interrupted_first_search_is_continued_by_the_next(self):
        for _ in self.starting_with_more_mails(10000, self.archive):
            self.assertEqual(self.run_program(*self.importing(move=False))[0], 0)
            search = "search", str(self.archive), "Hallo", "mail", "0", "--json"
            code, shown = self.run_on_terminal(*search, bar=INDEX_BAR)
            if code != 0:
                break
        self.assertEqual(code, 130, shown[-500:])
        code, out, _ = self.run_program(*search, sample=False)
        self.assertEqual((code, len(out.splitlines())), (0, 1))

    def test_interrupted_stream_tells_what_was_delivered(self):
        out = self.work / "out"
        stream = "--yes", "stream", LOCAL + "/Inbox/-", "--output", "out", "--delete"
        code, shown, (_, delivered, expunged, failed) = self.interrupt(out, *stream, path=self.samples / INBOX)
        self.assertEqual((code, expunged, failed), (130, 0, 0), shown[-500:])
        self.assertEqual(len(list(out.iterdir())), delivered)
        self.assertEqual(self.marked(), [], "a cancelled stream deletes nothing of the mailbox at hand")


if __name__ == "__main__":
    unittest.main(verbosity=1)
