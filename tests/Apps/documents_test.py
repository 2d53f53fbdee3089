"""The manual pages and completions tell of the same commands as the help, in each shell's own eyes.

documents_test.py PROGRAM
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

PROGRAM = sys.argv.pop(1)


def output(*command, **options):
    return subprocess.run(list(map(str, command)), check=True, capture_output=True, text=True, **options).stdout


def helped(*verbs):
    """Names of commands and long options that the help shows."""
    text = output(PROGRAM, *verbs, "--help")
    names = set(re.findall(r"^  (?:-\w,)?([a-z]+|--[a-z-]+)\b", text, re.M))
    return names - {"sunbird", "thunderbird", "firefox"}


class DocumentsTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = Path(tempfile.mkdtemp())
        output(PROGRAM, "documents", cls.folder)
        cls.verbs = sorted(name for name in helped() if not name.startswith("--"))

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.folder)

    def page(self, name):
        return output("man", "--warnings", "-l", self.folder / "man/man1" / f"{name}.1",
                      env={**os.environ, "MANWIDTH": "200", "LC_ALL": "C.UTF-8"})

    def complete(self, *words):
        """What bash offers for the last word."""
        script = (f'source "{self.folder}/bash-completion/completions/vorlent-mozilla"; '
                  'COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _vorlent_mozilla; printf "%s\\n" "${COMPREPLY[@]}"')
        return set(output("bash", "-c", script, "bash", "vorlent-mozilla", *words).split())

    def test_each_verb_has_a_page_with_all_of_its_options(self):
        self.assertIn("import", self.verbs)
        for verb in self.verbs:
            page = self.page(f"vorlent-mozilla-{verb}")
            for name in helped(verb):
                self.assertRegex(page, rf"(?m)^ +(-\w, )?{name}\b", f"{verb}: {name}")

    def test_page_and_readme_tell_the_exit_codes_of_the_help(self):
        codes = re.search(r"(?m)^Exit codes:\n((?:  \d+ .*\n)+)", output(PROGRAM, "--help")).group(1)
        rows = [line.split(maxsplit=1) for line in codes.splitlines()]
        self.assertEqual([row[0] for row in rows], ["0", "1", "2", "3", "130"])
        readme = " ".join((Path(__file__).parents[2] / "README.md").read_text(encoding="utf-8").split())
        page = " ".join(self.page("vorlent-mozilla").split())
        for code, meaning in rows:
            for document in (readme, page):
                self.assertIn(f"{code} {meaning}", document)

    def test_page_of_the_program_lists_all_verbs_and_options(self):
        page = self.page("vorlent-mozilla")
        for name in helped():
            self.assertRegex(page, rf"(?m)^ +(-\w, )?{name}\b")
        self.assertIn("thunderbird://PROFILE/ACCOUNT/FOLDER/-", page)
        self.assertIn("Thunderbird\\profiles.ini", page)

    def test_pages_are_free_of_warnings(self):
        for page in (self.folder / "man/man1").iterdir():
            done = subprocess.run(["man", "--warnings", "-l", page], capture_output=True, text=True,
                                  env={**os.environ, "LC_ALL": "C.UTF-8"}, check=True)
            self.assertEqual(done.stderr, "", page.name)

    def test_verb_that_only_makes_these_is_hidden(self):
        self.assertNotIn("documents", self.verbs)
        self.assertFalse((self.folder / "man/man1/vorlent-mozilla-documents.1").exists())
        self.assertNotIn("documents", self.complete(""))

    def test_bash_completes_verbs_options_and_values(self):
        self.assertLessEqual(set(self.verbs), self.complete(""))
        self.assertEqual(self.complete("im"), {"import"})
        self.assertEqual(self.complete("import", "--mo"), {"--move"})
        self.assertEqual(self.complete("calendar", "s"), {"set"})
        for verb in self.verbs:
            below = {name for name in helped(verb) if not name.startswith("--")}
            self.assertEqual(self.complete(verb, "") & below, below, verb)
        self.assertEqual(self.complete("calendar", "set", "--te"), {"--text"})
        inside = self.folder / "inside"
        (inside / "archive").mkdir(parents=True)
        (inside / "file").touch()
        self.assertEqual(self.complete("import", "--target", f"{inside}/"), {f"{inside}/archive"})

    def test_zsh_and_fish_can_read_theirs(self):
        output("zsh", "-n", self.folder / "zsh/vendor-completions/_vorlent-mozilla")
        fish = self.folder / "fish/vendor_completions.d/vorlent-mozilla.fish"
        offered = output("fish", "--no-config", "-c", f"source {fish}; complete -C 'vorlent-mozilla im'")
        self.assertEqual(offered, "import\tCopy or move mails into an archive\n")
        offered = output("fish", "--no-config", "-c", f"source {fish}; complete -C 'vorlent-mozilla import --mov'")
        self.assertTrue(offered.startswith("--move\t"), offered)


unittest.main()
