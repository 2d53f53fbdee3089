#!/usr/bin/env bash
# What a compiler doesn't check: floors include only downwards, and only the seam knows the operating system.
set -euo pipefail
cd "$(dirname "$0")/.."
failed=0
fail() {
  echo "$1" >&2
  failed=1
}

# forbid FOLDERS PATTERN MESSAGE: no file in the folders may hold the pattern.
forbid() {
  local found
  # shellcheck disable=SC2086
  found=$(grep -rnE --include='*.h' --include='*.cpp' "$2" $1 2>/dev/null || true)
  [ -z "$found" ] || fail "$3:"$'\n'"$found"
}

forbid src/Platform '#include "(Common|Host|Component|Connectors|Standalone|Apps)/' "The seam includes from above"
forbid src/Common '#include "(Host|Component|Connectors|Standalone|Apps)/' "The foundation includes from above"
forbid src/Host '#include "(Component|Connectors|Standalone|Apps)/' "The contract includes from above"
forbid "src/Component src/Connectors" '#include "(Standalone|Apps)/' "The component includes from above"
forbid src/Standalone '#include "Apps/' "The standalone host includes from above"

inner="src/Common src/Host src/Component src/Connectors"
forbid "$inner" '#include <(unistd|fcntl|dirent|signal|pthread|dlfcn|windows|sys/[a-z]+)\.h>' "A system header above the seam"
forbid "$inner" '#include "Platform/(Posix|Windows)/' "A system's own part of the seam is used above it"
forbid "$inner src/Standalone" '#\s*(if|ifdef|ifndef|elif).*(_WIN32|__linux__|__unix__|_POSIX|__APPLE__|__MINGW)' "An operating system is asked for above the seam"
forbid "$inner" '(std::filesystem|std::[io]?fstream|fopen\()' "The standard library's files above the seam"
forbid "src tests fuzz bench" 'catch \(\.\.\.\)' "A catch-all"
# clang-format leaves comments and long literals as they are written. Columns are characters, not bytes.
LC_ALL=C.UTF-8 forbid "src tests bench fuzz" '^.{111,}' "A line over 110 columns"

formatted=$(git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run -Werror 2>&1 | grep -E 'error' | head -n 10 || true)
[ -z "$formatted" ] || fail "Not formatted by .clang-format:"$'\n'"$formatted"

[ $failed -eq 0 ] && echo "house rules hold"
exit $failed
