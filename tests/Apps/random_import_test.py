#!/usr/bin/env python3
"""Imports that move mails, beside other programs that change mailbox and archive at moments of chance, and killed
there.

Whatever happens, every mail that the others leave is, whole, in the archive, or unmarked in the mailbox, and no byte
of the mailbox changes but marks. VORLENT_RANDOM_ROUNDS says how many rounds to play and tells their table,
VORLENT_RANDOM_SEED plays one again. Its steps are the same each time, its moments nearly.

usage: random_import_test.py PROGRAM ROOT [unittest arguments]
"""
import base64
import collections
import contextlib
import os
import pathlib
import random
import re
import shutil
import signal
import sqlite3
import subprocess
import time
import unittest

from program_case import ProgramCase

SEPARATOR = re.compile(rb"(?:\A|(?<=\r\n\r\n))From - ")
STATUS = re.compile(rb"^X-Mozilla-Status:[^\r]*(.)\r\n", re.M | re.I)
CHANGING = re.compile(rb"^(X-Mozilla-(?:Status2?|Keys):)[^\r]*", re.M | re.I)
SUBJECT = re.compile(rb"^Subject: mail (\d+)-(\d+)\r\n", re.M)


# --- Mails

def make_mail(seed, number):
    """A mail and the files that the archive makes of it, the same for the same numbers."""
    chance = random.Random(f"{seed} {number}")
    kind = chance.choice(["plain"] * 5 + ["attached", "html", "without status", "expunged", "quoting"])
    status = f"X-Mozilla-Status: 000{chance.choice('89Dfa' if kind == 'expunged' else '01257')}\r\n"
    head = "From - Sun May 09 14:30:05 2010\r\n" + ("" if kind == "without status" else status)
    head += f"X-Mozilla-Status2: 00000000\r\nX-Mozilla-Keys:{' ' * 40}\r\nDate: Sun, 09 May 2010 14:30:05 +0200\r\n"
    head += f"From: Anna <anna@example.org>\r\nSubject: mail {seed}-{number}\r\n"
    if chance.random() < 0.9:
        head += f"Message-ID: <{seed}-{number}@example.org>\r\n"
    text = "".join(f"line {chance.random()}\r\n" for _ in range(chance.randrange(12)))
    if kind == "quoting":
        text += "\r\n>From - him: what he said\r\nand so on\r\n"
    if kind not in ("attached", "html"):
        whole = f"{head}\r\n{text}\r\n".encode()
        return whole, [whole]
    head += "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
    kept = f"{head}--b\r\nContent-Type: text/plain\r\n\r\n{text}".encode()
    end = b"--b--\r\n"
    if kind == "html":
        page = f"<p>{chance.random()}</p>".encode()
        kept += b"--b\r\nContent-Type: text/html\r\n\r\n" + page + b"\r\n"
        return kept + end + b"\r\n", [kept + end, page]
    attachment = chance.randbytes(chance.randrange(1, 8000))
    data = base64.encodebytes(attachment).replace(b"\n", b"\r\n")
    part = (f"--b\r\nContent-Type: application/octet-stream\r\nContent-Transfer-Encoding: base64\r\n"
            f"Content-Disposition: attachment; filename=\"a{number}.bin\"\r\n\r\n").encode()
    return kept + part + data + end + b"\r\n", [kept + end, attachment]


def mails_in(box):
    """Begin and end of each mail."""
    begins = [found.start() for found in SEPARATOR.finditer(box)]
    return list(zip(begins, begins[1:] + [len(box)]))


def header_block(mail):
    return mail[:mail.find(b"\r\n\r\n") + 2] if b"\r\n\r\n" in mail else mail


def status_place(mail):
    """Where the last character of the status stands, None for a mail without one."""
    found = STATUS.search(header_block(mail))
    return found.start(1) if found else None


def marked_digit(digit):
    try:
        value = int(chr(digit), 16)
    except ValueError:
        value = 0
    return b"0123456789ABCDEF"[value | 8]


def is_expunged(mail):
    place = status_place(mail)
    return place is not None and marked_digit(mail[place]) == ord(chr(mail[place]).upper())


