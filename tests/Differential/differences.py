"""Where the component takes a mail differently from Python's `mailbox` and `email`, and what it takes it for.

Each difference is a row in docs/differences.md and a function here of the same name. It is given what was compared and
tells what the component is to make of it. A difference is explained only if the mail was made with the trait of that
name and the component made just that of it.
"""
import re
from base64 import b64decode
from email import message_from_bytes
from email.policy import compat32

EXPLAINED = {}
# Explained if both agree once the lines in headers that are no fields are left out.
JUNK = {"no-field", "no-empty-line"}
# Of these mails each is compared in a way of its own (random_mails.py).
TAKEN_INTO_ACCOUNT = {"line-in-body", "marked-as-deleted", "nameless", "message", "named-text"}


def explains(*aspects):
    """A difference in these aspects of a mail: mails, subject, sender, name, bytes, files, text."""
    def register(function):
        EXPLAINED[function.__name__.replace("_", "-")] = (aspects, function)
        return function
    return register


def explanation(compared):
    """The name of the difference that explains what was compared, nothing if there is none."""
    for name, (aspects, expected) in EXPLAINED.items():
        if compared.aspect not in aspects or name not in compared.mail.traits:
            continue
        if compared.ours in together(expected(compared), compared):
            return name
    return None


def together(expected, compared):
    """What is expected, and that with the differences of line ends, which come with any other one."""
    yield expected
    if compared.aspect != "bytes":
        return
    if "no-closing" in compared.mail.traits:
        yield with_line_end(expected, compared)


def with_line_end(data, compared):
    return data + (b"\r\n" if compared.ours.endswith(b"\r\n") else b"\n")


class Compared:
    """One aspect of one mail: what the component made of it, what Python did, and what was meant."""

    def __init__(self, aspect, mail, ours, theirs, meant=None, part=None):
        self.aspect, self.mail, self.ours, self.theirs, self.meant, self.part = aspect, mail, ours, theirs, meant, part

    def __str__(self):
        return (f"{self.aspect} of {' '.join(sorted(self.mail.traits))}: {self.ours!r:.300} and not "
                f"{self.theirs!r:.300}, meant {self.meant!r:.100}")

    def payload(self):
        """The bytes of the part as they stand in the mailbox."""
        payload = self.part._payload
        return bytes_of_message(payload[0]) if isinstance(payload, list) else payload.encode("ascii", "surrogateescape")


def bytes_of_message(message):
    return message.as_bytes(policy=compat32.clone(max_line_length=None))


# --- Subjects, senders and names

@explains("subject", "name")
def raw_bytes(compared):
    return compared.meant


@explains("subject")
def unknown_charset(compared):
    return compared.meant


@explains("subject")
def bad_bytes(compared):
    return compared.meant


@explains("subject")
def page_1252(compared):
    return compared.meant


@explains("subject")
def superset(compared):
    return compared.meant


@explains("subject")
def word_language(compared):
    return compared.meant


@explains("subject")
def line_end_in_word(compared):
    return compared.meant


@explains("name")
def extended_beside_plain(compared):
    return compared.meant


# --- Encodings

@explains("bytes", "subject")
def bad_base64(compared):
    return compared.meant if compared.part is None else lenient_base64(compared.payload())


@explains("bytes", "subject")
def bad_code(compared):
    return compared.meant if compared.part is None else lenient_quoted_printable(compared.payload())


@explains("bytes")
def blanks_at_line_end(compared):
    return lenient_quoted_printable(compared.payload())


@explains("bytes")
def encoding_field(compared):
    name = re.sub(r"\(.*?\)", "", compared.part.get("content-transfer-encoding", "")).strip().lower()
    decoders = {"base64": lenient_base64, "quoted-printable": lenient_quoted_printable}
    return decoders.get(name, bytes)(compared.payload())


@explains("bytes")
def no_closing(compared):
    return with_line_end(compared.theirs, compared)


def lenient_base64(data):
    """Groups end with their padding; what isn't of the alphabet is passed over."""
    found = b""
    for group in data.split(b"="):
        letters = re.sub(rb"[^A-Za-z0-9+/]", b"", group)
        if len(letters) % 4 == 1:
            letters = letters[:-1]
        found += b64decode(letters + b"=" * (-len(letters) % 4))
    return found


def lenient_quoted_printable(data):
    """No blanks at the ends of lines; a code that is none stays."""
    data = re.sub(rb"[ \t]+(?=\r?\n|\r|$)", b"", data)
    data = re.sub(rb"=(\r\n|\r|\n|\Z)", b"", data)
    return re.sub(rb"=([0-9A-Fa-f]{2})", lambda found: bytes([int(found[1], 16)]), data)


# --- Headers

def without_junk(text):
    """The text of a mail without the lines in its headers that are no fields: headers end with an empty line."""
    kept, fields, boundaries, in_header = [], [], [], True
    for line in re.findall(rb"[^\r\n]*(?:\r\n|\r|\n|\Z)", text):
        bare = line.rstrip(b"\r\n")
        level = level_of(bare, boundaries)
        if level is not None:
            del boundaries[level + 1:]
            fields, in_header = [], bare.rstrip() == b"--" + boundaries[level]
        elif in_header and not bare:
            boundaries += boundary_in(fields)
            in_header = False
        elif in_header:
            if not re.match(rb"[!-9;-~]*:|[\t ]", bare):
                continue
            fields.append(line)
        kept.append(line)
    return b"".join(kept)


def level_of(line, boundaries):
    """Of which of the boundaries the line is one, that of the innermost multipart first."""
    if line.startswith(b"--"):
        for level in reversed(range(len(boundaries))):
            if line.rstrip(b" \t") in (b"--" + boundaries[level], b"--" + boundaries[level] + b"--"):
                return level
    return None


def boundary_in(fields):
    boundary = message_from_bytes(b"".join(fields) + b"\n").get_boundary()
    return [] if boundary is None else [boundary.encode("utf-8", "surrogateescape")]
