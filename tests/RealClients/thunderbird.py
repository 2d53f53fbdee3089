#!/usr/bin/env python3
"""The connector on a profile that Thunderbird itself has made.

Thunderbird starts on an empty home, gets mails into Local Folders and a folder below Inbox, and deletes some
without compacting. Then the command line reads the whole home without any option, and what it reads is compared
with the mails that were put in: subjects, texts, attachments; the deleted ones must not come.

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
MailServices.accounts.localFoldersServer.rootFolder.descendants.forEach(folder => folder.msgDatabase?.commit(1));
return root.filePath.path;
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


def main():
    program = str(pathlib.Path(sys.argv[1]).resolve())
    with tempfile.TemporaryDirectory() as folder:
        home = pathlib.Path(folder, "home")
        home.mkdir()
        application = Application(["thunderbird"], home, pathlib.Path(folder, "log"))
        try:
            given = [[path, mail.as_bytes().decode("latin-1"), deleted] for path, mail, deleted in MAILS]
            place = application.run(FILL, given)
        finally:
            application.quit()
        print("Thunderbird wrote", place)

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
