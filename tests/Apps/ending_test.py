#!/usr/bin/env python3
"""How the program ends before its time, and what stays of it: signals, a reader that goes, death.

usage: ending_test.py PROGRAM ROOT [unittest arguments]
"""
import json
import os
import pathlib
import signal
import socket
import subprocess
import time
import unittest

from program_case import ProgramCase, mail

MARKER = ".in-use"
BOX = "thunderbird://./S/Box/-"
PATIENCE = 30  # seconds for what takes a fraction of one on a machine with nothing else to do


def mails(count):
    return b"".join(mail(b"mail %d" % number, body=b"Hallo %d\r\n" % number) for number in range(count))


class Ending(ProgramCase):
    def setUp(self):
        super().setUp()
        self.temporary = self.work / "tmp"
        self.temporary.mkdir()

    def environment(self, home=None):
        return dict(super().environment(home), TMPDIR=str(self.temporary), QT_QPA_PLATFORM="offscreen",
                    XDG_RUNTIME_DIR=str(self.work))

    def fill(self, count):
        (self.samples / "Box").write_bytes(mails(count))

    def start(self, *arguments, **options):
        return subprocess.Popen(self.command(*arguments), cwd=self.work, env=self.environment(),
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options)

    def finish(self, process):
        out, err = process.communicate(timeout=PATIENCE)
        return process.returncode, out.decode(), err.decode()

    def left(self):
        return sorted(path.name for path in self.temporary.iterdir())

    def start_reading(self, *arguments, count=40000, **options):
        """A program that has begun to read: its temporary folder is there, its first line of output is long to come."""
        self.fill(count)
        process = self.start("read", BOX, *arguments, **options)
        deadline = time.monotonic() + PATIENCE
        while process.poll() is None and not any(self.temporary.glob("*/files/{*")):
            self.assertLess(time.monotonic(), deadline, "no temporary folder of the connector's has come")
            time.sleep(0.001)
        return process

    def stop(self, process):
        process.send_signal(signal.SIGSTOP)
        os.waitid(os.P_PID, process.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)

    def die(self):
        """Kills a program amid its reading: the name of the folder that it leaves."""
        process = self.start_reading()
        process.kill()
        self.assertEqual(self.finish(process)[0], -signal.SIGKILL)
        self.assertEqual(len(self.left()), 1)
        return self.temporary / self.left()[0]

    # --- Signals

    def test_signals_end_the_reading_at_once_and_remove_what_was_temporary(self):
        for number, code in [(signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGHUP, 129)]:
            process = self.start_reading("--json")
            process.send_signal(number)
            self.assertEqual(self.finish(process), (code, "", ""))
            self.assertEqual(self.left(), [])

    def test_signals_end_the_wizard_that_waits_for_its_user(self):
        archive = self.work / "archive"
        for number, code in [(signal.SIGINT, 130), (signal.SIGTERM, 143), (signal.SIGHUP, 129)]:
            process = self.start("wizard", "--target", str(archive))
            while process.poll() is None and not ((archive / "archive.sqlite").exists() and self.is_asleep(process)):
                time.sleep(0.01)
            time.sleep(0.5)  # it opens its window
            self.assertIsNone(process.poll())
            process.send_signal(number)
            try:
                self.assertEqual(self.finish(process)[0], code)
            finally:
                process.kill()
                process.wait()
            self.assertEqual(self.left(), [])

    def test_a_program_that_is_not_to_hear_of_closed_terminals_goes_on(self):
        process = self.start_reading(
            "--json", count=2000, preexec_fn=lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN))
        process.send_signal(signal.SIGHUP)
        code, out, _ = self.finish(process)
        self.assertEqual((code, len(out.splitlines())), (0, 2000))

    def expect_whole_lines(self, out):
        """What has come is the beginning of the output; only what no line feed closes may be less than a line."""
        lines = out.split("\n")
        for number, line in enumerate(lines[:-1]):
            self.assertEqual(json.loads(line)["Text"], f"mail {number}")
        return len(lines) - 1

    def test_ctrl_c_ends_a_list_that_nobody_reads_on(self):
        self.fill(2000)
        archive = str(self.work / "archive")
        self.assertEqual(self.run_program("import", str(self.samples / "Box"), "--target", archive)[0], 0)
        self.assertEqual(self.run_program("search", archive, "Hallo")[0], 0)
        for command in (["read", BOX], ["search", archive, "Hallo"]):
            process = self.start(*command, "--json")
            os.read(process.stdout.fileno(), 1)  # it prints, and the pipe is full soon
            while not self.is_asleep(process):
                time.sleep(0.01)
            process.send_signal(signal.SIGINT)
            self.assertEqual(process.wait(PATIENCE), 130)
            out = "{" + process.stdout.read().decode()
            self.assertLess(self.expect_whole_lines(out), 2000)
            self.assertEqual(self.left(), [])
            self.finish(process)

    def is_asleep(self, process):
        return pathlib.Path(f"/proc/{process.pid}/stat").read_text().rsplit(")")[1].split()[0] == "S"

    def test_a_list_whose_reader_goes_ends_quietly_and_removes_what_was_temporary(self):
        self.fill(2000)
        process = self.start("read", BOX, "--json")
        process.stdout.readline()
        process.stdout.close()
        self.assertEqual((process.stderr.read(), process.wait(PATIENCE)), (b"", 141))
        process.stderr.close()
        self.assertEqual(self.left(), [])

    def test_a_stream_whose_reader_goes_ends(self):
        self.fill(20000)
        process = self.start("stream", BOX, "--json")
        process.stdout.readline()
        process.stdout.close()
        err = process.stderr.read().decode()
        process.stderr.close()
        self.assertEqual(process.wait(PATIENCE), 141)
        self.assertLess(int(err.split()[1]), 20000)
        self.assertEqual(self.left(), [])

    # --- Death

    def test_the_next_start_removes_the_folder_of_a_program_that_was_killed(self):
        folder = self.die()
        self.assertEqual(folder.stat().st_mode & 0o777, 0o700)
        (folder / "deep").mkdir()
        (folder / "deep" / "att1").write_text("mail")
        (folder / "deep" / "att1").chmod(0o400)
        (folder / "deep").chmod(0o500)
        (folder / "link").symlink_to(self.samples)
        self.run_program("browse", "thunderbird://*")
        self.assertEqual(self.left(), [])
        self.assertTrue((self.samples / "Box").exists(), "only the link goes")

    def test_the_folder_of_a_living_program_stays(self):
        process = self.start_reading("--json", count=2000)
        self.stop(process)
        [name] = self.left()
        self.run_program("browse", "thunderbird://*")
        self.assertEqual(self.left(), [name])
        process.send_signal(signal.SIGCONT)
        code, out, _ = self.finish(process)
        self.assertEqual((code, len(out.splitlines())), (0, 2000))
        self.assertEqual(self.left(), [])

    def test_what_only_looks_like_the_folder_of_a_program_stays(self):
        folder = self.die()
        elsewhere = self.work / "elsewhere"
        folder.rename(elsewhere)
        (self.temporary / "vorlent-linked").symlink_to(elsewhere)
        (self.temporary / "vorlent-marker").mkdir()
        (self.temporary / "vorlent-marker" / MARKER).symlink_to(elsewhere / MARKER)
        (self.temporary / "vorlent-piped_").mkdir()
        os.mkfifo(self.temporary / "vorlent-piped_" / MARKER)
        (self.temporary / "vorlent-naked_").mkdir()
        (self.temporary / "vorlent-file__").write_text("x")
        (self.temporary / "vorlent-another-name").mkdir()
        (self.temporary / "vorlent-another-name" / MARKER).write_text("")
        before = self.left()
        self.run_program("browse", "thunderbird://*")
        self.assertEqual(self.left(), before)
        self.assertTrue((elsewhere / MARKER).exists())

    @unittest.skipIf(os.geteuid() != 0, "only the administrator can give a folder away")
    def test_the_folder_of_another_user_stays(self):
        folder = self.die()
        os.chown(folder, 12345, 12345)
        self.run_program("browse", "thunderbird://*")
        self.assertEqual(self.left(), [folder.name])

    def test_programs_that_start_at_once_leave_each_other_their_folders(self):
        self.fill(50)
        for _ in range(5):
            started = [self.start("read", BOX, "--json") for _ in range(12)]
            for process in started:
                code, out, err = self.finish(process)
                self.assertEqual((code, len(out.splitlines()), err), (0, 50, ""))
            self.assertEqual(self.left(), [])


