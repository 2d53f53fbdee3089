#!/usr/bin/env python3
"""Writes the Thunderbird part of the sample AppData tree: two profiles with accounts, folders and mails.

Every byte is fixed, so that running it again changes nothing. The account folders are named on drive S:, which
stands for the folder that holds AppData (--drive S=samples).
"""
import base64
import pathlib
import shutil
import sys

ROOT = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent / "AppData")
THUNDERBIRD = ROOT / "Thunderbird"
MSF = b'// <!-- <mdb:mork:z v="1.4"/> -->\r\n'


def crlf(text, charset="latin-1"):
    return text.replace("\n", "\r\n").encode(charset)


def base64_lines(data):
    text = base64.b64encode(data).decode()
    return "\n".join(text[i:i + 76] for i in range(0, len(text), 76))


def mail(separator_date, status, headers, body, charset="latin-1"):
    """One mail as Thunderbird keeps it: separator, status headers, the mail's own headers, body, an empty line."""
    marks = f"X-Mozilla-Status: {status}\nX-Mozilla-Status2: 00000000\n" if status else ""
    return crlf(f"From - {separator_date}\n{marks}{headers}\n{body}\n", charset)


PNG = base64.b64decode(
    "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJggg==")
PDF = b"%PDF-1.4\n" + b"".join(b"%% Zeile %03d der Beispielrechnung\n" % i for i in range(40)) + b"%%EOF\n"

PLAIN = mail("Mon Jan 12 08:15:30 2026", "0001", """\
Received: from mx.example.org by mail.example.org; Mon, 12 Jan 2026 08:15:29 +0100
Received: from client.example.org by mx.example.org; Mon, 12 Jan 2026 08:15:28 +0100
Message-ID: <plain-1@example.org>
Date: Mon, 12 Jan 2026 08:15:28 +0100
From: =?iso-8859-1?Q?J=FCrgen_M=FCller?= <juergen@example.org>
To: Anna <anna@example.org>
Subject: =?iso-8859-1?Q?Gr=FC=DFe_aus_K=F6ln?=
MIME-Version: 1.0
Content-Type: text/plain; charset=iso-8859-1
Content-Transfer-Encoding: 8bit
""", """\
Liebe Anna,

viele Grüße aus Köln. Die Straße ist gesperrt, wir kommen später.
From here on a line that begins with From and no dash is text.

Jürgen
""")

ATTACHMENT = mail("Tue Jan 13 10:00:00 2026", "0005", """\
Message-ID: <rechnung-2@example.org>
Date: Tue, 13 Jan 2026 10:00:00 +0100
From: Buchhaltung <buchhaltung@example.org>
To: anna@example.org
Cc: chef@example.org
Envelope-To: anna@example.org
Subject: Rechnung | Januar
MIME-Version: 1.0
Content-Type: multipart/mixed; boundary="grenze-2"
""", f"""\
This is a multi-part message in MIME format.
--grenze-2
Content-Type: text/plain; charset=us-ascii

Anbei die Rechnung.

--grenze-2
Content-Type: application/pdf;
 name*=utf-8''Rechnung%20M%C3%A4rz.pdf
Content-Disposition: attachment;
 filename*0*=utf-8''Rechnung%20Ja;
 filename*1*=nuar.pdf
Content-Transfer-Encoding: base64

{base64_lines(PDF)}

--grenze-2--
""")

NESTED = mail("Wed Jan 14 12:30:00 2026", "0001", """\
Message-ID: <nested-3@example.org>
Date: Wed, 14 Jan 2026 12:30:00 +0100
From: =?utf-8?B?WsO8cmljaGVyIFZlcmVpbg==?= <verein@example.ch>
To: anna@example.org, bernd@example.org
Subject: =?utf-8?Q?Einladung:_Sommerfest_f=C3=BCr_?= =?utf-8?Q?5_=E2=82=AC?=
MIME-Version: 1.0
Content-Type: multipart/mixed;
 boundary="aussen-3"
""", f"""\
--aussen-3
Content-Type: multipart/alternative;
 boundary="innen-3"

--innen-3
Content-Type: text/plain; charset=utf-8
Content-Transfer-Encoding: quoted-printable

Wir laden herzlich zum Sommerfest ein. Eintritt: 5 =E2=82=AC.

--innen-3
Content-Type: text/html; charset=utf-8
Content-Transfer-Encoding: quoted-printable

<html><body><p>Wir laden <b>herzlich</b> zum Sommerfest ein. =
Eintritt: 5&nbsp;&euro;.</p></body></html>

--innen-3--

--aussen-3
Content-Type: image/png; name="Lageplan.png"
Content-Transfer-Encoding: base64
Content-Disposition: attachment; filename="Lageplan.png"

{base64_lines(PNG)}

--aussen-3--
""")

