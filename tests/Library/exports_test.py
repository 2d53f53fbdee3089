"""The shared library shows what its public headers mark, and nothing else.

exports_test.py LIBRARY SOURCE_FOLDER
"""
import re
import subprocess
import sys
from pathlib import Path

LIBRARY, SOURCES = sys.argv[1], Path(sys.argv[2])

MARKED_CLASS = re.compile(r"^class VORLENT_PUBLIC (\w+)", re.M)
MARKED_FUNCTION = re.compile(r"^VORLENT_PUBLIC [^(]*?(\w+)\(", re.M)


def marked(pattern):
    """The names that the headers mark as public."""
    return {name for header in SOURCES.rglob("*.h") for name in pattern.findall(header.read_text(encoding="utf-8"))}


def shown_symbols():
    listed = subprocess.run(["nm", "-DC", "--defined-only", LIBRARY], check=True, capture_output=True, text=True)
    return [line.split(maxsplit=2)[2] for line in listed.stdout.splitlines()]


def owner(symbol):
    """The class or function of the namespace that a symbol belongs to."""
    bare = re.sub(r"^(?:typeinfo(?: name)?|vtable) for ", "", symbol)
    found = re.search(r"vorlent::(?:os::)?(\w+)", bare)
    return found.group(1) if found else None


def main():
    classes, functions = marked(MARKED_CLASS), marked(MARKED_FUNCTION)
    symbols = shown_symbols()
    owners = {owner(symbol) for symbol in symbols}
    problems = [f"shown without being marked: {s}" for s in symbols if owner(s) not in classes | functions]
    # Of an abstract class there may be nothing to show.
    problems += [f"marked but not shown: {name}" for name in sorted(functions - owners)]
    problems += [f"marked but not shown: {name}" for name in ("Failure", "HostObjects", "Platform")
                 if name not in owners]
    if not functions:
        problems.append("no function is marked as public")
    print("\n".join(problems) or f"{len(symbols)} symbols of {len(owners)} public names")
    return 1 if problems else 0


sys.exit(main())
