"""A home with a small Thunderbird profile, and what a host shows of its mailbox."""
MAILBOX = (
    b"From - Mon Jan 12 08:15:28 2026\r\nX-Mozilla-Status: 0001\r\nDate: Mon, 12 Jan 2026 08:15:28 +0100\r\n"
    b"Subject: =?utf-8?q?Gr=C3=BC=C3=9Fe?=\r\nMessage-ID: <a@x>\r\n\r\nHallo\r\n\r\n"
    b"From - Mon Jan 12 09:00:00 2026\r\nX-Mozilla-Status: 0009\r\nDate: Mon, 12 Jan 2026 09:00:00 +0100\r\n"
    b"Subject: gone\r\n\r\nweg\r\n\r\n"
)
FOLDER = "thunderbird://default/Local Folders/Inbox"
SHOWN = "12.01.2026 08:15:28  Grüße\n"


def make_profile(home, known_as=None):
    """Makes the profile in a folder; `known_as` is the folder's path for who reads it, if that is another."""
    profile = home / ".thunderbird/p.default"
    mail = profile / "Mail/Local Folders"
    mail.mkdir(parents=True)
    (mail / "Inbox").write_bytes(MAILBOX)
    (mail / "Inbox.msf").write_bytes(b"")
    (home / ".thunderbird/profiles.ini").write_bytes(
        b"[General]\r\nStartWithLastProfile=1\r\n\r\n[Profile0]\r\nName=default\r\nIsRelative=1\r\nPath=p.default\r\n"
    )
    preferences = {
        "mail.account.account1.server": "server1",
        "mail.server.server1.directory": str((known_as or home) / mail.relative_to(home)),
        "mail.server.server1.name": "Local Folders",
        "mail.accountmanager.accounts": "account1",
    }
    lines = [f'user_pref("{name}", "{value}");\r\n' for name, value in preferences.items()]
    (profile / "prefs.js").write_bytes("".join(lines).encode())
