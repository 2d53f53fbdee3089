"""Makes random mails, well formed and damaged, and tells of each what was done to it.

A made mail carries `traits`: a name for everything in it that readers are known to take differently, beside what was
meant by it where the bytes alone don't tell. The names are those of the table in docs/differences.md.
"""
import base64
import quopri
from dataclasses import dataclass, field
from urllib.parse import quote

# Words that each charset can write; the charset as mails tell it, the codec that writes it here.
CHARSETS = [
    ("utf-8", "utf-8", "Grüße Привет 你好 مرحبا שלום 😀 한국 ไทย Ελλάδα é é"),
    ("UTF-8", "utf-8", "naïve Straße 😀😀 日本語"),
    ("us-ascii", "ascii", "plain words of the old world"),
    ("iso-8859-1", "latin-1", "Grüße ñandú Ærø ýÿ"),
    ("windows-1252", "cp1252", "€ „Zitat“ – Œuvre…"),
    ("iso-8859-2", "iso8859-2", "Zażółć gęślą jaźń"),
    ("windows-1250", "cp1250", "Příliš žluťoučký „kůň“"),
    ("iso-8859-15", "iso8859-15", "€ Œuvre žena"),
    ("koi8-r", "koi8-r", "Привет из Москвы"),
    ("koi8-u", "koi8-u", "Привіт з Києва"),
    ("windows-1251", "cp1251", "Привет — „мир“"),
    ("iso-8859-5", "iso8859-5", "Привет мир"),
    ("iso-8859-7", "iso8859-7", "Γειά σου κόσμε"),
    ("windows-1253", "cp1253", "Ελλάδα"),
    ("iso-8859-9", "iso8859-9", "İstanbul güneş"),
    ("windows-1254", "cp1254", "ığdır şeker"),
    ("iso-8859-8", "iso8859-8", "שלום עולם"),
    ("windows-1255", "cp1255", "שלום"),
    ("windows-1256", "cp1256", "مرحبا بالعالم"),
    ("iso-8859-6", "iso8859-6", "مرحبا"),
    ("windows-1257", "cp1257", "Žemaitija šąla"),
    ("iso-8859-4", "iso8859-4", "Čeština"),
    ("iso-8859-13", "iso8859-13", "Rīga"),
    ("tis-620", "tis-620", "สวัสดี"),
    ("gb2312", "gb2312", "你好世界"),
    ("gbk", "gbk", "你好镕"),
    ("gb18030", "gb18030", "你好😀é"),
    ("big5", "big5", "你好世界"),
    ("Shift_JIS", "shift_jis", "こんにちは世界"),
    ("euc-jp", "euc-jp", "こんにちは世界"),
    ("iso-2022-jp", "iso2022-jp", "こんにちは世界"),
    ("euc-kr", "euc-kr", "안녕하세요"),
    ("cp866", "cp866", "Привет"),
    ("macintosh", "mac-roman", "Grüße œuvre"),
]
# Of these a word can be cut in the middle of a character.
MULTIBYTE = {"utf-8", "gb18030", "gbk", "gb2312", "big5", "euc-kr", "euc-jp", "shift_jis"}

WORDS = "Rechnung Januar Angebot re: Fwd: meeting lunch tomorrow 12,50 100% ok! (neu) [list] a_b x=y #1 ...".split()
NAMES = ["report.pdf", "image.png", "a b.txt", "Lageplan.PNG", "data.tar.gz", "noending", "x;y.txt", "50%.txt",
         "a'b.txt", "(1).txt", "Grüße.txt", "Привет.doc", "你好.png", "emoji😀.jpg", "e\u0301.txt", "مرحبا.pdf",
         "UPPER.TXT", ".hidden",
         "a+b.txt", "tab[1].csv", "long" * 30 + ".txt", "mail.eml", "mail.html", "att1", "a\"b.txt", "a\\b.txt", "CON",
         "trailing.", "a,b=c.txt", "x" * 180 + ".bin"]