EXPUNGED = mail("Thu Jan 15 09:00:00 2026", "0009", """\
Message-ID: <geloescht-4@example.org>
Date: Thu, 15 Jan 2026 09:00:00 +0100
From: werbung@example.net
To: anna@example.org
Subject: Diese Mail ist geloescht
""", "Niemand soll das mehr lesen.\n")

NO_ID = mail("Fri Jan 16 07:45:10 2026", "0000", """\
Date: Fri, 16 Jan 2026 07:45:10 +0100
From: automat@example.org
To: anna@example.org
Subject: Ohne Message-ID
""", "Ein Automat hat diese Mail geschrieben.\n")

NO_DATE = mail("Sat Jan 17 18:00:00 2026", "0000", """\
Message-ID: <ohnedatum-6@example.org>
From: automat@example.org
To: anna@example.org
Subject: Ohne Datum
""", "Hier fehlt das Datum.\n")

QUOTED_PRINTABLE = mail("Sun Jan 18 20:20:20 2026", "0001", """\
Message-ID: <notizen-7@example.org>
Date: Sun, 18 Jan 2026 20:20:20 +0100
From: Bernd <bernd@example.org>
To: anna@example.org
Bcc: archiv@example.org
Subject: Notizen
 zur Sitzung
MIME-Version: 1.0
Content-Type: multipart/mixed; boundary="grenze-7"
""", """\
--grenze-7
Content-Type: text/plain; charset=iso-8859-1
Content-Transfer-Encoding: quoted-printable

Die Notizen h=E4ngen an.

--grenze-7
Content-Type: text/plain; charset=iso-8859-1; name="Notizen.txt"
Content-Transfer-Encoding: quoted-printable
Content-Disposition: attachment; filename="Notizen.txt"

Beschluss: der Umbau der K=FCche beginnt im M=E4rz und dauert, wenn alles =
gut geht, drei Wochen.
Gleichung: a=3Db

--grenze-7--
""")

HTML_ONLY = mail("Mon Jan 19 11:11:11 2026", "0001", """\
Message-ID: <html-8@example.org>
Date: Mon, 19 Jan 2026 11:11:11 +0100
From: newsletter@example.net
To: anna@example.org
Subject: Neuigkeiten
MIME-Version: 1.0
Content-Type: text/html; charset=us-ascii
""", "<html><body><h1>Neuigkeiten</h1><p>Alles neu.</p></body></html>\n")

LONG_SUBJECT = mail("Tue Jan 20 16:00:00 2026", "0000", """\
Message-ID: <a_b c#d@example.org>
Date: Tue, 20 Jan 2026 16:00:00 +0100
From: "Meyer, Hans" <hans@example.org>
To: anna@example.org
Subject: =?UTF-8?B?w5xiZXJzaWNodCBkZXIgS29zdGVuOiAxMDAg4oKs?=
 =?UTF-8?Q?_und_mehr?=
""", """\
Hans schrieb in der Runde:
>From - so beginnt hier eine Zeile, doch sie steht mitten im Absatz.
Das war es.
""")

PROJECT = mail("Mon Feb 02 09:00:00 2026", "0001", """\
Message-ID: <projekt-1@example.org>
Date: Mon, 2 Feb 2026 09:00:00 +0100
From: planung@example.org
To: anna@example.org
Subject: Projektplan
""", "Der Plan steht.\n")

ARCHIVED = mail("Tue Nov 04 09:00:00 2025", "0001", """\
Message-ID: <alt-1@example.org>
Date: Tue, 4 Nov 2025 09:00:00 +0100
From: planung@example.org
To: anna@example.org
Subject: Altes Projekt
""", "Abgeschlossen.\n")

SENT = mail("Mon Jan 12 21:00:00 2026", "0001", """\
Message-ID: <gesendet-1@example.org>
Date: Mon, 12 Jan 2026 21:00:00 +0100
From: Anna <anna@example.org>
To: =?iso-8859-1?Q?J=FCrgen_M=FCller?= <juergen@example.org>
Subject: =?iso-8859-1?Q?Re:_Gr=FC=DFe_aus_K=F6ln?=
""", "Danke!\n")

