#!/usr/bin/env bash
# windows.sh: builds for Windows with mingw-w64, and runs the tests under Wine in a prefix of their own, each program
# under a time limit. With --no-32 without the build in 32 bits, which no Wine of Debian's runs.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/scripts/packages.sh"

programs=(test_platform)
secondsForEach=300

# What Wine 8 doesn't do; each with the reason.
declare -A lacking=(
  [FilesTest.RenameChangesTheCaseOfAName]="Wine leaves the case of a name when only that is to change"
  [CharsetsTest.Gb18030HoldsAllOfUnicode]="Wine has no converter for GB18030"
)

# SQLite's sources as they stand in a package of the npm registry.
sqlitePackage=better-sqlite3@8.1.0
sqliteSum=9006504eac0c86e8d5f42d6b7a8282866bf041bc856ff4438fec83cb98e4c05f

fetchSqlite() {
  local to=$root/build/sqlite temporary
  [ -f "$to/sqlite3.c" ] && return
  command -v npm >/dev/null || need npm
  temporary=$(mktemp -d)
  (cd "$temporary" && npm pack --silent "$sqlitePackage" >/dev/null)
  echo "$sqliteSum  $temporary/better-sqlite3-${sqlitePackage#*@}.tgz" | sha256sum --check --quiet
  mkdir -p "$to"
  tar -xzf "$temporary"/*.tgz -C "$to" --strip-components=3 package/deps/sqlite3/sqlite3.c package/deps/sqlite3/sqlite3.h
  rm -r "$temporary"
}

# Wine's own programs outlive what was started and would hold a pipe open, so output goes to a file.
runUnderWine() {
  local log=$1 limit=$2 result=0
  shift 2
  timeout --kill-after=10 "$limit" /usr/lib/wine/wine64 "$@" >"$log" 2>&1 </dev/null || result=$?
  return $result
}

# shellcheck disable=SC2317 # called by the trap
endWine() {
  WINEPREFIX=$work/prefix /usr/lib/wine/wineserver64 -k 2>/dev/null || true
  rm -rf "$work"
}

need "${windowsPackages[@]}"
fetchSqlite
build windows "${programs[@]/#/--target=}"
[ "${1:-}" = --no-32 ] || build windows32 --target=vorlent_component

work=$(mktemp -d)
trap endWine EXIT
export WINEPREFIX=$work/prefix WINEDEBUG=-all WINEARCH=win64 LC_ALL=C.UTF-8
unset DISPLAY
# wineboot tells by the file that the prefix is there; what it says about 32 bits is no matter.
runUnderWine "$work/boot.log" 120 wineboot --init || true
[ -f "$WINEPREFIX/system.reg" ] || { cat "$work/boot.log" >&2; exit 1; }

filter=$(IFS=:; echo "${!lacking[*]}")
failed=0
for program in "${programs[@]}"; do
  log=$work/$program.log
  runUnderWine "$log" "$secondsForEach" "$root/build/windows/bin/$program.exe" --gtest_filter="-$filter" || failed=1
  grep -aE '^(\[==========\] [0-9]+ tests? from .* ran|\[  PASSED  \])' "$log" || failed=1
  [ $failed -eq 0 ] || grep -aB 20 '^\[  FAILED  \]' "$log" >&2 || tail -n 20 "$log" >&2
done
echo "${#lacking[@]} tests don't run under Wine:"
for name in "${!lacking[@]}"; do echo "  $name: ${lacking[$name]}"; done
exit $failed
