#!/usr/bin/env python3
"""The connector on a profile that Thunderbird itself has made.

Thunderbird starts on an empty home, gets mails of many charsets into folders of names that are hard on a file system,
and deletes some without compacting. Mailboxes of other programs are laid beside them, and it starts again and lists
what it has: of each folder the mails with subject, sender and date, and the attachments with their bytes. The command
line reads the whole home without any option, and must list the same, nothing missing and nothing more. The deleted
mails must not come. A mail that was brought into an archive is restored, and Thunderbird shows it with its attachments.

usage: thunderbird.py PROGRAM
"""
import base64
import contextlib
import datetime
import email.message
import email.policy
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import zoneinfo

from marionette import Application

ZONE = zoneinfo.ZoneInfo("Europe/Berlin")
ZONES = ["+0200", "+0000", "-0800", "+0545", "GMT", "EST"]
PICTURE = bytes(range(256)) * 40
REPORT = b"Zeile eins\r\nZeile zwei\r\n" * 50


def plain(number, subject, text, charset="utf-8"):
    # Every other mail comes with lone line feeds, as some sources leave them.
    mail = email.message.EmailMessage(policy=email.policy.SMTP if number % 2 else email.policy.default)
    mail["Message-ID"] = f"<real-{number}@example.org>"
    mail["Date"] = f"Mon, {number:2d} Jun 2026 10:{number:02d}:00 {ZONES[number % len(ZONES)]}"
    mail["From"] = "Jürgen Müller <juergen@example.org>"
    mail["To"] = "anna@example.org"
    mail["Subject"] = subject
    mail.set_content(text, charset=charset, cte="8bit")
    return mail


def with_attachments(number, subject, text):
    mail = plain(number, subject, text)
    mail.add_alternative(f"<html><body><p>{text}</p></body></html>", subtype="html")
    mail.add_attachment(PICTURE, maintype="image", subtype="png", filename="Bild.png")
    mail.add_attachment(REPORT, maintype="application", subtype="pdf", filename="Bericht.pdf")
    return mail


def foreign(number, charset, codec, subject, sender, text):
    """A mail whose header and text are of that charset."""
    def word(value):
        return f"=?{charset}?B?{base64.b64encode(value.encode(codec)).decode()}?="
    body = base64.encodebytes(text.encode(codec)).replace(b"\n", b"\r\n")
    mail = (f"Message-ID: <real-{number}@example.org>\r\nDate: Mon, {number} Jun 2026 10:{number}:00 +0200\r\n"
            f"From: {word(sender)} <someone@example.org>\r\nTo: anna@example.org\r\nSubject: {word(subject)}\r\n"
            f"MIME-Version: 1.0\r\nContent-Type: text/plain; charset={charset}\r\n"
            "Content-Transfer-Encoding: base64\r\n\r\n")
    return email.message_from_bytes(mail.encode() + body, policy=email.policy.default)


def with_names(number, names):
    mail = plain(number, "Namen e\u0301 \u00e9 😀", "Anlagen aus aller Welt.")
    for name in names:
        mail.add_attachment(name.encode() * 100, maintype="application", subtype="x-test", filename=name)
    return mail


# Folder, mail, whether it is deleted again.
MAILS = [
    ("Inbox", plain(1, "Erste Mail", "Nur Text.\n"), False),
    ("Inbox", plain(2, "Grüße aus Köln", "Viele Grüße.\nFrom here on it is text.\n"), False),
    ("Inbox", with_attachments(3, "Mit Anlagen", "Anbei zwei Dateien."), False),
    ("Inbox", plain(4, "Gelöscht", "Das soll keiner mehr sehen.\n"), True),
    ("Inbox", plain(5, "Ein | Strich", "Mit Sonderzeichen im Betreff.\n"), False),
    ("Inbox/Projekte", plain(6, "Im Unterordner", "Tief unten.\n"), False),
    ("Inbox/Projekte", plain(7, "Auch gelöscht", "Weg damit.\n"), True),
    ("Inbox/Projekte", with_attachments(8, "Unten mit Anlagen", "Noch zwei."), False),
    ("漢字 🦊", foreign(10, "ISO-2022-JP", "iso2022_jp", "会議のお知らせ", "山田太郎", "こんにちは。\n"), False),
    ("漢字 🦊", foreign(11, "GB18030", "gb18030", "你好，世界 𠀀", "王小明", "明天开会。\n"), False),
    ("a.b.c", foreign(12, "KOI8-R", "koi8_r", "Привет из Москвы", "Иван Петров", "До свидания.\n"), False),
    ("a.b.c", foreign(13, "windows-1251", "cp1251", "Їжак — №5", "Ганна", "Дякую.\n"), False),
    ("Einfach", foreign(14, "UTF-16", "utf_16", "مرحبا بالعالم 👩‍👩‍👧", "فاطمة", "مرحبا 😀\n"), False),
    ("Einfach", with_names(15, ["漢字.txt", "مرحبا.txt", "e\u0301.txt", "\u00e9t\u00e9.txt", "👍🏽.txt"]), False),
]