QUOTES = mail("Wed Feb 04 10:10:10 2026", "0000", """\
Message-ID: <zitat-1@example.org>
Date: Wed, 4 Feb 2026 10:10:10 +0100
From: zitate@example.org
To: anna@example.org
Subject: Ein Zitat am Absatzanfang
""", """\
Hinter der leeren Zeile steht ein Zitat, das die naechste Mail beginnt:

>From - Thu Feb 05 00:00:00 2026
Subject: Aus dem Zitat geworden

Rest des Zitats.
""")

WITHOUT_INDEX = mail("Thu Feb 05 12:00:00 2026", "0000", """\
Message-ID: <ohneindex-1@example.org>
Date: Thu, 5 Feb 2026 12:00:00 +0100
From: alt@example.org
To: anna@example.org
Subject: In einem Ordner ohne Index
""", "Nur ueber die Adresse zu lesen.\n")

POP = mail("Fri Feb 06 08:00:00 2026", "0000", """\
Message-ID: <pop-1@example.org>
Date: Fri, 6 Feb 2026 08:00:00 +0000
From: support@example.com
To: anna@example.org
Subject: Welcome
""", "Welcome to your new account.\n")

OFFICE = mail("Mon Mar 02 09:30:00 2026", "0001", """\
Message-ID: <buero-1@example.com>
Date: Mon, 2 Mar 2026 09:30:00 +0100
From: empfang@example.com
To: anna@example.com
Subject: =?utf-8?Q?Schl=C3=BCssel_f=C3=BCr_das_B=C3=BCro?=
""", "Der Schluessel liegt am Empfang.\n")

INBOX = PLAIN + ATTACHMENT + NESTED + EXPUNGED + NO_ID + NO_DATE + QUOTED_PRINTABLE + HTML_ONLY + LONG_SUBJECT


def write(path, data):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(data)


def folder(path, data):
    """A mailbox with its summary file beside it."""
    write(path, data)
    write(path.with_name(path.name + ".msf"), MSF)


def prefs(profile, accounts):
    lines = ["// Mozilla User Preferences", ""]
    names = []
    for number, (name, directory) in enumerate(accounts, 1):
        names.append(f"account{number}")
        place = "\\\\".join(["S:", "AppData", "Thunderbird", "Profiles", profile, "Mail", directory])
        lines += [f'user_pref("mail.account.account{number}.server", "server{number}");',
                  f'user_pref("mail.server.server{number}.directory", "{place}");',
                  f'user_pref("mail.server.server{number}.name", "{name}");',
                  f'user_pref("mail.server.server{number}.port", 110);']
    lines.append(f'user_pref("mail.accountmanager.accounts", "{",".join(names)}");')
    return ("\r\n".join(lines) + "\r\n").encode("utf-8")


def main():
    # The sample calendars that stand in the same profile stay.
    for mails in THUNDERBIRD.glob("Profiles/*/Mail"):
        shutil.rmtree(mails)
    write(THUNDERBIRD / "profiles.ini", crlf("""\
[General]
StartWithLastProfile=1

[Profile0]
Name=default
IsRelative=1
Path=Profiles/k3j9x2ab.default
Default=1

[Profile1]
Name=Büro
IsRelative=1
Path=Profiles/w2x8q7cd.buero
""", "utf-8"))

    default = THUNDERBIRD / "Profiles" / "k3j9x2ab.default"
    write(default / "prefs.js", prefs("k3j9x2ab.default", [("Local Folders", "Local Folders"),
                                                           ("anna@example.org", "pop.example.org")]))
    local = default / "Mail" / "Local Folders"
    folder(local / "Inbox", INBOX)
    folder(local / "Inbox.sbd" / "Projekte", PROJECT)
    folder(local / "Inbox.sbd" / "Projekte.sbd" / "Archiv 2025", ARCHIVED)
    folder(local / "Sent", SENT)
    folder(local / "Entwürfe", b"")
    folder(local / "Zitate", QUOTES)
    folder(local / "Trash", EXPUNGED)
    write(local / "Ohne Index", WITHOUT_INDEX)
    folder(default / "Mail" / "pop.example.org" / "Inbox", POP)

    office = THUNDERBIRD / "Profiles" / "w2x8q7cd.buero"
    write(office / "prefs.js", prefs("w2x8q7cd.buero", [("Büro-Konto", "mail.example.com")]))
    folder(office / "Mail" / "mail.example.com" / "Inbox", OFFICE)


if __name__ == "__main__":
    main()
