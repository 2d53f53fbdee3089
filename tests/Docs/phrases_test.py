"""What the component and the host tell a person is in the table of texts, in both languages.

phrases_test.py SOURCE_FOLDER

A text is told by the calls and fields below; each of its words of the code must stand in a row of the table.
Failures of numbers that only a mistake in a program raises are none: nobody is to read them.
"""
import re
import sys
from pathlib import Path

SOURCE = Path(sys.argv[1]) / "src"
TABLE = SOURCE / "Standalone/Phrases.def"
FLOORS = ("Connectors", "Component", "Common", "Host", "Standalone", "Platform")
TELLS = re.compile(r"\b(?:Failure[({]|reason = |Cause\{|NoteLoss\(|TellMissing\(|ReportUnreadable\(|ShowUnreadable\(|"
                   r"Remark\(|ShowMessage\(|RefuseAccess\(|Raise\w*\(|report::k(?:Log|Status)|kQuestion =)")
MISTAKES = re.compile(r"ErrorNumber::(?:ObjectNotSet|SubscriptOutOfRange|InvalidCall|NoSuchMember|KeyExists|"
                      r"BadFileNumber|TypeMismatch)")
LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
PLACE = re.compile(r"\{\d\*?\}")
# Names, and what isn't told.
NO_TEXTS = {"FireFox", "SetRunObserver", "error"}


def joined(text):
    return re.sub(r'"(?:_cp)?\s*\n\s*"', "", text)


def words_of_the_table():
    text = re.sub(r"^ *//.*$", "", TABLE.read_text(encoding="utf-8"), flags=re.M)
    words = []
    for literal in LITERAL.findall(joined(text)):
        words += [part.strip() for part in PLACE.split(literal)]
    return set(words)


def told_in(file):
    text = re.sub(r"^\s*//.*$", "", file.read_text(encoding="utf-8"), flags=re.M)
    for statement in re.split(r";\n|\{\n|\}\n", joined(text)):
        if TELLS.search(statement) and not MISTAKES.search(statement):
            yield from (literal for literal in LITERAL.findall(statement) if re.search(r"[A-Za-z]{2}", literal))


def main():
    known, count, missing = words_of_the_table(), 0, []
    for floor in FLOORS:
        for file in sorted((SOURCE / floor).rglob("*")):
            if file.suffix not in (".cpp", ".h"):
                continue
            for literal in told_in(file):
                count += 1
                if literal not in NO_TEXTS and literal.strip() not in known:
                    missing.append(f"{file.relative_to(SOURCE)} tells '{literal}', which has no row")
    print("\n".join(missing) or f"{count} texts, all in both languages")
    return 1 if missing or count < 50 else 0


if __name__ == "__main__":
    sys.exit(main())
