#!/usr/bin/env python3
"""The connector on a profile that Thunderbird itself has made.

Thunderbird starts on an empty home, gets mails into Local Folders and a folder below Inbox, and deletes some
without compacting. Then the command line reads the whole home without any option, and what it reads is compared
with the mails that were put in: subjects, texts, attachments; the deleted ones must not come. Folders whose names the
file system can't hold are listed as Thunderbird shows them.

usage: thunderbird.py PROGRAM
"""
import email.message
import email.policy
import json
import os
import pathlib
import subprocess
import sys
import tempfile

from marionette import Application

PICTURE = bytes(range(256)) * 40
REPORT = b"Zeile eins\r\nZeile zwei\r\n" * 50


def plain(number, subject, text, charset="utf-8"):
    # Every other mail comes with lone line feeds, as some sources leave them.
    mail = email.message.EmailMessage(policy=email.policy.SMTP if number % 2 else email.policy.default)
    mail["Message-ID"] = f"<real-{number}@example.org>"
    mail["Date"] = f"Mon, {number:2d} Jun 2026 10:{number:02d}:00 +0200"
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
]

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
for (const name of arguments[1]) root.createSubfolder(name, null);
root.descendants.forEach(folder => folder.msgDatabase?.commit(1));
return [root.filePath.path, root.subFolders.map(folder => [folder.filePath.leafName, folder.name])];
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


def check_mail(program, home, item, mail, out):
    data = item["Data"]
    if mail.is_multipart():
        names = ["Bild.png", "Bericht.pdf"]
    else:
        names = []
    attached = [data[key] for key in data if key.startswith("FileAttach")]
    if [name for name in names] != [text.splitlines()[0].partition("#")[2].partition("_")[2] for text in attached]:
        fail(f"{mail['Subject']}: attachments {attached}")
    folder = out / item["ID"]
    run(program, home, "get", "thunderbird://", item["ID"], "--output", str(folder))
    files = {path.name: path.read_bytes() for path in folder.iterdir()}
    for name, content in (("Bild.png", PICTURE), ("Bericht.pdf", REPORT)):
        if name in names and content not in files.values():
            fail(f"{mail['Subject']}: {name} came out wrong")
    text = next(content for name, content in files.items() if name.endswith(".eml"))
    body = mail.get_body(("plain",)).get_content().strip()
    for line in body.splitlines():
        if line.replace("From ", ">From ").encode() not in text and line.encode() not in text:
            fail(f"{mail['Subject']}: the line {line!r} is missing in the text")


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


def main():
    program = str(pathlib.Path(sys.argv[1]).resolve())
    with tempfile.TemporaryDirectory() as folder:
        home = pathlib.Path(folder, "home")
        home.mkdir()
        application = Application(["thunderbird"], home, pathlib.Path(folder, "log"))
        try:
            given = [[path, mail.as_bytes().decode("latin-1"), deleted] for path, mail, deleted in MAILS]
            place, shown = application.run(FILL, given, FOLDERS)
        finally:
            application.quit()
        print("Thunderbird wrote", place)
        check_folders(program, home, place, shown)

        lines = run(program, home, "read", "thunderbird://", "--json").decode().splitlines()
        read = {item["ID"].partition("-")[2]: item for item in map(json.loads, lines) if item["Type"] == "mail"}
        expected = {f"real-{n}@example.org": mail for n, (_, mail, gone) in enumerate(MAILS, 1) if not gone}
        if set(read) != set(expected):
            fail(f"read {sorted(read)}, expected {sorted(expected)}")
        for key, mail in expected.items():
            if read[key]["Text"] != str(mail["Subject"]):
                fail(f"subject {read[key]['Text']!r}, expected {str(mail['Subject'])!r}")
            check_mail(program, home, read[key], mail, pathlib.Path(folder, "out"))
        print(f"{len(expected)} mails read as Thunderbird wrote them, "
              f"{sum(gone for *_, gone in MAILS)} deleted ones passed over")


if __name__ == "__main__":
    main()
