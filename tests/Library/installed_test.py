"""Installs the library, builds the example host with it outside the tree, and runs that on a mailbox.

installed_test.py BUILD_FOLDER SOURCE_FOLDER COMPILER
"""
import os
import subprocess
import sys
import tempfile
from pathlib import Path

BUILD, SOURCES, COMPILER = sys.argv[1], Path(sys.argv[2]), sys.argv[3]

MAILBOX = (
    b"From - Mon Jan 12 08:15:28 2026\r\nX-Mozilla-Status: 0001\r\nDate: Mon, 12 Jan 2026 08:15:28 +0100\r\n"
    b"Subject: =?utf-8?q?Gr=C3=BC=C3=9Fe?=\r\nMessage-ID: <a@x>\r\n\r\nHallo\r\n\r\n"
    b"From - Mon Jan 12 09:00:00 2026\r\nX-Mozilla-Status: 0009\r\nDate: Mon, 12 Jan 2026 09:00:00 +0100\r\n"
    b"Subject: gone\r\n\r\nweg\r\n\r\n"
)


def run(*command, **options):
    done = subprocess.run(list(map(str, command)), capture_output=True, text=True, **options)
    if done.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))}\n{done.stdout}{done.stderr}")
    return done.stdout


def make_profile(home):
    """A home with one Thunderbird profile, its account and its mailbox."""
    mail = home / ".thunderbird/p.default/Mail/Local Folders"
    mail.mkdir(parents=True)
    (mail / "Inbox").write_bytes(MAILBOX)
    (mail / "Inbox.msf").write_bytes(b"")
    (home / ".thunderbird/profiles.ini").write_bytes(
        b"[General]\r\nStartWithLastProfile=1\r\n\r\n[Profile0]\r\nName=default\r\nIsRelative=1\r\nPath=p.default\r\n"
    )
    preferences = {
        "mail.account.account1.server": "server1",
        "mail.server.server1.directory": str(mail),
        "mail.server.server1.name": "Local Folders",
        "mail.accountmanager.accounts": "account1",
    }
    lines = [f'user_pref("{name}", "{value}");\r\n' for name, value in preferences.items()]
    (home / ".thunderbird/p.default/prefs.js").write_bytes("".join(lines).encode())


def check_headers(prefix):
    """What a header marks as public is of no use where the header itself isn't installed."""
    installed = [str(header) for header in prefix.rglob("*.h")]
    for header in (SOURCES / "src").rglob("*.h"):
        name = str(header.relative_to(SOURCES / "src"))
        is_public = "VORLENT_PUBLIC " in header.read_text(encoding="utf-8")
        if is_public and not any(i.endswith("/" + name) for i in installed):
            sys.exit(f"marked as public, but not installed: {name}")


def main():
    with tempfile.TemporaryDirectory() as folder:
        folder = Path(folder)
        prefix, home = folder / "usr", folder / "home"
        for component in ("library", "development"):
            run("cmake", "--install", BUILD, "--prefix", prefix, "--component", component)
        check_headers(prefix)
        by_cmake = folder / "build/read-mailbox"
        run("cmake", "-S", SOURCES / "examples/read-mailbox", "-B", by_cmake.parent, f"-DCMAKE_PREFIX_PATH={prefix}",
            f"-DCMAKE_CXX_COMPILER={COMPILER}", "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Werror")
        run("cmake", "--build", by_cmake.parent)
        by_package = folder / "read-mailbox"
        packages = next(prefix.rglob("vorlent-mozilla.pc")).parent
        flags = run("pkg-config", "--cflags", "--libs", "vorlent-mozilla",
                    env={**os.environ, "PKG_CONFIG_PATH": str(packages)})
        run(COMPILER, "-o", by_package, SOURCES / "examples/read-mailbox/Main.cpp", *flags.split())
        make_profile(home)
        for program in (by_cmake, by_package):
            listed = run(program, "thunderbird://default/Local Folders/Inbox",
                         env={**os.environ, "HOME": str(home), "LD_LIBRARY_PATH": str(packages.parent)})
            if listed != "12.01.2026 08:15:28  Grüße\n":
                sys.exit(f"unexpected: {listed!r}")
        print(listed, end="")


main()
