#!/usr/bin/env bash
# What a compiler doesn't check: floors include only downwards, and only the seam knows the operating system.
# shellcheck disable=SC2086 # lists of files are taken apart at their blanks
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
  found=$(grep -rnE --include='*.h' --include='*.cpp' "$2" $1 2>/dev/null || true)
  [ -z "$found" ] || fail "$3:"$'\n'"$found"
}

forbid src/Platform '#include "(Common|Host|Component|Connectors|Standalone|Apps)/' "The seam includes from above"
forbid src/Common '#include "(Host|Component|Connectors|Standalone|Apps)/' "The foundation includes from above"
forbid src/Host '#include "(Component|Connectors|Standalone|Apps)/' "The contract includes from above"
forbid "src/Component src/Connectors" '#include "(Standalone|Apps)/' "The component includes from above"
forbid src/Standalone '#include "Apps/' "The standalone host includes from above"

# The seam's own tests, and what tests need of a system, look at that system's part of it.
aboveTheSeam=$(git ls-files 'src/*.h' 'src/*.cpp' 'tests/*.h' 'tests/*.cpp' 'bench/*' 'fuzz/*' 'examples/*' |
  grep -vE "^src/Platform/|^tests/(Platform|Support)/(Posix|Windows)/")
forbid "$aboveTheSeam" '#include "Platform/(Posix|Windows)/' "A system's own part of the seam is used above it"
seamHeaders=$(git ls-files 'src/Platform/*.h' | grep -vE '^src/Platform/(Posix|Windows)/')
# Those for Windows alone are compiled in its own build.
innerHeaders=$(git ls-files 'src/Common/*.h' 'src/Host/*.h' 'src/Component/*.h' 'src/Connectors/*.h' | grep -v /Com/)
otherHeaders=$(git ls-files 'src/Standalone/*.h' 'src/Apps/*.h')
forbid "$seamHeaders $innerHeaders $otherHeaders" \
  '\<(pid_t|uid_t|gid_t|mode_t|off_t|ssize_t|dirent|struct (stat|timespec|timeval|tm))\>|\<DIR ?\*' \
  "A type of one system in a header that all read"
# Macros of these headers have names of the contracts: MoveFile, GetObject. What the seam's own files include
# is free of such names, see below, and includes nothing from above. So the two never meet but in automation,
# whose header gives the names back.
automation=src/Host/Com/WindowsApi.h
aboveWindows=$(git ls-files 'src/*.h' 'src/*.cpp' |
  grep -vE "^src/(Platform|Apps/CommandLine)/Windows/[^/]*\.cpp$|^$automation$")
forbid "$aboveWindows" '#include <(windows|win[a-z0-9]+|ole[a-z0-9]+|objbase|sh[a-z]+|commdlg|tlhelp32)\.h>' \
  "A header of Windows outside the files of its part of the seam"

inner="src/Common src/Host src/Component src/Connectors"
innerFiles=$(git ls-files 'src/*.h' 'src/*.cpp' | grep -E "^(${inner// /|})/" | grep -v "^$automation$")
forbid "$innerFiles" '#include <(unistd|fcntl|dirent|signal|pthread|dlfcn|windows|sys/[a-z]+)\.h>' "A system header above the seam"
forbid "$inner src/Standalone" '#\s*(if|ifdef|ifndef|elif).*(_WIN32|__linux__|__unix__|_POSIX|__APPLE__|__MINGW)' "An operating system is asked for above the seam"
forbid "$inner" '(std::filesystem|std::[io]?fstream|fopen\()' "The standard library's files above the seam"
forbid "src tests fuzz bench" 'catch \(\.\.\.\)' "A catch-all"
# clang-format leaves comments and long literals as they are written. Columns are characters, not bytes.
LC_ALL=C.UTF-8 forbid "src tests bench fuzz" '^.{111,}' "A line over 110 columns"

# The floors below the standalone host are made for Windows too.
mingw=x86_64-w64-mingw32-g++-posix
macros() {
  "$mingw" -std=c++20 -Isrc -dM -E -x c++ - | sed -E 's/^#define ([A-Za-z0-9_]+).*/\1/' | sort -u
}
includes() { sed -E 's,^(src/)?(.*),#include "\2",'; }
if command -v "$mingw" >/dev/null; then
  problems=$(printf '%s\n' $seamHeaders $innerHeaders | includes |
    "$mingw" -std=c++20 -Isrc -fsyntax-only -x c++ - 2>&1 | grep -E 'error' | head -n 10 || true)
  [ -z "$problems" ] || fail "A header doesn't compile for Windows:"$'\n'"$problems"
  windowsMacros=$(comm -23 \
    <(printf '#include <%s>\n' winsock2.h windows.h ole2.h tlhelp32.h shlobj.h commdlg.h | macros) \
    <(printf '%s\n' $seamHeaders | includes | macros))
  [ -n "$windowsMacros" ] || fail "The headers of Windows can't be read"
  taken=$(sed -E 's,//.*|"[^"]*",,g' $seamHeaders | grep -oE '[A-Za-z_][A-Za-z0-9_]*' | sort -u |
    comm -12 - <(printf '%s\n' "$windowsMacros"))
  [ -z "$taken" ] || fail "Names of the seam that are macros of Windows: $taken"
elif [ "${CI:-}" = true ]; then
  fail "The headers can't be compiled for Windows: no $mingw"
else
  echo "The headers were not compiled for Windows: no $mingw (package g++-mingw-w64-x86-64-posix)" >&2
fi

formatted=$(git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run -Werror 2>&1 | grep -E 'error' | head -n 10 || true)
[ -z "$formatted" ] || fail "Not formatted by .clang-format:"$'\n'"$formatted"

[ $failed -eq 0 ] && echo "house rules hold"
exit $failed