# Mailboxes of other programs: no status, separators with and without sender and date.
IMPORTED = {
    "Importiert": """From alice@example.org Mon Jan  5 10:00:00 1998
From: Alice <alice@example.org>
Date: Mon, 5 Jan 1998 10:00:00 +0100
Subject: Eins von Alice
Message-ID: <alice-1@example.org>

Text of the first.

>From now on it is quoted.

From\x20
From: =?utf-8?B?w4RuZGVydW5n?= <b@example.org>
Date: Tue, 6 Jan 1998 11:00:00 -0800 (PST)
Subject: Zwei =?iso-8859-1?Q?gr=FC=DFt?=

No Message-ID here.

From -\x20
From: c@example.org
Date: Wed, 7 Jan 1998 12:00:00 GMT
Subject: Drei
Message-ID: <c-3@example.org>
X-Mozilla-Status: 0000

Text of the third.

""",
    "Alte Mails.2003": "".join(
        f"From user{n}@example.org Fri Mar 14 09:{n:02}:00 2003\nFrom: User {n} <user{n}@example.org>\n"
        f"Date: Fri, 14 Mar 2003 09:{n:02}:00 +0100\nSubject: Nummer {n}\nMessage-ID: <{n}@old.example.org>\n\n"
        f"From what I know, number {n}.\n\n" for n in range(40)),
}

# Some of them are called otherwise on the disk.
FOLDERS = ["Ein sehr langer Ordnername, der länger als fünfundfünfzig Zeichen ist und das auch bleibt", "Größe: 1/2 #3",
           "punkt.am.ende.", "a.b.c", "漢字 🦊", "Einfach"]

FILL = """
const { MailServices } = ChromeUtils.importESModule("resource:///modules/MailServices.sys.mjs");
try { MailServices.accounts.localFoldersServer; } catch { MailServices.accounts.createLocalMailAccount(); }
const { FileUtils } = ChromeUtils.importESModule("resource://gre/modules/FileUtils.sys.mjs");
const root = MailServices.accounts.localFoldersServer.rootFolder;
const folderOf = path => path.split("/").reduce((parent, name) => {
  if (!parent.containsChildNamed(name)) parent.createSubfolder(name, null);
  return parent.getChildNamed(name);
}, root);
const doomed = new Map();
for (const [path, text, deleted] of arguments[0]) {
  const folder = folderOf(path);
  const file = await IOUtils.createUniqueFile(PathUtils.tempDir, "mail.eml");
  await IOUtils.write(file, Uint8Array.from(text, c => c.charCodeAt(0)));
  let key;
  await new Promise(resolve => MailServices.copy.copyFileMessage(new FileUtils.File(file), folder, null, false, 0, "",
      { QueryInterface: ChromeUtils.generateQI(["nsIMsgCopyServiceListener"]), onStartCopy() {}, onProgress() {},
        setMessageKey(k) { key = k; }, getMessageId() { return null; }, onStopCopy: resolve }, null));
  if (deleted) doomed.set(folder, [...(doomed.get(folder) ?? []), folder.GetMessageHeader(key)]);
}
for (const [folder, headers] of doomed) {
  await new Promise(resolve => folder.deleteMessages(headers, null, true, false,
      { QueryInterface: ChromeUtils.generateQI(["nsIMsgCopyServiceListener"]), onStartCopy() {}, onProgress() {},
        setMessageKey() {}, getMessageId() { return null; }, onStopCopy: resolve }, false));
}
for (const name of arguments[1]) if (!root.containsChildNamed(name)) root.createSubfolder(name, null);
root.descendants.forEach(folder => folder.msgDatabase?.commit(1));
return [root.filePath.path, root.subFolders.map(folder => [folder.filePath.leafName, folder.name])];
"""


