#!/usr/bin/env python3
"""guards.py [FOLDER...]: which guards do the tests notice?

A guard is a Swallow(...) in the source. Each in the folders (default: src/Common and src/Connectors) is taken away
by itself, so that the failure which it swallows rises, and the tests in which it has swallowed one are run. Tells
for each guard whether a test failed then; "never used" is a guard that swallowed nothing in any test. The tests are
built once, in build/guards, with a Swallow that can be told by the environment which guard to leave out.
Exits 1 if a guard goes unnoticed.
"""
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build/guards"
PROGRAMS = ["test_common", "test_component", "test_connectors", "test_standalone"]
TIMEOUT = 300  # seconds; a test that hangs without the guard notices it too

SWALLOW = """
#include <cstdio>
#include <cstdlib>
#include <cstring>
namespace vorlent {
inline bool IsGuardLeftOut(const char* file, int line) {
  static const char* const place = std::getenv("GUARD_LEFT_OUT");  // <file>:<line>
  static const char* const colon = place == nullptr ? nullptr : std::strrchr(place, ':');
  static const int wanted = colon == nullptr ? 0 : std::atoi(colon + 1);
  if (line != wanted) return false;
  const std::size_t size = static_cast<std::size_t>(colon - place);
  const std::size_t length = std::strlen(file);
  return length >= size && std::strncmp(file + length - size, place, size) == 0;
}
template <class Step>
bool Swallow(Step&& step, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
  if (IsGuardLeftOut(file, line)) {
    std::forward<Step>(step)();
    return true;
  }
  try {
    std::forward<Step>(step)();
    return true;
  } catch (const Failure&) {
    static const bool traces = std::getenv("GUARDS_TRACED") != nullptr;
    if (traces) std::printf("\\n[GUARD] %s:%d\\n", file, line);
    return false;
  }
}
}  // namespace vorlent
"""


def write_header():
    """The header of the seam with that Swallow in place of its own."""
    text = (ROOT / "src/Platform/Failure.h").read_text()
    own = re.compile(r"template <class Step>\nbool Swallow\(Step&& step\) \{\n.*?\n\}\n", re.S)
    text, count = own.subn("}\n" + SWALLOW.replace("\\", r"\\") + "namespace vorlent {\n", text)
    if count != 1:
        sys.exit("src/Platform/Failure.h: no Swallow found")
    header = BUILD / "include/Platform/Failure.h"
    header.parent.mkdir(parents=True, exist_ok=True)
    if not header.exists() or header.read_text() != text:
        header.write_text(text)


def build():
    write_header()
    subprocess.run(["cmake", "--preset", "dev", "-B", BUILD, f"-DCMAKE_CXX_FLAGS=-iquote {BUILD}/include"],
                   cwd=ROOT, check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", BUILD, "--target", *PROGRAMS], check=True, stdout=subprocess.DEVNULL)


def guards_in(folders):
    """All guards as <file>:<line>, relative to the project."""
    guards = []
    for folder in folders:
        for file in sorted((ROOT / folder).rglob("*.[ch]*")):
            for number, line in enumerate(file.read_text(errors="replace").splitlines(), 1):
                if "Swallow(" in line and not line.lstrip().startswith("//"):
                    guards.append(f"{file.relative_to(ROOT)}:{number}")
    return guards


def run(program, tests, variables, timeout=None):
    command = [BUILD / "bin" / program, "--gtest_fail_fast", "--gtest_brief=0"]
    if tests is not None:
        command.append("--gtest_filter=" + ":".join(tests))
    try:
        return subprocess.run(command, cwd=BUILD, env={**os.environ, **variables}, timeout=timeout,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, errors="replace")
    except subprocess.TimeoutExpired:
        return None


def tests_by_guard():
    """For each guard that swallowed something: the tests in which it did, by program."""
    found = {}
    for program in PROGRAMS:
        test = None
        for line in run(program, None, {"GUARDS_TRACED": "1"}).stdout.splitlines():
            if match := re.match(r"\[ RUN      \] (\S+)", line):
                test = match[1]
            elif (match := re.match(r"\[GUARD\] .*?(src/\S+:\d+)$", line)) and test is not None:
                tests = found.setdefault(match[1], {}).setdefault(program, [])
                if test not in tests:
                    tests.append(test)
    return found


def notices(guard, tests):
    """The first test that fails without the guard, or None."""
    for program, names in tests.items():
        for at in range(0, len(names), 50):
            result = run(program, names[at:at + 50], {"GUARD_LEFT_OUT": guard}, TIMEOUT)
            if result is None:
                return "a test that hangs"
            if result.returncode != 0:
                runs = re.findall(r"\[ RUN      \] (\S+)", result.stdout)
                return runs[-1] if runs else program
    return None


def main():
    build()
    used = tests_by_guard()
    unnoticed = 0
    guards = guards_in(sys.argv[1:] or ["src/Common", "src/Connectors"])
    for guard in guards:
        if guard not in used:
            verdict = "NOT NOTICED (never used)"
        else:
            test = notices(guard, used[guard])
            verdict = f"noticed by {test}" if test else "NOT NOTICED"
        unnoticed += verdict.startswith("NOT")
        print(f"{guard:64} {verdict}", flush=True)
    print(f"{len(guards)} guards, {len(guards) - unnoticed} noticed, {unnoticed} not noticed")
    sys.exit(unnoticed > 0)


main()