def comparable(file):
    """The bytes of a mail without the values that Thunderbird changes in place."""
    if not file.startswith(b"From - "):
        return file
    block = header_block(file)
    text = CHANGING.sub(rb"\1", block) + file[len(block):]
    return text if text.endswith(b"\r\n") else text + b"\r\n"


def wanted_files(mail):
    """What the archive must hold of a mail."""
    found = SUBJECT.search(header_block(mail))
    if found:
        made, files = make_mail(int(found[1]), int(found[2]))
        if comparable(made) == comparable(mail):
            return [comparable(file) for file in files]
    return [comparable(mail)]


class ArchiveSight:
    """What a look at an archive finds, without a hand on it: the bytes of the files that its items have."""

    def __init__(self, archive, scratch):
        shutil.rmtree(scratch, ignore_errors=True)
        scratch.mkdir()
        # The database and its log are copied, as they are another's alone while it has them open.
        for name in ("archive.sqlite", "archive.sqlite-wal"):
            with contextlib.suppress(FileNotFoundError):
                shutil.copy(archive / name, scratch / name)
        counts = {}
        with contextlib.suppress(sqlite3.DatabaseError):
            with contextlib.closing(sqlite3.connect(scratch / "archive.sqlite")) as database:
                counts = dict(database.execute("SELECT item, count(*) FROM files WHERE NOT missing GROUP BY item"))
        self.contents = collections.defaultdict(set)
        for folder, _, names in os.walk(archive / "files"):
            for name in names:
                item = re.match(r"(\d+) ", name)
                if item and not name.endswith(".part") and int(item[1]) in counts:
                    self.contents[int(item[1])].add(comparable(pathlib.Path(folder, name).read_bytes()))
        self.items = collections.defaultdict(list)  # by each of their files
        for item, files in self.contents.items():
            for file in files:
                self.items[file].append(item)
        self.counts = counts

    def has(self, files):
        return any(set(files) <= self.contents[item] and self.counts[item] >= len(files)
                   for item in self.items[files[0]])


