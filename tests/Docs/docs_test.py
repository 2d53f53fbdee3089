"""What the documents name is there: files of the tree, links between pages and to headings, pictures.

docs_test.py SOURCE_FOLDER
"""
import re
import sys
from pathlib import Path

ROOT = Path(sys.argv[1])
PAGES = [ROOT / "README.md", *sorted((ROOT / "docs").glob("*.md")), *sorted(ROOT.glob("CHANGELOG.md"))]

NAMED_FILE = re.compile(r"`((?:src|tests|scripts|bench|fuzz|cmake|samples|examples|docs)/[\w./-]*[\w/])`")
LINK = re.compile(r"\[[^\]]*\]\(([^)\s]+)\)")


def anchors(page):
    """The anchors of a page's headings, as the web shows them."""
    headings = re.findall(r"^#+ +(.*)$", page.read_text(encoding="utf-8"), re.M)
    return {re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-") for heading in headings}


def problems_of(page):
    text = page.read_text(encoding="utf-8")
    for name in NAMED_FILE.findall(text):
        if not (ROOT / name).exists():
            yield f"names {name}, which isn't there"
    for target in LINK.findall(text):
        if re.match(r"[a-z]+://|mailto:", target):
            continue
        path, _, anchor = target.partition("#")
        linked = page.parent / path if path else page
        if not linked.exists():
            yield f"links to {path}, which isn't there"
        elif anchor and anchor not in anchors(linked):
            yield f"links to {target}, a heading that isn't there"


def main():
    found = [f"{page.relative_to(ROOT)} {problem}" for page in PAGES for problem in problems_of(page)]
    named = sum(len(NAMED_FILE.findall(page.read_text(encoding="utf-8"))) for page in PAGES)
    print("\n".join(found) or f"{len(PAGES)} pages, {named} files named")
    return 1 if found or named == 0 else 0


sys.exit(main())