# All mails of all folders, each folder in the order of its mailbox: subject, sender, date in seconds, attachments.
LIST = """
const { MailServices } = ChromeUtils.importESModule("resource:///modules/MailServices.sys.mjs");
const { MsgHdrToMimeMessage } = ChromeUtils.importESModule("resource:///modules/gloda/MimeMessage.sys.mjs");
const { setTimeout } = ChromeUtils.importESModule("resource://gre/modules/Timer.sys.mjs");
const { NetUtil } = ChromeUtils.importESModule("resource://gre/modules/NetUtil.sys.mjs");
const bytesOf = url => new Promise((resolve, reject) => NetUtil.asyncFetch(
    { uri: url, loadUsingSystemPrincipal: true }, (stream, status) => {
      if (!Components.isSuccessCode(status)) return reject(new Error(url + ": " + status));
      const size = stream.available();
      resolve(btoa(size ? NetUtil.readInputStreamToString(stream, size) : ""));
    }));
const listed = {};
for (const folder of MailServices.accounts.localFoldersServer.rootFolder.descendants) {
  // Mailboxes of other programs get a summary now.
  for (let tries = 0; tries < 100; ++tries) {
    try {
      if (folder.msgDatabase.summaryValid) break;
    } catch {}
    if (tries % 20 == 0) folder.updateFolder(null);
    await new Promise(resolve => setTimeout(resolve, 100));
  }
  const mails = [];
  for (const header of [...folder.messages].sort((a, b) => Number(a.storeToken) - Number(b.storeToken))) {
    const mime = await new Promise(resolve => MsgHdrToMimeMessage(header, null, (_, found) => resolve(found), true));
    const attachments = [];
    for (const { name, url } of mime.allUserAttachments) attachments.push([name, await bytesOf(url)]);
    mails.push([header.mime2DecodedSubject, header.mime2DecodedAuthor, header.dateInSeconds, attachments]);
  }
  if (mails.length) listed[folder.filePath.path] = mails;
}
return listed;
"""


def fail(text):
    print("FAILED:", text)
    sys.exit(1)


def run(program, home, *arguments):
    environment = {**os.environ, "HOME": str(home), "TZ": "Europe/Berlin"}
    done = subprocess.run([program, *arguments], env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, timeout=120)
    if done.returncode != 0:
        fail(f"{arguments} ended with {done.returncode}: {done.stderr.decode()}")
    return done.stdout


def seconds(date):
    """A date as the command line tells it: by the reader's clock."""
    return int(datetime.datetime.strptime(date, "%d.%m.%Y %H:%M:%S").replace(tzinfo=ZONE).timestamp())


def read_home(program, home, out):
    """What the command line lists, as LIST does."""
    found = {}
    for line in run(program, home, "read", "thunderbird://", "--json").decode().splitlines():
        item = json.loads(line)
        data = item["Data"]
        found.setdefault(data["_SourceFile"], []).append((int(data["_SourceOffset"]), item))
    listed = {}
    for file, items in found.items():
        listed[file] = []
        for _, item in sorted(items, key=lambda entry: entry[0]):
            data = item["Data"]
            described = [data[key].splitlines()[0] for key in data if key.startswith("FileAttach")]
            names = [text.partition("#")[2].partition("_")[2] for text in described]
            attachments = []
            if names:
                folder = out / str(len(list(out.iterdir())))
                run(program, home, "get", "thunderbird://", item["ID"], "--output", str(folder))
                for name in names:
                    path = next(path for path in folder.iterdir() if path.name.endswith("_" + name))
                    attachments.append([name, base64.b64encode(path.read_bytes()).decode()])
            listed[file].append([item["Text"], data["From"], seconds(item["Date"]), attachments])
    return listed


def compare(found, shown):
    """`found` by the command line, `shown` by Thunderbird."""
    if set(found) != set(shown):
        fail(f"mailboxes read {sorted(found)}, shown {sorted(shown)}")
    for file, mails in shown.items():
        for mine, mail in zip(found[file], mails):
            if mine[:3] != mail[:3]:
                fail(f"{file}: read {mine[:3]}, shown {mail[:3]}")
            if sorted(mine[3]) != sorted(mail[3]):
                fail(f"{mail[0]}: attachments read {[(n, len(b)) for n, b in mine[3]]}, "
                     f"shown {[(n, len(b)) for n, b in mail[3]]}")
        if len(found[file]) != len(mails):
            fail(f"{file}: {len(found[file])} mails read, {len(mails)} shown")


