#!/usr/bin/env python3
"""Plays a short session with the program on a terminal and draws what stands there at the end; the picture in docs/
must show just that. With --write the picture is made anew.

terminal_picture.py PROGRAM SOURCE_FOLDER [--write]
"""
import difflib
import errno
import fcntl
import html
import os
import pathlib
import pty
import re
import shutil
import struct
import sys
import tempfile
import termios

PICTURE = "docs/pictures/terminal.svg"
COLUMNS, ROWS = 120, 60
SESSION = (
    "samples='--appdata samples/AppData --drive S=samples'",
    "./run $samples read 'thunderbird://default/Local Folders/Inbox/-'",
    "./run $samples import thunderbird://default --target archive",
    "./run search archive Sommerfest",
    "./run search archive Köln",
    "./run $samples import thunderbird://default --target archive",
)
# Shows each command as at a prompt, and does it.
PLAY = 'for command; do printf "$ %s\\n" "$command"; eval "$command"; done'

CHARACTER, LINE, EDGE = 8, 19, 16  # in pixels; a character of 13 pixels is a little narrower than this


def play(program, root, folder):
    """The bytes that the session sends to its terminal."""
    shutil.copytree(root / "samples", folder / "samples")
    (folder / "run").symlink_to(program)
    process, terminal = pty.fork()
    if process == 0:
        fcntl.ioctl(0, termios.TIOCSWINSZ, struct.pack("HHHH", ROWS, COLUMNS, 0, 0))
        os.chdir(folder)
        environment = {"PATH": os.environ["PATH"], "HOME": str(folder), "LC_ALL": "C.UTF-8", "TZ": "Europe/Berlin",
                       "TERM": "xterm"}
        os.execvpe("bash", ["bash", "-c", PLAY, "bash", *SESSION], environment)
    sent = b""
    while True:
        try:
            part = os.read(terminal, 65536)
        except OSError as error:  # how a terminal tells that nobody holds it any more
            if error.errno != errno.EIO:
                raise
            part = b""
        if not part:
            break
        sent += part
    os.close(terminal)
    os.waitpid(process, 0)
    return sent


def lines_left(sent):
    """What stands on the terminal's lines at the end: the progress bars, which alone hold times, were taken away."""
    lines = [line.rsplit("\r\x1b[K", 1)[-1] for line in sent.decode().removesuffix("\r\n").split("\r\n")]
    for line in lines:
        if re.search(r"[\x00-\x1f\x7f]", line):
            sys.exit(f"moves the cursor in a way that isn't known here: {line!r}")
        if len(line) > COLUMNS:
            sys.exit(f"wider than the terminal: {line!r}")
    return lines


def drawn(lines):
    width, height = COLUMNS * CHARACTER + 2 * EDGE, len(lines) * LINE + 2 * EDGE
    texts = []
    for number, line in enumerate(lines):
        kind = ' class="command"' if line.startswith("$ ") else ""
        y = EDGE + number * LINE + 14
        texts.append(f'<text x="{EDGE}" y="{y}"{kind} xml:space="preserve">{html.escape(line, quote=False)}</text>')
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" viewBox="0 0 {width} {height}">',
        "<style>text { font: 13px 'DejaVu Sans Mono', Menlo, Consolas, monospace; fill: #d8dee4; white-space: pre; }",
        ".command { fill: #7ee787; }</style>",
        f'<rect width="{width}" height="{height}" rx="8" fill="#161b22"/>', *texts, "</svg>", ""])


def main():
    program, root = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve()
    with tempfile.TemporaryDirectory() as folder:
        lines = lines_left(play(program, root, pathlib.Path(folder)))
    picture = root / PICTURE
    if sys.argv[3:] == ["--write"]:
        picture.write_text(drawn(lines), encoding="utf-8")
    shown = picture.read_text(encoding="utf-8").splitlines()
    today = drawn(lines).splitlines()
    differences = list(difflib.unified_diff(shown, today, PICTURE, "the session today", lineterm=""))
    print("\n".join(differences) or f"{len(SESSION)} commands, {len(lines)} lines as {PICTURE} shows them")
    return 1 if differences else 0


sys.exit(main())
