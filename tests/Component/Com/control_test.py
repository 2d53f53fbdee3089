#!/usr/bin/env python3
"""Leads the wizard's control in its container through its four pages by real keys and clicks.

Usage: control_test.py BIN WINE [PICTURES]

BIN has control_container.exe and the server; WINE runs them, in the prefix of the environment. Needs Xvfb, xdotool
and ImageMagick's import. With PICTURES a picture of each page is put there, as control-1.png and so on.
"""
import os
import pathlib
import subprocess
import sys
import tempfile
import time

DISPLAY = ":77"
TITLE = "Import Thunderbird Mails"
SECONDS_TO_APPEAR = 60
SECONDS_TO_END = 20
SECONDS_OF_A_STEP = 0.6
# On a screen of 96 dots to the inch.
ARROW_OF_THE_FIRST_ROW, BOX_OF_THE_SECOND_ROW, NEXT = (54, 149), (89, 166), (655, 453)
EXPECTED = ("target target\r\naction move\r\nkeyword #subpath\r\nkeyword privat\r\nkeyword wichtig\r\n"
            "import C:\\mail\\two\r\n")


def xdotool(*arguments):
    run = subprocess.run(["xdotool", *arguments], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                         check=False, timeout=30)
    return run.stdout.split()


def press(*keys):
    for key in keys:
        xdotool("key", key)
        time.sleep(SECONDS_OF_A_STEP)


def type_text(text):
    xdotool("type", "--delay", "40", text)
    time.sleep(SECONDS_OF_A_STEP)


def click(x, y):
    """At a place of the screen."""
    xdotool("mousemove", str(x), str(y))
    time.sleep(0.2)
    xdotool("click", "1")
    time.sleep(SECONDS_OF_A_STEP)


def wait_for_window():
    end = time.monotonic() + SECONDS_TO_APPEAR
    while time.monotonic() < end:
        if xdotool("search", "--name", TITLE):
            time.sleep(2)
            return
        time.sleep(0.5)
    sys.exit("no window appeared")


def take_picture(folder, page):
    if folder is not None:
        subprocess.run(["import", "-window", "root", str(folder / f"control-{page}.png")], check=True, timeout=30)


def drive(pictures):
    # Page 1: the tree opens, a folder is ticked by its box and cleared by a key; then a file is named.
    click(*ARROW_OF_THE_FIRST_ROW)
    click(*BOX_OF_THE_SECOND_ROW)
    take_picture(pictures, 1)
    press("space", "alt+e", "Tab")
    type_text("C:\\mail\\two")
    press("Return")
    take_picture(pictures, 2)
    # Page 2: a tick goes and comes.
    press("space", "space")
    click(*NEXT)
    # Page 3: the mails are to be moved, and the structure is left out.
    press("alt+d", "alt+s")
    take_picture(pictures, 3)
    press("alt+w")
    # Page 4: one keyword to a line.
    press("Tab")
    type_text("privat")
    press("Return")
    type_text("wichtig")
    take_picture(pictures, 4)
    press("Tab", "alt+f")


def main():
    folder, wine = pathlib.Path(sys.argv[1]).resolve(), sys.argv[2]
    pictures = pathlib.Path(sys.argv[3]).resolve() if len(sys.argv) > 3 else None
    with tempfile.TemporaryDirectory() as place, open(os.devnull, "wb") as nothing:
        command = pathlib.Path(place) / "command.txt"
        screen = ["Xvfb", DISPLAY, "-screen", "0", "760x520x24"]
        with subprocess.Popen(screen, stdout=nothing, stderr=nothing) as server:
            os.environ["DISPLAY"] = DISPLAY
            time.sleep(1)
            named = "Z:" + str(command).replace("/", "\\")
            with subprocess.Popen([wine, "explorer", "/desktop=test,760x520", str(folder / "control_container.exe"),
                                   named], stdout=nothing, stderr=nothing) as container:
                try:
                    wait_for_window()
                    drive(pictures)
                    end = time.monotonic() + SECONDS_TO_END
                    while not command.exists() and time.monotonic() < end:
                        time.sleep(0.2)
                    time.sleep(0.5)
                finally:
                    if not command.exists():
                        take_picture(pathlib.Path(os.environ.get("VORLENT_FAILED", place)), 9)
                    container.terminate()
                    server.terminate()
        text = command.read_bytes().decode("ascii") if command.exists() else "nothing: the wizard did not end"
    if text != EXPECTED:
        sys.exit(f"The command is\n{text!r}\nand not\n{EXPECTED!r}")
    print("Real keys and clicks led through the four pages to the command.")


main()
