"""What the tests of the command line share: the program, a copy of the samples, and a place to work in.

Two variables let two_systems.py run them for a program of another system: VORLENT_LAUNCHER starts it,
VORLENT_TRANSCRIPTS names the folder in which each test leaves what it called the program with and what came.
VORLENT_RULES names the rules where a test asks for none, VORLENT_OPTIONS what the program is given
besides where the rules are no others.
"""
import datetime
import os
import pathlib
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
import zoneinfo

PROGRAM = pathlib.Path(sys.argv.pop(1)).resolve()
ROOT = pathlib.Path(sys.argv.pop(1)).resolve()
INBOX = "AppData/Thunderbird/Profiles/k3j9x2ab.default/Mail/Local Folders/Inbox"
LOCAL = "thunderbird://default/Local Folders"
LAUNCHER = shlex.split(os.environ.get("VORLENT_LAUNCHER", ""))
RULES = os.environ.get("VORLENT_RULES")
OPTIONS = shlex.split(os.environ.get("VORLENT_OPTIONS", ""))
TRANSCRIPTS = os.environ.get("VORLENT_TRANSCRIPTS")
ZONE = "Europe/Berlin"


def mail(subject, headers=b"", body=b"text\r\n", status=b"X-Mozilla-Status: 0001\r\n"):
    """A mail as it stands in a mailbox, known by its subject, which is in its ID, too."""
    return (b"From - x\r\n" + status + b"Date: Mon, 12 Jan 2026 08:15:28 +0100\r\nMessage-ID: <" + subject +
            b"@x>\r\nSubject: " + subject + b"\r\n" + headers + b"\r\n" + body + b"\r\n")


def tree_bytes(folder):
    return {str(path.relative_to(folder)): path.read_bytes() for path in sorted(folder.rglob("*")) if path.is_file()}


def path_from_windows(match):
    path = match.group(0)
    return path.removeprefix("Z:").replace("\\\\" if path.startswith("Z:\\\\") else "\\", "/")


def from_windows(text):
    """What a program for Windows tells under Wine, with native paths as they are here: Z: is the root there, and
    no drive of those that were set."""
    text = re.sub(r"\|Z:\\+(?=[\"\s])|^\d+  Z:\\ .*\n", "", text, flags=re.M)
    return re.sub(r"Z:\\[^'\":\r\n|]*|^(vorlent-mozilla: )?(out|archive|restored|original)\\(?=\S)", path_from_windows,
                  text, flags=re.M)


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
        return dict(os.environ, HOME=str(home or self.home), LC_ALL="C.UTF-8", TZ=ZONE)

    def command(self, *arguments, sample=True):
        given = ["--appdata", str(self.samples / "AppData"), "--drive", f"S={self.samples}"] if sample else []
        if RULES and "--rules" not in arguments:
            given += ["--rules", RULES]
        if LAUNCHER:
            given += ["--drive", "C=/"]  # as it is on a system without drives
        options = [] if "today" in arguments else OPTIONS
        return [*LAUNCHER, PROGRAM, *given, *options, *arguments]

    def run_program(self, *arguments, sample=True, home=None, **options):
        done = subprocess.run(self.command(*arguments, sample=sample), cwd=self.work, env=self.environment(home),
                              timeout=60, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              **options)
        told = [done.stdout.decode("utf-8", "surrogateescape"), done.stderr.decode("utf-8", "surrogateescape")]
        if LAUNCHER:
            told = [from_windows(text) for text in told]
        if TRANSCRIPTS:
            self.keep_transcript(arguments, done.returncode, *told)
        return done.returncode, *told

    def keep_transcript(self, arguments, code, out, err):
        """What differs from run to run is left out: the folder, the moment, identities."""
        text = "\n".join(["$ " + shlex.join(map(str, arguments)), out, err, f"= {code}", ""])
        for place in (str(self.work), str(self.work).replace("/", "\\"), str(self.work).replace("/", "\\\\")):
            text = text.replace(place, "WORK")
        now = datetime.datetime.now(zoneinfo.ZoneInfo(ZONE))
        for day in (now, now - datetime.timedelta(minutes=10)):  # which may be the day before
            for moment in (r"%Y%m%d\d{6}", r"%d.%m.%Y \d\d:\d\d(:\d\d)?"):
                text = re.sub(day.strftime(moment), "NOW", text)
        text = re.sub(r"\b1[789]\d{8}0{6}\b|^ \d\d:\d\d:\d\d(?=:| finished)", "NOW", text, flags=re.M)
        text = re.sub(r"in [\d,.]+ (Sekunden|seconds).*", "in TIME", text)
        text = re.sub(r"/vorlent-\w{6}/", "/TEMPORARY/", text)
        text = re.sub(r"[0-9a-fA-F]{8}(-[0-9a-fA-F]{4}){3}-[0-9a-fA-F]{12}", "GUID", text)
        with open(pathlib.Path(TRANSCRIPTS, self.id().removeprefix("__main__.")), "a", encoding="utf-8",
                  errors="surrogateescape") as transcript:
            transcript.write(text)
