#!/usr/bin/env python3
"""Random mails, well formed and damaged, as the component reads them and as Python's mailbox and email do.

random_mails.py PROGRAM SOURCE_FOLDER [--count N] [--seed S]

Both must find the same mails with the same subjects, senders, names and bytes of files, and texts. A difference fails
unless docs/differences.md has a row for it (differences.py). Lists must have the same files as well, and single mails
be brought out with them. The same seed makes the same mails.
"""
import argparse
import email
import json
import mailbox
import os
import random
import re
import subprocess
import sys
import tempfile
from collections import defaultdict
from email.errors import HeaderParseError
from email.header import decode_header
from pathlib import Path
from urllib.parse import unquote, unquote_to_bytes

from differences import (EXPLAINED, JUNK, TAKEN_INTO_ACCOUNT, Compared, bytes_of_message, explanation,
                         without_junk)
from made_mails import Maker, utf8_or_1252

MAILS_PER_BOX = 200
SEPARATORS = ["From - Sat Nov 21 14:59:15 2026", "From - ", "From anna@x.de Sat Nov 21 14:59:15 2026", "From anna@x.de",
              "From MAILER-DAEMON Sat Nov 21 14:59:15 2026", "From anna@x.de  Sat Nov  7 04:59 2026 +0100"]
# Of these none begins a mail, whether an empty line comes before or not.
BODY_LINES = [b"From the start", b"From anna@x.de Sat Nov 21 14:59:15 2026\nno field", b"From Anna to Bert, 2026"]


class Box:
    """A mailbox of made mails."""

    def __init__(self, rng, first, count):
        self.mails, self.starts, self.lines_in_bodies, self.data = [], [], [], b""
        self.line_end = rng.choice([b"\n", b"\n", b"\r\n", None])
        for number in range(first, first + count):
            self.add(rng, Maker(rng).mail(number))
        if rng.random() < 0.3:
            self.data = self.data.rstrip(b"\r\n")

    def add(self, rng, mail):
        text = re.sub(rb"(?m)^(>*From )", rb">\1", mail.data())
        if rng.random() < 0.02:
            mail.traits.add("line-in-body")
            if "no-closing" in mail.traits or b"\nContent-Type: multipart/" not in mail.header:
                mail.traits.add("bad-base64")  # it may be another text after that of the last part
            text += b"\n" + rng.choice([b"", b"\n"]) + rng.choice(BODY_LINES) + b"\n"
        text = rng.choice(SEPARATORS).encode() + b"\n" + text.rstrip(b"\n") + b"\n\n"
        ends = self.line_end or rng.choice([b"\n", b"\r\n"])
        text = re.sub(rb"\n", lambda _: self.line_end or rng.choice([ends, ends, ends, b"\r\n", b"\n"]), text)
        self.mails.append(mail)
        self.starts.append(len(self.data))
        self.lines_in_bodies += [len(self.data) + found.start() for found in re.finditer(rb"(?m)^From ", text)][1:]
        self.data += text

    def texts(self, path):
        """The bytes of the mails by Python, where that takes no line of a body for a mail."""
        box = mailbox.mbox(path)
        box.iterkeys()
        box._generate_toc()
        found = [start for start, stop in box._toc.values()]
        if found != sorted(self.starts + self.lines_in_bodies):
            raise AssertionError(f"Python divides {path} at {found}, and not at {self.starts}")
        for start, end in zip(self.starts, self.starts[1:] + [len(self.data)]):
            text = self.data[start:end]
            text = text[text.index(b"\n") + 1:]
            yield re.sub(rb"(\r?\n)\r?\n\Z", rb"\1", text)


# --- What Python makes of a mail

def header_of(message, name):
    return next((value for key, value in message.raw_items() if key.lower() == name), "")


def text_of(value):
    """A header or a parameter as a person reads it; blanks around it aren't compared."""
    value = re.sub(r"\r\n|\r|\n", "", value or "")
    if any("\udc80" <= c <= "\udcff" for c in value):
        return utf8_or_1252(value.encode("utf-8", "surrogateescape")).strip(" \t")
    try:
        pieces = decode_header(value)
    except HeaderParseError:
        return None
    text = ""
    for piece, charset in pieces:
        try:
            text += piece if isinstance(piece, str) else piece.decode(charset or "ascii")
        except (LookupError, ValueError):
            return None
    return text.strip(" \t")


def leaves(message):
    """The parts that have none themselves, but for multiparts without any."""
    if message.get_content_maintype() == "multipart":
        if message.is_multipart():
            for part in message.get_payload():
                yield from leaves(part)
    else:
        yield message


def unquoted(text):
    """A mail as it was before its lines that would separate mails were quoted."""
    return re.sub(rb"(?m)^>(>*From )", rb"\1", text)