class OddProfiles(ProgramCase):
    LOCAL = "thunderbird://default/Local Folders"

    def setUp(self):
        super().setUp()
        self.mail = self.samples / "AppData/Thunderbird/Profiles/k3j9x2ab.default/Mail/Local Folders"

    def add(self, name, count=1):
        (self.mail / name).write_bytes(mails(count))
        (self.mail / (name + ".msf")).write_bytes(b"")

    def read(self, address):
        code, out, err = self.run_program("read", address, "--json")
        return code, [json.loads(line) for line in out.splitlines()], err

    def test_loops_of_links_are_walked_once(self):
        _, before, _ = self.read(self.LOCAL)
        for name in ("LoopA", "LoopB", "LoopC"):
            self.add(name, 2)
            (self.mail / (name + ".sbd")).symlink_to(".")
        code, items, err = self.read(self.LOCAL)
        # Each mailbox has the same two mails, and each of them is an item of its own.
        self.assertEqual((code, err), (0, ""))
        self.assertEqual(len(items), len(before) + 6)
        code, out, err = self.run_program("stream", self.LOCAL, "--json")
        self.assertEqual(code, 0, err)
        self.assertEqual(sum("LoopA" in json.loads(line)["Keywords"] for line in out.splitlines()), 2)

    def odd_entries(self):
        os.mkfifo(self.mail / "Pipe")
        (self.mail / "Device").symlink_to("/dev/zero")
        with socket.socket(socket.AF_UNIX) as listener:
            present = os.getcwd()
            os.chdir(self.mail)
            listener.bind("Socket")
            os.chdir(present)
        for name in ("Pipe", "Device", "Socket"):
            (self.mail / (name + ".msf")).write_bytes(b"")
        return [str(self.mail / name) for name in ("Device", "Pipe", "Socket")]

    def expect_told(self, odd, err):
        told = [line for line in err.splitlines() if "passed over" in line]
        self.assertEqual([line.split(": ")[1] for line in told], odd, err)

    def test_what_is_no_file_is_passed_over_and_told_and_the_rest_is_read(self):
        _, before, _ = self.read(self.LOCAL)
        odd = self.odd_entries()
        code, items, err = self.read(self.LOCAL)
        self.assertEqual((code, len(items)), (1, len(before)), err)
        self.expect_told(odd, err)
        code, out, err = self.run_program("stream", self.LOCAL, "--json")
        self.assertEqual((code, len(out.splitlines())), (1, len(before)), err)
        self.expect_told(odd, err)
        code, _, err = self.run_program("import", self.LOCAL, "--target", "archive")
        self.assertEqual(code, 1, err)
        self.assertIn(f"imported {len(before)} ", err)
        self.expect_told(odd, err)
        code, out, err = self.run_program("browse", self.LOCAL)
        self.assertEqual(code, 0, err)
        self.assertIn("Inbox", out)

    def test_what_is_no_file_and_named_can_not_be_read(self):
        for path in self.odd_entries():
            name = path.rsplit("/", 1)[1]
            for command in ("read", "stream"):
                code, out, err = self.run_program(command, f"{self.LOCAL}/{name}/-")
                self.assertEqual((code, out), (3, ""), err)
                self.assertIn(f"{path}: no file, but a", err)
            code, _, err = self.run_program("import", path, "--target", "archive")
            self.assertEqual((code, err), (3, f"vorlent-mozilla: {path}: is no file\n"))
        self.assertFalse((self.work / "archive").exists())

    def test_a_pipe_in_the_place_of_a_database_or_a_list_of_profiles_keeps_nobody_waiting(self):
        for path in self.samples.rglob("*"):
            if path.name in ("places.sqlite", "storage.sdb", "local.sqlite", "prefs.js"):
                path.unlink()
                os.mkfifo(path)
        for address in ("firefox://default", "sunbird://default", "lightning://default", "thunderbird://default"):
            for command in ("read", "browse"):
                self.assertIn(self.run_program(command, address)[0], (0, 1, 3), (command, address))


if __name__ == "__main__":
    unittest.main(verbosity=1)
