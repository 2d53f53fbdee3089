#!/usr/bin/env bash
# tidy.sh [PATTERN]: clang-tidy with the checks of .clang-tidy over all files, or over those compiled whose path holds the
# pattern. It looks at up to 24 files as one, as the unity build compiles them: most of its time goes into the headers.
set -euo pipefail
cd "$(dirname "$0")/.."
[ -f build/tidy/compile_commands.json ] || cmake --preset tidy >/dev/null
cmake build/tidy >/dev/null # finds files that came

files() {
  python3 -c 'import json; print("\n".join(entry["file"] for entry in json.load(open("build/tidy/compile_commands.json"))))'
  echo examples/read-mailbox/Main.cpp
}

tidy() {
  local log
  # What it counts on standard error isn't of our files.
  log=$(clang-tidy-16 -p build/tidy --quiet "$1" 2>/dev/null) || { printf '%s\n' "$log"; return 1; }
}

export -f tidy
files | grep -F -- "${1:-}" | xargs -P "$(nproc)" -I{} bash -c 'tidy {}' || { echo "clang-tidy found something" >&2; exit 1; }