def is_file(part):
    """Whether the part is one that the component brings out."""
    if part.get_filename():
        return True
    content_type, disposition = part.get_content_type(), part.get_content_disposition()
    if disposition == "attachment" or content_type == "message/rfc822":
        return True
    return "content-type" in part and part.get_content_maintype() not in ("text", "message", "multipart")


def is_sole_file(message):
    """The same of a mail without parts, of which a named text is to be read."""
    is_text = message.get_content_type().startswith("text/")
    return is_file(message) and (not is_text or message.get_content_disposition() == "attachment")


def bytes_of(part):
    if part.get_content_type() == "message/rfc822":
        return bytes_of_message(part.get_payload(0))
    return part.get_payload(decode=True)


# --- What the component makes of it

def run(program, folder, verb, box, *options):
    """What the program writes of a mailbox, or of all."""
    appdata = folder / "appdata"
    appdata.mkdir(exist_ok=True)
    command = [program, "--appdata", appdata, "--drive", f"C={folder}", "--rules", "today", verb,
               f"thunderbird://./C/boxes{box}", *options]
    done = subprocess.run(command, capture_output=True, env={**os.environ, "LC_ALL": "C.UTF-8"})
    if done.returncode != 0:
        sys.exit(f"the program ended with {done.returncode}: {done.stderr.decode(errors='replace')[-2000:]}")
    return done.stdout.decode()


def records(program, folder, verb, *options):
    """The records of all mails by mailbox, in order."""
    found = defaultdict(list)
    for line in run(program, folder, verb, "", "--json", *options).splitlines():
        record = json.loads(line)
        found[record["Keywords"].split(",")[-1]].append(record)
    return found


class Record:
    """A mail as the component keeps it."""

    def __init__(self, record, folder):
        self.folder, self.data = folder, record["Data"]
        self.subject = record["Text"].strip(" \t")
        self.sender = self.data["From"].strip(" \t")
        self.files = [value for key, value in self.data.items() if key.startswith("FileAttach")]

    def path_in(self, value):
        # The folder of the mail and the file in it, be the path one of Windows or not.
        return self.folder / Path(*re.split(r"[\\/]", re.split(r"\r?\n", value)[0])[-2:])

    def name_of(self, value):
        name = re.search(r"(?m)^file=(.*?)\r?$", value)[1]
        return unquote_to_bytes(name.encode()).decode().strip(" \t")

    def names(self):
        """The names of the files."""
        return [unquote(re.search(r"(?m)^file=(.*?)\r?$", value)[1]) for value in self.files]

    def listed_names(self):
        """The same of a mail that is only listed, where each has the mail's ID and the part's number before it."""
        return [unquote(re.match(r"[^#]*#[\d.]+_(.*?)\r?\n", value)[1]) for value in self.files]

    def file_bytes(self):
        return [self.path_in(value).read_bytes() for value in self.files]

    def mail_file(self):
        """The mail without its files, and without its separator."""
        return self.path_in(self.data["File"]).read_bytes().split(b"\n", 1)[1]


# --- Comparing

class Comparison:
    def __init__(self):
        self.mails_of, self.failures = defaultdict(set), []

    def mail(self, where, mail, text, record):
        names, unexplained = explained(differences(mail, text, record, lambda eml: eml))
        if unexplained and JUNK & mail.traits:
            # As if the lines that are no fields weren't there.
            names, unexplained = explained(differences(mail, without_junk(text), record, without_junk))
            names |= JUNK & mail.traits
        for name in names | TAKEN_INTO_ACCOUNT & mail.traits:
            self.mails_of[name].add(where)
        self.failures += [f"{where}: {difference}" for difference in unexplained]


def explained(compared):
    names = set()
    unexplained = []
    for each in compared:
        name = explanation(each)
        if name:
            names.add(name)
        else:
            unexplained.append(each)
    return names, unexplained


def differences(mail, text, record, cleaned):
    """All aspects of a mail in which the component and Python differ."""
    text = unquoted(text)
    message = email.message_from_bytes(text)
    kept = email.message_from_bytes(unquoted(cleaned(record.mail_file())))
    is_multipart = message.is_multipart()
    if is_multipart:
        files = [part for part in leaves(message) if is_file(part)]
    else:
        files = [message] if is_sole_file(message) else []
    found = [Compared("subject", mail, record.subject, text_of(header_of(message, "subject")), strip(mail.subject)),
             Compared("sender", mail, record.sender, text_of(header_of(message, "from")), strip(mail.sender)),
             Compared("files", mail, len(record.files), len(files), len(mail.files)),
             Compared("text", mail, texts_of(kept, is_multipart), texts_of(message, is_multipart))]
    for i, (part, value) in enumerate(zip(files, record.files)):
        name, ours = text_of(part.get_filename()), record.name_of(value)
        if name or not re.fullmatch(r"part\d+(\.[a-z0-9]+)?", ours):
            is_known = len(mail.files) == len(files)
            intended = mail.files[i] if is_known else ours if ours in mail.files else None
            found.append(Compared("name", mail, ours, name, strip(intended), part))
        data, theirs = record.path_in(value).read_bytes(), bytes_of(part)
        if part.get_content_type() == "message/rfc822" and data in text:
            # Python doesn't keep how the fields of a mail are folded.
            data = bytes_of_message(email.message_from_bytes(data))
        found.append(Compared("bytes", mail, data, theirs, None, part))
    return [each for each in found if each.ours != each.theirs]


