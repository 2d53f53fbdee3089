"""Every rule stands once in docs/rules.md, with both behaviours, a reason, and tests that are there.

rules_test.py SOURCE_FOLDER
"""
import re
import sys
from collections import Counter
from pathlib import Path

ROOT = Path(sys.argv[1])
COLUMNS = 5


def rules_of_the_code():
    text = (ROOT / "src/Platform/Rules.def").read_text(encoding="utf-8")
    return re.findall(r"^RULE\(\w+, (\w+),", text, re.M)


def rows_of_the_table():
    for line in (ROOT / "docs/rules.md").read_text(encoding="utf-8").splitlines():
        if line.startswith("| `"):
            yield [cell.strip() for cell in line.strip("|").split("|")]


def tests_of_the_tree():
    names = set()
    for file in (ROOT / "tests").rglob("*.cpp"):
        tests = re.findall(r"^TEST(?:_F|_P)?\((\w+),\s*(\w+)\)", file.read_text(encoding="utf-8"), re.M)
        names.update(f"{suite}.{test}" for suite, test in tests)
    for file in (ROOT / "tests").rglob("*.py"):
        names.update(re.findall(r"def (test_\w+)\(", file.read_text(encoding="utf-8")))
    return names


def problems_of(row, tests):
    if len(row) != COLUMNS or not all(row):
        yield "is no row of five cells"
        return
    named = re.findall(r"`([^`]+)`", row[-1])
    if not named:
        yield "names no test"
    for test in named:
        if test not in tests:
            yield f"names {test}, a test that isn't there"


def main():
    rules, tests, found = rules_of_the_code(), tests_of_the_tree(), []
    rows = {}
    for row in rows_of_the_table():
        name = row[0].strip("`")
        if name in rows:
            found.append(f"{name} has two rows")
        rows[name] = row
        found += [f"the row of {name} {problem}" for problem in problems_of(row, tests)]
    found += [f"{name} has no row" for name in rules if name not in rows]
    found += [f"{name} has a row and is no rule" for name in rows if name not in rules]
    found += [f"{name} is there twice" for name, count in Counter(rules).items() if count > 1]
    print("\n".join(found) or f"{len(rules)} rules")
    return 1 if found or not rules else 0


sys.exit(main())
