#!/usr/bin/env bash
# lint.sh: shellcheck over all shell scripts of the tree, flake8 over all Python files.
set -euo pipefail
cd "$(dirname "$0")/.."

# By their first line, since the commands have no suffix.
mapfile -t shells < <(git grep -lE '^#!/(usr/bin/env |bin/)(ba)?sh$' -- ':!*.py'; git ls-files '*.sh')
mapfile -t shells < <(printf '%s\n' "${shells[@]}" | sort -u)
mapfile -t pythons < <(git ls-files '*.py')

shellcheck --external-sources "${shells[@]}"
flake8 "${pythons[@]}"
echo "${#shells[@]} shell scripts and ${#pythons[@]} Python files are clean"