class RandomImport(ProgramCase):
    # An archive waits for the disk at every step, and this test is about the steps, not about the disk.
    place = "/dev/shm" if os.path.isdir("/dev/shm") else None

    table = collections.Counter()

    def environment(self, home=None):
        return dict(super().environment(home), TMPDIR=str(self.work))

    # --- A round

    def play(self, seed, largest):
        self.chance = random.Random(seed)
        self.seed = seed
        self.next_mail = 0
        self.steps = []
        self.box = self.work / "Inbox"
        self.archive = self.work / "archive"
        self.boxes = []  # those that were replaced, each with what it should hold; the program may have one open
        self.proven = None  # what the archive had when the marks had begun and it was touched
        self.archive_touched = False
        self.races = 0  # rewritings in place that may have come between the look at a mail and the touch
        self.expected = self.new_mails(self.chance.randrange(50, self.chance.choice([largest] + 3 * [largest // 4])))
        self.box.write_bytes(self.expected)
        self.count = sum(not is_expunged(self.expected[begin:end]) for begin, end in mails_in(self.expected))
        command = self.command("--yes", "import", str(self.box), "--target", str(self.archive), "--move")
        began = time.monotonic()
        with open(self.work / "said", "wb") as said:
            self.process = subprocess.Popen(command, cwd=self.work, env=self.environment(), stdin=subprocess.DEVNULL,
                                            stdout=said, stderr=said)
        for moment in sorted(self.chance.random() for _ in range(self.chance.randrange(1, 5))):
            time.sleep(max(0, began + 0.8 * moment * self.duration(self.count) - time.monotonic()))
            self.act()
        self.process.wait(60)
        self.finish()

    def duration(self, count):
        return RandomImport.seconds_to_start + RandomImport.seconds_for_mail * count

    def calibrate(self):
        """Measures how long the program takes to start, and for a mail."""
        measured = []
        for count in (1, 400):
            box = self.work / "Calibration"
            box.write_bytes(b"".join(make_mail(0, number)[0] for number in range(count)))
            began = time.monotonic()
            code, _, err = self.run_program("--yes", "import", str(box), "--target", str(self.work / f"c{count}"),
                                            "--move")
            self.assertIn(code, (0, 1), err)
            measured.append(time.monotonic() - began)
        RandomImport.seconds_to_start = measured[0]
        RandomImport.seconds_for_mail = max(measured[1] - measured[0], 0) / 400

    def new_mails(self, count):
        self.next_mail += count
        return b"".join(make_mail(self.seed, number)[0] for number in range(self.next_mail - count, self.next_mail))

    def note(self, step):
        self.steps.append(step)
        self.table[step] += 1

    # --- What the other programs do

    def act(self):
        """Does one thing, while the program stands still."""
        action = self.chance.choice([
            self.append, self.append_half, self.compact_by_rename, self.compact_in_place, self.replace_by_rename,
            self.replace_in_place, self.truncate, self.delete_box, self.rewrite_statuses, self.make_read_only,
            self.kill, self.terminate] + 9 * [self.touch_archive])
        if not self.stop():
            return
        self.look()
        action()
        with contextlib.suppress(ProcessLookupError):
            self.process.send_signal(signal.SIGCONT)

    def stop(self):
        """Stops the program where it is. False if it is over."""
        if self.process.poll() is not None:
            return False
        self.process.send_signal(signal.SIGSTOP)
        state = os.waitid(os.P_PID, self.process.pid, os.WSTOPPED | os.WEXITED | os.WNOWAIT)
        return state.si_code == os.CLD_STOPPED

    def append(self):
        self.note("append")
        self.rewrite(self.appendable() + self.new_mails(self.chance.randrange(1, 5)))

    def append_half(self):
        self.note("append half, then the rest")
        mail = self.new_mails(1)
        before = self.appendable()
        # Somewhere in its text, but not within a line end.
        cut = self.chance.randrange(len(header_block(mail)) + 2, len(mail))
        cut -= mail[cut - 1] == ord("\r")
        self.rewrite(before + mail[:cut])
        self.process.send_signal(signal.SIGCONT)
        time.sleep(self.chance.random() * 0.3 * self.duration(self.count))
        if self.stop():
            self.look()
        if self.expected is not None:
            self.rewrite(self.expected + mail[cut:])

    def compact_by_rename(self):
        self.note("compact by rename")
        self.replace(self.compacted())

    def compact_in_place(self):
        self.note("compact in place")
        self.rewrite_shifted(self.compacted())

    def replace_by_rename(self):
        self.note("replace by rename")
        self.replace(self.other_box())

    def replace_in_place(self):
        self.note("replace in place")
        self.rewrite_shifted(self.other_box())

    def truncate(self):
        self.note("truncate")
        box = self.expected or b""
        places = mails_in(box)
        self.rewrite_shifted(box[:self.chance.choice(places)[0]] if places else box)

    def delete_box(self):
        self.note("delete mailbox")
        self.keep_old_box()
        self.box.unlink(missing_ok=True)
        self.expected = None

    def rewrite_statuses(self):
        self.note("rewrite statuses")
        box = bytearray(self.expected or b"")
        for begin, end in mails_in(bytes(box)):
            place = status_place(bytes(box[begin:end]))
            if place is not None and self.chance.random() < 0.3:
                box[begin + place] = self.chance.choice(b"0123456789ABCDEF")
        self.rewrite_shifted(bytes(box))

    def make_read_only(self):
        self.note("make read-only")
        if self.box.exists():
            self.box.chmod(0o444)

    def kill(self):
        self.note("kill")
        self.process.kill()

    def terminate(self):
        self.note("terminate")
        self.process.terminate()

    def appendable(self):
        box = self.expected or b""
        if box and not box.endswith(b"\r\n"):
            box += b"\r\n"
        return box if not box or box.endswith(b"\r\n\r\n") else box + b"\r\n"

    def compacted(self):
        """Without the mails that are marked and some that the user deletes, and perhaps with new ones."""
        box = self.expected or b""
        share = self.chance.choice([0, 0, 0.05, 0.5])
        kept = b"".join(box[begin:end] for begin, end in mails_in(box)
                        if not is_expunged(box[begin:end]) and self.chance.random() >= share)
        return kept if self.chance.random() < 0.5 else self.of_length_like(len(box), kept)

    def other_box(self):
        return self.of_length_like(len(self.expected or b""), b"")

    def of_length_like(self, length, box):
        """Shorter, of the same length, or longer."""
        relation = self.chance.choice(["shorter", "equal", "longer"])
        while len(box) < length or relation == "longer" and len(box) == length:
            box += self.new_mails(self.chance.randrange(1, 50))
        if relation == "longer":
            return box
        while len(box) > length:
            box = box[:mails_in(box)[-1][0]]
        head = f"From - x\r\nX-Mozilla-Status: 0001\r\nSubject: filler {self.next_mail}\r\n\r\n".encode()
        if relation == "equal" and length - len(box) >= len(head) + 4:
            box += head + b"f" * (length - len(box) - len(head) - 4) + b"\r\n\r\n"
        return box

    def rewrite(self, box):
        if self.box.exists():
            self.box.chmod(0o644)
        self.box.write_bytes(box)
        self.expected = box

    def rewrite_shifted(self, box):
        """Puts other bytes where the program may be about to touch one."""
        if self.marks_began():
            self.races += 1
        self.rewrite(box)

    def replace(self, box):
        new = self.work / "Inbox.new"
        new.write_bytes(box)
        self.keep_old_box()
        new.rename(self.box)
        self.expected = box

    def keep_old_box(self):
        if self.expected is not None and self.box.exists():
            old = self.work / f"Inbox.old{len(self.boxes)}"
            os.link(self.box, old)
            self.boxes.append([old, self.expected])

    # --- What they do to the archive

    def touch_archive(self):
        # From outside it can't be told whether the program, between its last mail and the first mark, has seen already
        # that all is there.
        if self.marks_began():
            self.proven = self.proven or self.sight()
        elif not self.is_reading():
            return
        if not (self.archive / "archive.sqlite").exists():
            return
        self.archive_touched = True
        away = self.work / f"away{len(self.steps)}"
        kind = self.chance.choice(["delete archive", "move archive away", "replace archive", "delete database",
                                   "replace database", "delete log", "delete files", "move files away",
                                   "delete one file"])
        self.note(kind)
        if kind in ("replace archive", "replace database"):
            other = self.work / f"other{len(self.steps)}"
            (self.work / "Empty").write_bytes(b"")
            self.run_program("--yes", "import", str(self.work / "Empty"), "--target", str(other), sample=False)
        if kind in ("move archive away", "replace archive", "delete archive"):
            self.archive.rename(away)
        if kind == "delete archive":
            shutil.rmtree(away)
        elif kind == "replace archive":
            other.rename(self.archive)
        elif kind == "delete database":
            (self.archive / "archive.sqlite").unlink()
        elif kind == "replace database":
            (other / "archive.sqlite").rename(self.archive / "archive.sqlite")
        elif kind == "delete log":
            (self.archive / "archive.sqlite-wal").unlink(missing_ok=True)
        elif kind == "delete files" and (self.archive / "files").exists():
            shutil.rmtree(self.archive / "files")
        elif kind == "move files away" and (self.archive / "files").exists():
            (self.archive / "files").rename(away)
        elif kind == "delete one file":
            files = sorted(path for path in self.archive.glob("files/*/*") if path.suffix != ".part")
            if files:
                self.chance.choice(files).unlink()

    def marks_began(self):
        return self.marked > 0

    def is_reading(self):
        """Whether the program, which stands still, has the mailbox open and has not imported all of it."""
        open_files = set()
        for link in pathlib.Path(f"/proc/{self.process.pid}/fd").iterdir():
            with contextlib.suppress(OSError):
                open_files.add(os.readlink(link))
        if not any(name.startswith(str(self.box)) for name in open_files):
            return False
        return len(self.sight().counts) < self.count - 1

    # --- What is there afterwards

    def sight(self):
        return ArchiveSight(self.archive, self.work / "sight")

    def look(self):
        """Judges what the program has done to the mailboxes since they were touched last."""
        sight = None
        for old in self.boxes:
            sight = self.look_at(old[0].read_bytes(), old[1], sight)
            old[1] = old[0].read_bytes()
        found = self.box.read_bytes() if self.box.exists() else None
        if found == self.expected:
            return
        if self.expected is None:
            self.assertEqual(found, b"", "a mailbox that was deleted comes back with mails")
        else:
            self.assertIsNotNone(found, "the mailbox is gone")
            self.look_at(found, self.expected, sight)
        self.expected = found

    def look_at(self, found, expected, sight):
        if found == expected:
            return sight
        self.assertEqual(len(found), len(expected), "the mailbox has another length")
        for begin, end in mails_in(expected) or [(0, len(expected))]:
            mail, present = expected[begin:end], found[begin:end]
            if mail == present:
                continue
            place = status_place(mail)
            marked = mail if place is None else mail[:place] + bytes([marked_digit(mail[place])]) + mail[place + 1:]
            if present == marked:
                if self.proven is None:
                    sight = sight or self.sight()
                if (self.proven or sight).has(wanted_files(mail)):
                    self.marked += 1
                    self.table["mails marked"] += 1
                    continue
            if sum(a != b for a, b in zip(mail, present)) == 1 and self.races > 0:
                # It was looked at before it was rewritten, and touched after.
                self.races -= 1
                self.table["touched after a look at what stood there before"] += 1
                continue
            self.fail(f"lost, or changed: the mail at {begin}\n{mail[:600]}\n{present[:600]}")
        return sight

    def finish(self):
        said = (self.work / "said").read_text("utf-8", "replace")
        if self.process.returncode not in (-signal.SIGKILL, -signal.SIGTERM):
            self.assertIn(self.process.returncode, (0, 1, 3, 130, 143), said)
        if (self.archive / "archive.sqlite").exists():
            # A program that opens the archive puts it in order.
            code, _, err = self.run_program("search", str(self.archive), "mail", sample=False)
            self.assertIn(code, (0, 1), err)
        self.look()
        self.table["mails"] += self.next_mail
        if self.archive_touched or not self.box.exists():
            return
        self.box.chmod(0o644)
        code, _, err = self.run_program("--yes", "import", str(self.box), "--target", str(self.archive), "--move")
        self.assertIn("failed 0", err)
        self.look()
        self.table["mails not marked"] += sum(1 for begin, end in mails_in(self.expected)
                                              if not is_expunged(self.expected[begin:end]))
        for begin, end in mails_in(self.expected):
            mail = self.expected[begin:end]
            self.assertTrue(status_place(mail) is None or is_expunged(mail), f"the next run leaves {mail[:600]}")

    # --- Many rounds

    def test_every_mail_is_in_the_archive_or_unmarked_in_the_mailbox(self):
        self.calibrate()
        if "VORLENT_RANDOM_SEED" in os.environ:
            return self.play_alone(int(os.environ["VORLENT_RANDOM_SEED"]), 3000)
        rounds = int(os.environ.get("VORLENT_RANDOM_ROUNDS", 0))
        for seed in range(1, (rounds or 10) + 1):
            self.play_alone(seed, 3000 if rounds else 400)
        if rounds:
            for name, count in sorted(self.table.items()):
                print(f"{count:8}  {name}")

    def play_alone(self, seed, largest):
        """Plays a round in a folder of its own, and goes on with the next whatever comes of it."""
        work = self.work
        self.work = work / str(seed)
        self.work.mkdir()
        self.marked = 0
        self.table["rounds"] += 1
        with self.subTest(VORLENT_RANDOM_SEED=seed):
            try:
                self.play(seed, largest)
            except AssertionError:
                self.table["lost"] += 1
                print(f"VORLENT_RANDOM_SEED={seed}: {self.steps}")
                raise
            finally:
                if self.process.poll() is None:
                    self.process.kill()
                    self.process.wait()
                shutil.rmtree(self.work)
                self.work = work


if __name__ == "__main__":
    unittest.main(verbosity=1)
