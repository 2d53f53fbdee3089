#!/usr/bin/env python3
"""Compiles an IDL file to a type library and a C++ header by widl, and does what widl can't.

Usage: compile_type_library.py WIDL MACHINE IDL TLB [HEADER] -- INCLUDE...

MACHINE is -m32 or -m64. The includes are folders of IDL files; libraries that the file refers to are looked for
in the folder of TLB. What widl can't:
- `import` is a word of its own to it, and no argument's name. It is compiled in another case, which has the same
  hash in the library, and gets its own back there.
- A text as the default of an argument by reference. A number is compiled in its place, of which only the empty
  text can be made.
- It writes the time of the build, which would make each build another.
- In the header it would give a default as the value of the pointer. The header has none.
"""
import pathlib
import re
import subprocess
import sys
import tempfile

NAME, STAND_IN_NAME = b"import", b"imporT"
EMPTY_TEXT, STAND_IN_NUMBER = '""', 0x7F5A5A5A
TEXT_TYPE = 8


def for_widl(idl):
    idl = re.sub(r"\bimport(?=[,)])", STAND_IN_NAME.decode(), idl)
    return idl.replace(f"defaultvalue({EMPTY_TEXT})", f"defaultvalue({STAND_IN_NUMBER})")


def replace_all(library, old, new, count, what):
    if len(old) != len(new) or library.count(old) != count:
        sys.exit(f"{what}: {library.count(old)} in the type library, {count} expected")
    return library.replace(old, new)


def finish(library, idl):
    """A name stands there once however often it is used, a default each time, after its type."""
    library = replace_all(library, STAND_IN_NAME, NAME, int(STAND_IN_NAME.decode() in idl), "names")
    kind = TEXT_TYPE.to_bytes(2, "little")
    library = replace_all(library, kind + STAND_IN_NUMBER.to_bytes(4, "little"), kind + bytes(4),
                          idl.count(str(STAND_IN_NUMBER)), "empty texts")
    return re.sub(rb"( WIDL version [0-9.]+) at [^\n]*", lambda m: m[1].ljust(len(m[0])), library, count=1)


def main():
    split = sys.argv.index("--")
    widl, machine, source, target, *header = sys.argv[1:split]
    includes = [option for folder in sys.argv[split + 1:] for option in ("-I", folder)]
    target = pathlib.Path(target)
    idl = for_widl(pathlib.Path(source).read_text(encoding="ascii"))
    with tempfile.TemporaryDirectory() as folder:
        prepared = pathlib.Path(folder) / pathlib.Path(source).name
        prepared.write_text(idl, encoding="ascii")
        common = [widl, machine, *includes, "-L", str(target.parent)]
        run = subprocess.run([*common, "-t", "-o", str(target), str(prepared)], stderr=subprocess.PIPE, text=True,
                             check=False)
        problems = [line for line in run.stderr.splitlines() if line != "warning: non-null pointer default value"]
        if problems or run.returncode != 0:
            sys.exit("\n".join(problems) or f"{widl} ended with {run.returncode}")
        if header:
            prepared.write_text(re.sub(r", defaultvalue\([^)]*\)", "", idl), encoding="ascii")
            subprocess.run([*common, "-h", "-o", header[0], str(prepared)], check=True)
    target.write_bytes(finish(target.read_bytes(), idl))


main()