def check_folders(program, home, place, shown):
    """`shown` are pairs of file and name as Thunderbird has them."""
    profiles = run(program, home, "browse", "thunderbird://*", "--json").decode().splitlines()
    first = json.loads(profiles[0])["Data"]
    if str(pathlib.Path(place)) not in first["Path"].replace("\\", "/"):
        fail(f"the first profile is {first}, in use is that of {place}")
    profile = first["Location"].removesuffix("*")
    listed = {}
    for line in run(program, home, "browse", profile + "Local Folders/*", "--json").decode().splitlines():
        item = json.loads(line)
        listed[item["Data"]["Location"].rstrip("*/").rpartition("/")[2]] = item["Text"]
    expected = dict(shown)
    if not set(FOLDERS) <= set(expected.values()):
        fail(f"Thunderbird shows {expected}")
    for file, name in expected.items():
        # A program that holds texts in the code page can't tell them all.
        if file in listed and listed[file] not in (name, name.encode("cp1252", "replace").decode("cp1252")):
            fail(f"the folder {file} is listed as {listed[file]!r}, and Thunderbird shows {name!r}")
    missing = [name for file, name in expected.items() if name in FOLDERS and file not in listed]
    if missing:
        fail(f"folders that are not listed: {missing}, only {listed}")
    hashed = next(file for file, name in expected.items() if name == FOLDERS[0])
    if hashed == FOLDERS[0]:
        fail("no folder is called otherwise on the disk")


@contextlib.contextmanager
def thunderbird(home, log):
    application = Application(["thunderbird"], home, log)
    try:
        yield application
    finally:
        application.quit()


def restore(program, home, folder, place):
    """Takes a mail with attachments into an archive, and appends it to another folder."""
    archive = str(folder / "archive")
    address = next(json.loads(line)["Data"]["Location"].removesuffix("*")
                   for line in run(program, home, "browse", "thunderbird://*", "--json").decode().splitlines())
    inbox = address + "Local Folders/"
    run(program, home, "import", inbox + "Inbox/-", "--target", archive)
    items = map(json.loads, run(program, home, "search", archive, "Anlagen", "--json").decode().splitlines())
    item = next(item for item in items if item["Text"] == "Mit Anlagen")
    run(program, home, "restore", inbox + "Importiert/-", item["ID"], "--archive", archive, "--yes")


def main():
    program = str(pathlib.Path(sys.argv[1]).resolve())
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        home = folder / "home"
        home.mkdir()
        out = folder / "out"
        out.mkdir()
        log = folder / "log"
        with thunderbird(home, log) as application:
            given = [[path, mail.as_bytes().decode("latin-1"), deleted] for path, mail, deleted in MAILS]
            place, shown_folders = application.run(FILL, given, FOLDERS)
        print("Thunderbird wrote", place)
        check_folders(program, home, place, shown_folders)
        for box, text in IMPORTED.items():
            pathlib.Path(place, box).write_text(text, encoding="utf-8")
        with thunderbird(home, log) as application:
            shown = application.run(LIST)
        count = sum(map(len, shown.values()))
        expected = sum(not gone for *_, gone in MAILS) + 3 + 40
        if count != expected:
            fail(f"Thunderbird shows {count} mails of {expected}: { {k: [m[0] for m in v] for k, v in shown.items()} }")
        compare(read_home(program, home, out), shown)
        print(f"{count} mails read as Thunderbird shows them, "
              f"{sum(gone for *_, gone in MAILS)} deleted ones passed over")

        restore(program, home, folder, place)
        with thunderbird(home, log) as application:
            shown = application.run(LIST)
        subject, _, _, attachments = shown[str(pathlib.Path(place, "Importiert"))][-1]
        expected = [[name, base64.b64encode(content).decode()]
                    for name, content in (("Bild.png", PICTURE), ("Bericht.pdf", REPORT))]
        if subject != "Mit Anlagen" or attachments != expected:
            fail(f"the restored mail is shown as {subject} with {[(name, len(data)) for name, data in attachments]}")
        compare(read_home(program, home, out), shown)
        print("A restored mail is shown with its attachments")


if __name__ == "__main__":
    main()
