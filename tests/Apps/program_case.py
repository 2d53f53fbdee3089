"""What the tests of the command line share: the program, a copy of the samples, and a place to work in."""
import os
import pathlib
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest

PROGRAM = pathlib.Path(sys.argv.pop(1)).resolve()
ROOT = pathlib.Path(sys.argv.pop(1)).resolve()
INBOX = "AppData/Thunderbird/Profiles/k3j9x2ab.default/Mail/Local Folders/Inbox"
LOCAL = "thunderbird://default/Local Folders"


def mail(subject, headers=b"", body=b"text\r\n", status=b"X-Mozilla-Status: 0001\r\n"):
    """A mail as it stands in a mailbox, known by its subject, which is in its ID, too."""
    return (b"From - x\r\n" + status + b"Date: Mon, 12 Jan 2026 08:15:28 +0100\r\nMessage-ID: <" + subject +
            b"@x>\r\nSubject: " + subject + b"\r\n" + headers + b"\r\n" + body + b"\r\n")


def tree_bytes(folder):
    return {str(path.relative_to(folder)): path.read_bytes() for path in sorted(folder.rglob("*")) if path.is_file()}


def file_size_limit(size):
    """Lets a program write no file above a size, which is the nearest to a full disk that every user may have."""
    def limit():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))
    return limit


class ProgramCase(unittest.TestCase):
    place = None  # where the folder to work in lies; the system's temporary folder without one

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory(dir=self.place)
        self.work = pathlib.Path(self.folder.name)
        self.home = self.work / "home"
        self.home.mkdir()
        self.samples = self.work / "samples"
        shutil.copytree(ROOT / "samples", self.samples)

    def tearDown(self):
        self.folder.cleanup()

    def environment(self, home=None):
        return dict(os.environ, HOME=str(home or self.home), LC_ALL="C.UTF-8", TZ="Europe/Berlin")

    def command(self, *arguments, sample=True):
        given = ["--appdata", str(self.samples / "AppData"), "--drive", f"S={self.samples}"] if sample else []
        return [PROGRAM, *given, *arguments]

    def run_program(self, *arguments, sample=True, home=None, **options):
        done = subprocess.run(self.command(*arguments, sample=sample), cwd=self.work, env=self.environment(home),
                              timeout=60, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              **options)
        return done.returncode, done.stdout.decode("utf-8", "surrogateescape"), done.stderr.decode("utf-8")