def strip(text):
    return None if text is None else text.strip(" \t")


def texts_of(message, is_multipart):
    if not is_multipart:
        return [] if is_sole_file(message) else [text_part(message)]
    texts = [text_part(part) for part in leaves(message) if not is_file(part)]
    # Of a part without a single byte Python takes its boundary for that of the next one, if there is one.
    return [text for text in texts if text != ("", b"")]


def text_part(part):
    """The type of a text and its bytes. The component ends lines in CR LF; empty ones at the end aren't compared."""
    data = part.get_payload(decode=True) or b""
    return re.sub(r"[\r\n]", "", header_of(part, "content-type")), re.sub(rb"\r\n|\r", b"\n", data).rstrip(b"\n")


def rows_of_the_table(root):
    text = (root / "docs/differences.md").read_text(encoding="utf-8")
    return re.findall(r"^\| `([a-z0-9-]+)` \|", text, re.M)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("root", type=Path)
    parser.add_argument("--count", type=int, default=500)
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(10 ** 6))
    parser.add_argument("--brought-out", type=int, default=10,
                        help="of so many mails of each mailbox the files are brought out one by one, too")
    parser.add_argument("--keep", type=Path, help="a folder for the mailboxes and what was made of them")
    options = parser.parse_args()
    print(f"seed {options.seed}")
    if sorted(rows_of_the_table(options.root)) != sorted([*EXPLAINED, *JUNK, *TAKEN_INTO_ACCOUNT]):
        sys.exit("docs/differences.md has other rows than differences.py has functions")
    rng = random.Random(options.seed)
    comparison = Comparison()
    with tempfile.TemporaryDirectory() as temporary:
        folder = options.keep or Path(temporary)
        count = compare(options, rng, folder, comparison)
    for name, mails in sorted(comparison.mails_of.items()):
        print(f"{len(mails):6} {name}")
    print(f"{count} mails, {sum(len(m) for m in comparison.mails_of.values())} explained differences")
    print("\n".join(comparison.failures[:20]))
    sys.exit(f"{len(comparison.failures)} differences without an explanation" if comparison.failures else 0)


def compare(options, rng, folder, comparison):
    (folder / "boxes").mkdir(parents=True)
    boxes = {}
    for first in range(0, options.count, MAILS_PER_BOX):
        name = f"box{first:07}"
        boxes[name] = Box(rng, first, min(MAILS_PER_BOX, options.count - first))
        (folder / "boxes" / name).write_bytes(boxes[name].data)
        (folder / "boxes" / (name + ".msf")).write_bytes(b"")
    found = records(options.program, folder, "stream", "--output", folder / "out")
    listed = records(options.program, folder, "read")
    for name, box in boxes.items():
        both = zip(box.mails, box.texts(folder / "boxes" / name))
        texts = [(mail, text) for mail, text in both if not mail.expunged]
        comparison.mails_of["marked-as-deleted"] |= {(name, i) for i, mail in enumerate(box.mails) if mail.expunged}
        if len(texts) != len(found[name]):
            comparison.failures.append(f"{name}: {len(found[name])} mails and not {len(texts)}")
            continue
        streamed = [Record(each, folder / "out") for each in found[name]]
        for i, ((mail, text), record) in enumerate(zip(texts, streamed)):
            comparison.mail(f"{name}, mail {i + 1}", mail, text, record)
        compare_lists(options, folder, comparison, name, streamed, listed[name])
    return options.count


def compare_lists(options, folder, comparison, name, streamed, listed):
    """The lists of a mailbox, and some of its mails that are brought out one by one, with what was streamed."""
    for i, (record, each) in enumerate(zip(streamed, listed, strict=True)):
        names = Record(each, None).listed_names()
        if names != record.names():
            comparison.failures.append(f"{name}, mail {i + 1}: {names} are listed and not {record.names()}")
        elif names and i < options.brought_out:
            got = run(options.program, folder, "get", f"/{name}", str(i + 1), "--output", folder / name / str(i))
            if [Path(path).read_bytes() for path in got.splitlines()][1:] != record.file_bytes():
                comparison.failures.append(f"{name}, mail {i + 1}: other files are brought out than streamed")


if __name__ == "__main__":
    main()
