#!/usr/bin/env python3
"""What `read --json` of a mailbox of text takes by today's rules of the time by those of Windows.

The two run in turn, on a mailbox in memory where there is such a place. What counts is the median of the rounds, of
user and system time. Exits with 1 if it is above the bound.

usage: read_json.py PROGRAM [--quick]
"""
import os
import pathlib
import random
import resource
import statistics
import subprocess
import sys
import tempfile

WORDS = ("the mail archive of und Termin Angebot please find attached report a meeting on Montag with project "
         "Rechnung in to regards we discuss budget for next quarter Danke I will call tomorrow").split()
HEADER = ("From - Mon Jan 12 08:15:28 2026\r\nX-Mozilla-Status: 0001\r\nX-Mozilla-Status2: 00000000\r\n"
          "Message-ID: <{0}.20260112@example.org>\r\nDate: Mon, 12 Jan 2026 08:15:28 +0100\r\n"
          "From: Anna Muster <anna@example.org>\r\nTo: Bert <bert@example.org>\r\n"
          "Subject: =?iso-8859-1?Q?Gr=F6=DFe?= number {0} of many\r\nMIME-Version: 1.0\r\n")
TEXT = "Content-Type: text/{}; charset=iso-8859-1\r\nContent-Transfer-Encoding: 8bit\r\n\r\n"


def write_mailbox(file, size):
    """Mails of some 16 kB, each eighth with its text as HTML, too."""
    chance = random.Random(1)

    def text(lines):
        return "".join(" ".join(chance.choices(WORDS, k=11)) + (" Größe" if line % 9 == 0 else "") + "\r\n"
                       for line in range(lines))
    with open(file, "w", encoding="latin-1", newline="") as mailbox:
        number = 0
        while mailbox.tell() < size:
            number += 1
            lines = 40 + chance.randrange(400)
            if number % 8:
                body = TEXT.format("plain") + text(lines)
            else:
                body = ('Content-Type: multipart/alternative; boundary="b0"\r\n\r\n'
                        f"--b0\r\n{TEXT.format('plain')}{text(lines)}"
                        f"--b0\r\n{TEXT.format('html')}{text(lines // 2)}--b0--\r\n")
            mailbox.write(HEADER.format(number) + body + "\r\n")
    return number


def seconds(program, rules, folder):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run([program, "--drive", f"C={folder}", "--rules", rules, "read", "--json", "thunderbird://./C/Inbox"],
                   stdout=subprocess.DEVNULL, check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def main():
    program = str(pathlib.Path(sys.argv[1]).resolve())
    quick = "--quick" in sys.argv[2:]
    megabytes, rounds, bound = (32, 11, 1.45) if quick else (92, 31, 1.1)
    shared = "/dev/shm" if os.path.isdir("/dev/shm") else None
    with tempfile.TemporaryDirectory(dir=os.environ.get("TMPDIR", shared)) as folder:
        mails = write_mailbox(pathlib.Path(folder, "Inbox"), megabytes << 20)
        times = [(seconds(program, "windows", folder), seconds(program, "today", folder)) for _ in range(rounds)]
    windows, today = (statistics.median(column) for column in zip(*times))
    ratio = statistics.median(today / windows for windows, today in times)
    print(f"read --json of {megabytes} MB, {mails} mails, median of {rounds} runs: {windows * 1000:.0f} ms, "
          f"by today's rules {today * 1000:.0f} ms")
    kept = ratio <= bound
    print(f"  {ratio:.2f} times as long by today's rules, at most {bound:.2f} allowed: {'ok' if kept else 'MISSED'}")
    return 0 if kept else 1


if __name__ == "__main__":
    sys.exit(main())