@dataclass
class Part:
    """A part: its bytes, and what it is meant to be."""
    header: bytes
    body: bytes


@dataclass
class Mail:
    header: bytes = b""
    body: bytes = b""
    traits: set = field(default_factory=set)
    subject: str = None
    sender: str = None
    files: list = field(default_factory=list)
    expunged: bool = False

    def data(self):
        return self.header + b"\n" + self.body


class Maker:
    """Makes mails by the numbers of one random generator."""

    def __init__(self, rng):
        self.rng = rng
        self.traits = set()
        self.files = []
        self.boundaries = 0

    def chance(self, percent):
        return self.rng.random() * 100 < percent

    def words(self, least=1, most=6):
        return " ".join(self.rng.choices(WORDS, k=self.rng.randint(least, most)))

    # --- Header texts

    def encoded_word(self, charset, data):
        if self.chance(50):
            text = base64.b64encode(data).decode()
            return f"=?{charset}?{self.rng.choice('Bb')}?{text}?="
        text = "".join(chr(b) if chr(b).isalnum() and b < 128 else "_" if b == 32 else f"={b:02X}" for b in data)
        return f"=?{charset}?{self.rng.choice('Qq')}?{text}?="

    def encoded_words(self):
        """Encoded words of one charset and the text that they stand for."""
        charset, codec, sample = self.rng.choice(CHARSETS)
        text = " ".join(self.rng.choices(sample.split(), k=self.rng.randint(1, 5)))
        if self.chance(60):
            return self.encoded_word(charset, text.encode(codec)), text
        between = self.rng.choice([" ", "\n ", "\n\t", "  ", " \n  "])
        if codec in MULTIBYTE and self.chance(40):
            data = text.encode(codec)
            cut = self.rng.randint(1, len(data))
            pieces = [data[:cut], data[cut:]]
        else:
            cut = self.rng.randint(1, len(text))
            pieces = [text[:cut].encode(codec), text[cut:].encode(codec)]
        words = [self.encoded_word(charset, piece) for piece in pieces if piece]
        return between.join(words), text

    def header_text(self):
        """The value of a header as written, and what is meant by it; nothing where that isn't defined."""
        kind = self.rng.randint(0, 99)
        if kind < 25:
            text = self.words()
            return text.encode(), text
        if kind < 60:
            return self.mixed_text()
        if kind < 66:
            text = self.words(2, 12)
            folded = text.replace(" ", self.rng.choice(["\n ", "\n\t", " \n "]), 2)
            return folded.encode(), folded.replace("\n", "")
        if kind < 72:
            return self.raw_text()
        if kind < 74:
            return b"", ""
        return self.damaged_text()

    def mixed_text(self):
        written, meant = "", ""
        for i in range(self.rng.randint(1, 4)):
            if i > 0:
                written, meant = written + " ", meant + " "
            is_word = i == 0 or not written.rstrip().endswith("?=")
            piece, text = self.encoded_words() if is_word and self.chance(80) else (self.words(1, 2),) * 2
            written, meant = written + piece, meant + text
        return written.encode(), meant

    def raw_text(self):
        self.traits.add("raw-bytes")
        charset, codec, sample = self.rng.choice(CHARSETS[:5])
        text = self.rng.choice(sample.split())
        data = text.encode(codec) + b" " + self.words(1, 2).encode()
        return data, utf8_or_1252(data)

    def damaged_text(self):
        word = self.encoded_word
        made = [
            ("unknown-charset", word("x-none", "Grüße".encode()), "Grüße"),
            ("unknown-charset", word("no/such//IGNORE", b"Gr\xfc\xdf"), "Grüß"),
            ("bad-bytes", word("utf-8", b"a\xe2\x82"), "aâ‚"),
            ("bad-bytes", word("utf-8", b"a\xc0\xafz"), "aÀ¯z"),
            ("bad-bytes", word("utf-8", b"\xed\xa0\x80z"), "í\u00a0€z"),
            ("bad-bytes", word("utf-8", b"\xe4\xf6\xfc"), "äöü"),
            ("page-1252", word("iso-8859-1", b"\x80 \x84Gr\xfc\xdf\x93"), "€ „Grüß“"),
            ("page-1252", word("us-ascii", b"Gr\xfc\xdfe"), "Grüße"),
            ("superset", word("gb2312", "é😀".encode("gb18030")), "é😀"),
            ("word-language", word("utf-8*de", "Grüße".encode()), "Grüße"),
            ("bad-code", "=?utf-8?Q?a=ZZb=C3=A4=4?=", "a=ZZbä=4"),
            ("bad-base64", "=?utf-8?B?R3LDvMOfZQ?=", "Grüße"),
            ("bad-base64", "=?utf-8?B?R3LD*vMOf ZQ==?=", "Grüße"),
            ("bad-base64", "=?utf-8?B?R3LDvMOfZ?=", "Grüß"),
            ("bad-base64", "=?utf-8?B?YQ==Yg==?=", "ab"),
            (None, "=?utf-8?X?abc?= def", "=?utf-8?X?abc?= def"),
            (None, "=?utf-8?Q?abc", "=?utf-8?Q?abc"),
            (None, "a ?= b =? c", "a ?= b =? c"),
            (None, "=?utf-8?Q??=", ""),
            (None, "=?utf-8?Q?what?_yes?=", "what? yes"),
            (None, "=?=?utf-8?Q?a?=", None),
            (None, "x=?utf-8?Q?=C3=A4?=y", "xäy"),
            ("line-end-in-word", "=?utf-8?Q?a=0D=0Ab?=", "ab"),
            (None, "=?utf-8?Q?" + "x=C3=A4" * 5000 + "?=", "xä" * 5000),
            ("nul", "a\0b", "a\0b"),
        ]
        trait, written, meant = self.rng.choice(made)
        if trait:
            self.traits.add(trait)
        return written.encode(), meant

    # --- Names of parts

    def name_parameter(self, key, name):
        """The parameter of a header that tells a name, in one of its forms."""
        kind = self.rng.randint(0, 99)
        plain = all(32 < ord(c) < 127 and c not in '()<>@,;:\\"/[]?=\'*%' for c in name)
        if plain and kind < 20:
            return f"; {key}={name}".encode()
        escaped = name.replace("\\", "\\\\").replace('"', '\\"')
        if name.isascii() and kind < 55:
            return f'; {key}="{escaped}"'.encode()
        if kind < 65:
            return f"; {key}*={self.extended(name)}".encode()
        if kind < 80:
            return self.continued(key, name)
        if kind < 85:
            self.traits.add("extended-beside-plain")
            both = [f'{key}="fallback.txt"', f"{key}*={self.extended(name)}"]
            self.rng.shuffle(both)
            return ("; " + "; ".join(both)).encode()
        if kind < 88 and not name.isascii():
            self.traits.add("raw-bytes")
            return f'; {key}="{escaped}"'.encode()
        return f'; {key}="{self.encoded_word("utf-8", name.encode())}"'.encode()

    def extended(self, name):
        charset, codec = self.rng.choice([("utf-8", "utf-8"), ("UTF-8", "utf-8"), ("gb18030", "gb18030")])
        language = self.rng.choice(["", "", "de", "en-us"])
        return f"{charset}'{language}'" + quote(name.encode(codec), safe="")

    def continued(self, key, name):
        sections, rest, first = [], name, True
        while rest or first:
            size = self.rng.randint(1, 30)
            piece, rest = rest[:size], rest[size:]
            if piece.isascii() and not set(piece) & set('"\\') and not first and self.chance(50):
                sections.append(f'{key}*{len(sections)}="{piece}"')
            else:
                intro = "utf-8'de'" if first else ""
                sections.append(f"{key}*{len(sections)}*={intro}{quote(piece, safe='')}")
            first = False
        if self.chance(25):
            self.rng.shuffle(sections)
        between = self.rng.choice(["; ", ";\n ", ";\n\t", " ;"])
        return (between + between.join(sections)).encode()

    # --- Content

    def content(self, kind):
        if kind == "text":
            text = "\n".join(self.words(0, 12) for _ in range(self.rng.randint(0, 12)))
            return (text + "\n" * self.rng.randint(0, 2)).encode()
        if kind == "odd":
            lines = ["a\rb", "a\0b", "--", "-- ", ">From here", "--B", "From the start", ".", "=", "a=\t", "trailing  ",
                     "\t", "--=_x", "_"]
            return "\n".join(self.rng.choices(lines, k=8)).encode()
        return self.rng.randbytes(self.rng.choice([0, 1, 2, 53, 54, 55, 57, 100, 1000, 5000]))

    def encode(self, data, is_text):
        """A header field for the encoding, and the data so encoded."""
        kind = self.rng.randint(0, 99)
        if not is_text or kind < 35:
            return self.cte("base64"), self.in_base64(data)
        if kind < 65:
            return self.cte("quoted-printable"), self.in_quoted_printable(data)
        if kind < 68:
            self.traits.add("unknown-encoding")
            return self.cte("x-foo"), data
        name = self.rng.choice(["7bit", "8bit", "binary", ""])
        return self.cte(name) if name else b"", data

    def cte(self, name):
        name = self.rng.choice([name, name, name.upper(), name.title()])
        form = self.rng.randint(0, 19)
        if form < 3:
            self.traits.add("encoding-field")
        if form == 0:
            return f"Content-Transfer-Encoding:\n {name}\n".encode()
        if form == 1:
            return f"Content-Transfer-Encoding: {name} (as ever)\n".encode()
        if form == 2:
            return f"content-transfer-encoding:{name} \n".encode()
        return f"Content-Transfer-Encoding: {name}\n".encode()

    def in_base64(self, data):
        text = base64.b64encode(data).decode()
        width = self.rng.choice([76, 76, 76, 72, 60, 4, 3, 77, 1000, 10 ** 6])
        lines = "\n".join(text[i:i + width] for i in range(0, len(text), width))
        damage = self.rng.randint(0, 99)
        if damage < 4 and text.endswith("="):
            self.traits.add("bad-base64")
            lines = lines.rstrip("=")
        elif damage < 8 and lines:
            at = self.rng.randrange(len(lines))
            lines = lines[:at] + self.rng.choice(["*", " ", "\n\n", "\t-", "!?", "\0"]) + lines[at:]
        elif damage < 10:
            self.traits.add("bad-base64")
            lines += "\n" + base64.b64encode(data + b"x").decode()
        elif damage < 12 and lines:
            self.traits.add("bad-base64")
            lines = lines[:-self.rng.randint(1, 5)]
        return lines.encode()

    def in_quoted_printable(self, data):
        text = quopri.encodestring(data)
        if text.endswith(b"=\n"):
            text = text[:-2]
        damage = self.rng.randint(0, 99)
        if damage < 5:
            self.traits.add("bad-code")
            text += self.rng.choice([b"=ZZ", b"=4", b"a=G1b", b"100% = x", b"=", b"=\n="])
        elif damage < 9:
            self.traits.add("blanks-at-line-end")
            text = text.replace(b"\n", self.rng.choice([b" \n", b"\t \n"]))
        elif damage < 12:
            text = bytes(text).replace(b"=3D", b"=3d")
        return text

    # --- Parts

    def boundary(self):
        self.boundaries += 1
        forms = ["B%d", "----=_Part_%d", "b %d c", "=_%d'()+_,-./:=?", "%d", "Apple-Mail=_%d"]
        return self.rng.choice(forms) % self.boundaries

    def leaf(self):
        kind = self.rng.randint(0, 99)
        if kind < 35:
            return self.text_part()
        if kind < 90:
            return self.file_part()
        return self.message_part()

    def text_part(self):
        charset, codec, sample = self.rng.choice(CHARSETS)
        data = self.content(self.rng.choice(["text", "odd"])) + sample.encode(codec) + b"\n" * self.rng.randint(0, 2)
        field, body = self.encode(data, True)
        subtype = self.rng.choice(["plain", "plain", "html", "HTML", "calendar"])
        value = self.rng.choice([charset, f'"{charset}"'])
        type_field = f"Content-Type: text/{subtype}; charset={value}\n"
        if self.chance(5):
            type_field = ""
        return self.with_fields([type_field.encode(), field], body)

    def file_part(self):
        name = self.rng.choice(NAMES)
        is_text = self.chance(30)
        data = self.content(self.rng.choice(["text", "odd"]) if is_text else "bytes")
        field, body = self.encode(data, is_text)
        content_type = self.rng.choice(["application/octet-stream", "image/png", "text/plain", "application/pdf",
                                        "Application/X-Some-Thing", "text/x-csrc"])
        type_field = f"Content-Type: {content_type}".encode()
        place = self.rng.randint(0, 99)
        fields = [field]
        if place < 15:
            fields.append(type_field + self.name_parameter("name", name) + b"\n")
        elif place < 80:
            disposition = self.rng.choice([b"attachment", b"inline", b"ATTACHMENT"])
            fields.append(b"Content-Disposition: " + disposition + self.name_parameter("filename", name) + b"\n")
            with_name = self.name_parameter("name", name) if self.chance(40) else b""
            fields.append(type_field + with_name + b"\n")
        elif place < 90:
            self.traits.add("nameless")
            fields += [type_field + b"\n", b"Content-Disposition: attachment\n"]
            name = None
        else:
            self.traits.add("nameless")
            fields.append(type_field + b"\n")
            name = None
        self.rng.shuffle(fields)
        part = self.with_fields(fields, body)
        self.files.append(name)
        return part

    def message_part(self):
        self.traits.add("message")
        inner = Maker(self.rng)
        subject, _ = inner.header_text()
        body = inner.content("text")
        header = b"Content-Type: message/rfc822\n"
        is_named = self.chance(50)
        if is_named:
            header += b'Content-Disposition: attachment; filename="inner.eml"\n'
        self.files.append("inner.eml" if is_named else None)
        return Part(header, b"From: x@y.z\nSubject: " + subject + b"\nMIME-Version: 1.0\n\n" + body)

    def with_fields(self, fields, body):
        fields = [f for f in fields if f]
        if self.chance(10):
            fields.insert(self.rng.randint(0, len(fields)), b"X-Other: some\n\tmore\n")
        if self.chance(3):
            fields.append(b"Content-Description: " + self.header_text()[0] + b"\n")
        return Part(b"".join(fields), body)

    def multipart(self, depth):
        boundary = self.boundary()
        subtype = self.rng.choice(["mixed", "mixed", "alternative", "related", "signed", "x-own", "Mixed"])
        needs_quotes = any(c in boundary for c in " ()/:=?,'")
        value = f'"{boundary}"' if needs_quotes or self.chance(50) else boundary
        form = self.rng.choice(["; boundary=%s", ";\n boundary=%s", "; charset=utf-8; BOUNDARY=%s",
                                ';\n\ttype="a;b"; boundary = %s;'])
        header = f"Content-Type: multipart/{subtype}{form % value}\n".encode()
        if self.chance(3) and depth > 0:
            header += b"Content-Disposition: attachment; filename=folder\n"
        if self.chance(3):
            self.traits.add("encoded-multipart")
            header += b"Content-Transfer-Encoding: base64\n"
        body = self.rng.choice([b"", b"", b"This is a mail of several parts.\n", b"\n"])
        count = self.rng.choice([0, 1, 1, 2, 2, 3, 4]) if self.chance(95) else 30
        for _ in range(count):
            part = self.multipart(depth + 1) if depth < 4 and self.chance(25) else self.leaf()
            body += self.opening(boundary) + self.part_bytes(part)
        return Part(header, body + self.closing(boundary, count))

    def opening(self, boundary):
        return f"--{boundary}{self.rng.choice(['', '', '', ' ', chr(9)])}\n".encode()

    def part_bytes(self, part):
        damage = self.rng.randint(0, 199)
        if damage == 0:
            self.traits.add("no-empty-line")
            if b"base64" in part.header.lower():
                self.traits.add("bad-base64")  # its first line goes with the header
            return part.header + part.body + b"\n"
        if damage == 1:
            self.traits.add("no-field")
            return part.header + b"no field at all\n\n" + part.body + b"\n"
        if damage == 2:
            self.traits.add("part-without-body")
            return part.header
        return part.header + b"\n" + part.body + b"\n"

    def closing(self, boundary, count):
        if self.chance(5):
            self.traits.add("no-closing")
            return b""
        if count == 0:
            self.traits.add("no-parts")
        end = f"--{boundary}--{self.rng.choice(['', '', ' '])}\n".encode()
        return end + self.rng.choice([b"", b"", b"\n", b"epilogue\n", b"\nfooter of a list\n--\n"])

    # --- Mails

    def mail(self, number):
        mail = Mail()
        part = self.multipart(0) if self.chance(70) else self.single()
        fields = [b"Date: Sat, 21 Nov 2026 14:59:15 +0100\n"]
        if not self.chance(5):
            fields.append(f"Message-ID: <{number}@random.example>\n".encode())
        subject, mail.subject = self.header_text()
        if not self.chance(3):
            fields.append(b"Subject:" + self.rng.choice([b" ", b" ", b"", b"  "]) + subject + b"\n")
        else:
            mail.subject = ""
        if self.chance(5):
            fields.append(b"X-Own: a\nSubject: a second one\n\tfolded\n" if mail.subject else b"X-Own: a\n")
        words, sender = self.encoded_words()
        if self.chance(50):
            words = sender = "Anna"
        fields.append(f"From: {words} <anna@x.de>\n".encode())
        mail.sender = sender + " <anna@x.de>"
        if self.chance(40):
            fields.insert(0, b"X-Mozilla-Status: 0001\nX-Mozilla-Status2: 00000000\n")
        elif self.chance(3):
            fields.insert(0, b"X-Mozilla-Status: 0009\n")
            mail.expunged = True
        if self.chance(30):
            fields.insert(0, b"Received: from a\n by b;\n Sat, 21 Nov 2026\nReceived: from c\n by d\n")
        if self.chance(2):
            self.traits.add("no-field")
            fields.append(b"no field at all\n")
        mail.header = b"".join(fields) + b"MIME-Version: 1.0\n" + part.header
        mail.body = part.body
        mail.traits, mail.files = self.traits, self.files
        return mail

    def single(self):
        if self.chance(15):
            part = self.file_part()
            header = part.header.lower()
            if self.files[0] and b"type: text/" in header and b"disposition: attachment" not in header:
                self.traits.add("named-text")
                self.files = []
            return part
        return self.text_part()


def utf8_or_1252(data):
    """Bytes as UTF-8; those that fit no character as Windows-1252."""
    text = ""
    while data:
        try:
            return text + data.decode()
        except UnicodeDecodeError as error:
            text += data[:error.start].decode() + page_1252(data[error.start:error.start + 1])
            data = data[error.start + 1:]
    return text


def page_1252(data):
    return "".join(bytes([b]).decode("cp1252", "replace").replace("�", chr(b)) for b in data)
