#!/usr/bin/env bash
# windows.sh: builds for Windows with mingw-w64, and runs the tests under Wine in a prefix of their own, each program
# under a time limit. With --no-32 without the build in 32 bits, which no Wine of Debian's runs.
#
# The command line's tests are run under the rules of Windows for a program of this system, too, and both must tell the
# same: VORLENT_HERE names the build folder that has one; without it the preset release is built.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/scripts/packages.sh"

programs=(test_platform test_common test_host test_component test_connectors test_standalone test_com)
declare -A seconds=([test_connectors]=900 [test_standalone]=900 [test_com]=600)
secondsForOthers=300
secondsForCommands=1800

# What Windows or Wine 8 doesn't do; each with the reason. Tests that find out by themselves say so as they are skipped.
dates="Windows has the rules of today for a time zone, not those of past years"
modes="what a user may do isn't told by the bits of a mode"
names="no name holds |, ? or *"
shown="it is about native paths with slashes"
open="a database that is open can't be renamed or removed"
device="it is about a device that POSIX has"
declare -A lacking=(
  [FilesTest.RenameChangesTheCaseOfAName]="Wine leaves the case of a name when only that is to change"
  [CharsetsTest.Gb18030HoldsAllOfUnicode]="Wine has no converter for GB18030"
  [CharsetsTest.AllNamesThatBrowsersKnowAreKnown]="it has converters for fewer charsets"
  [UtcToLocalText.FollowsTheRulesOfTheDate]=$dates
  [LocalToUtcText.FollowsTheRulesOfTheDate]=$dates
  [StdModulFilesTest.FolderThatMayNotBeListedDoesNotExist]=$modes
  [StdModulFilesTest.NameThatHoldsAPatternIsItself]=$names
  [StdModulFilesTest.ExactRemovalKnowsNoPatterns]=$names
  [MoveFileTest.TargetNamedLikeAPatternTakesNoOther]=$names
  [MoveFileTest.SourceThatCannotBeLookedAtAnyMoreStays]="Windows looks at a file by other calls, which the test counts"
  [MoveFileTest.CopyThatCannotBeMadeReadOnlyIsMovedNevertheless]="a copy is read-only by the copying call itself"
  [LocationFireFoxExportTest.ReadOnlyFolderRaisesWithItsReason]=$modes
  [LocationFireFoxProfilesTest.NamesAreEscapedInTheRecord]=$names
  [LocationThunderbirdPumpTest.SourceIsEscaped]=$names
  [TodaysAccountsTest.NamesMayHoldAnything]=$names
  [Thunderbird_ModuleTest.UnreadableFilesRise]=$modes
  [StdMailDeleteTest.SummariesOfOthersStayWhereTheNameLooksLikeAPattern]=$names
  [StdMailDataTest.FileInfoOfWhatIsNoPlainFileTellsOfNothingToBeArchived]=$device
  [StdMailReadHeaderTest.MailboxThatCannotBeReadIsAtItsEnd]=$device
  [StdMailReadStreamTest.MailboxThatCannotBeReadIsAtItsEnd]=$device
  [SunbirdReadingTest.LocalTimesAgreeWithTheTimeZoneDatabase]=$dates
  [SunbirdWriteBackTest.StoredTimesAgreeWithTheTimeZoneDatabase]=$dates
  [LightningTest.OldTimesHaveTheRulesOfTheirDate]=$dates
  [LightningTest.RowThatCanNotBeReadIsNamedAndTheNextOneComes]=$dates
  [LightningTest.TimesWithoutASignOrWithFractionsAreTimes]=$dates
  [LightningTest.FileThatMayNotBeWrittenIsReadAndNotSaidToBeInUse]="Wine lets the superuser write what is read-only"
  [ArchiveProofTest.ArchiveThatIsDeletedKeepsTheMailsInTheirMailbox]=$open
  [ArchiveProofTest.SoDoesOneThatIsReplaced]=$open
  [ArchiveProofTest.WhatStoodInALogThatIsGoneIsInTheDatabase]=$open
  [ArchiveTest.ClosingLeavesADatabaseAloneThatTookThePlaceOfItsOwn]=$open
  [StandaloneHostTest.TheTemporaryFolderIsPrivate]="the place for temporary files is the user's own"
  [ShownPathsTest.ListsShowPathsAsTheRulesSay]=$shown
  [ShownPathsTest.PathsFromTheRootHaveOneKindOfSeparator]=$shown
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
  [ -z "$screen" ] || kill "$screen" 2>/dev/null || true
  rm -rf "$work"
}

# The wizard's control is shown on a screen that nobody looks at.
startScreen() {
  Xvfb -displayfd 3 -screen 0 1024x768x24 3>"$work/display" >/dev/null 2>&1 &
  screen=$!
  until [ -s "$work/display" ]; do sleep 0.1; done
  screenName=:$(cat "$work/display")
}

startWine() {
  # wineboot tells by the file that the prefix is there; what it says about 32 bits is no matter.
  runUnderWine "$work/boot.log" 120 wineboot --init || true
  # The server writes the file as it ends, at the latest. It stays between two programs afterwards, of which each would
  # start it anew.
  timeout 60 /usr/lib/wine/wineserver64 -w || true
  [ -f "$WINEPREFIX/system.reg" ] || { cat "$work/boot.log" >&2; exit 1; }
  /usr/lib/wine/wineserver64 -p600
}

# Until then nothing can wait for a click. Wine knows the screen that it was started with.
showScreen() {
  /usr/lib/wine/wineserver64 -k || true
  /usr/lib/wine/wineserver64 -w
  export DISPLAY=$screenName
  /usr/lib/wine/wineserver64 -p600
}

runTests() {
  local program filter log
  filter=$(IFS=:; echo "${!lacking[*]}")
  for program in "${programs[@]}"; do
    log=$work/$program.log
    [ "$program" != test_com ] || showScreen
    runUnderWine "$log" "${seconds[$program]:-$secondsForOthers}" "$root/build/windows/bin/$program.exe" \
      --gtest_filter="-LargeMailboxTest.*:$filter" || failed=1
    grep -aE '^(\[==========\] [0-9]+ tests? from .* ran|\[  PASSED  \])' "$log" || failed=1
    grep -aA 1 ': Skipped$' "$log" | grep -avE ': Skipped$|^--$' | sort | uniq -c | sed 's/^/  skipped:/' || true
    [ $failed -eq 0 ] || grep -aB 20 '^\[  FAILED  \]' "$log" >&2 || tail -n 20 "$log" >&2
  done
  echo "${#lacking[@]} tests don't run under Wine:"
  for name in "${!lacking[@]}"; do echo "  $name: ${lacking[$name]}"; done | sort
}

# What programs wrote into the registry; the rest is the system's own affair.
registry() {
  local key
  for key in HKEY_LOCAL_MACHINE HKEY_CURRENT_USER; do
    runUnderWine "$work/regedit.log" 60 regedit /E 'C:\registry.reg' "$key\\Software"
    iconv -f UTF-16 -t UTF-8 "$WINEPREFIX/drive_c/registry.reg"
  done
}

# The server is registered as the system's own program does it, and leaves nothing once that is taken back.
registersAndLeavesNothing() {
  local class
  cp "$root/build/windows/bin/Vorlent_Mozilla.ocx" "$WINEPREFIX/drive_c"
  registry >"$work/before.txt"
  runUnderWine "$work/register.log" 60 regsvr32 /s 'C:\Vorlent_Mozilla.ocx' || return 1
  registry >"$work/between.txt"
  runUnderWine "$work/register.log" 60 regsvr32 /u /s 'C:\Vorlent_Mozilla.ocx' || return 1
  registry >"$work/after.txt"
  for class in Location_Thunderbird Location_FireFox Location_Sunbird Actions WizardImport StdMail; do
    grep -qF "Classes\\VorlentMozilla.$class\\CLSID]" "$work/between.txt" || return 1
  done
  diff "$work/before.txt" "$work/after.txt"
}

# Real keys and clicks, through the four pages of the wizard's control.
driveControl() {
  timeout --kill-after=10 300 python3 "$root/tests/Component/Com/control_test.py" "$root/build/windows/bin" \
    /usr/lib/wine/wine64 || failed=1
}

tryRegistration() {
  if registersAndLeavesNothing; then
    echo "The registry is as it was once the server was registered and taken back."
  else
    echo "The registry isn't as it was before the server was registered, or lacks a class while it is." >&2
    failed=1
  fi
}

# The zip as a user has it: the component registers where it was unpacked, and the program runs.
tryPackage() {
  local log=$work/package.log place=$work/unpacked zip register
  (cd "$root/build/windows" && rm -f ./*.zip && cpack) >"$log" 2>&1 || { cat "$log" >&2; failed=1; return; }
  zip=$(echo "$root"/build/windows/vorlent-mozilla-*-windows-x86_64.zip)
  mkdir "$place"
  (cd "$place" && cmake -E tar xf "$zip" && mv ./*/* .)
  (cd "$place" && find . -type f | sort)
  runUnderWine "$log" 60 "$place/vorlent-mozilla.exe" --version || failed=1
  register=Z:${place//\//\\}\\register.cmd
  runUnderWine "$log" 60 cmd /c "$register" || { cat "$log" >&2; failed=1; }
  runUnderWine "$log" 60 reg query 'HKCR\VorlentMozilla.StdMail\CLSID' || { echo "not registered" >&2; failed=1; }
  runUnderWine "$log" 60 cmd /c "$register" /u || { cat "$log" >&2; failed=1; }
  ! runUnderWine "$log" 60 reg query 'HKCR\VorlentMozilla.StdMail\CLSID' || { echo "still registered" >&2; failed=1; }
}

# What is temporary lies on the drive that the tests use, and where no program of this system looks for what was left.
compareCommands() {
  local here=${VORLENT_HERE:-$root/build/release} name
  mkdir "$work/temporary"
  for name in TMP TEMP; do
    runUnderWine "$work/reg.log" 60 reg add 'HKCU\Environment' /v $name /d "Z:${work//\//\\}\\temporary" /f || failed=1
  done
  runUnderWine "$work/register.log" 60 regsvr32 /s "$root/build/windows/bin/Vorlent_Mozilla.ocx" || failed=1
  timeout --kill-after=10 "$secondsForCommands" python3 "$root/tests/Apps/two_systems.py" "$here/bin/vorlent-mozilla" \
    "$root/build/windows/bin/vorlent-mozilla.exe" "$root" /usr/lib/wine/wine64 || failed=1
}

# Tells at the end how long each part took.
part="" began=0 times=()
part() {
  [ -z "$part" ] || times+=("$(printf '%5d s  %s' $((SECONDS - began)) "$part")")
  part=$* began=$SECONDS
}

part "Build"
need "${windowsPackages[@]}"
fetchSqlite
build windows "${programs[@]/#/--target=}" --target=vorlent-mozilla --target=vorlent_server --target=control_container
part "Build in 32 bits"
[ "${1:-}" = --no-32 ] || build windows32 --target=vorlent_component --target=vorlent-mozilla --target=vorlent_server
part "Build for this system"
[ -n "${VORLENT_HERE:-}" ] || { need "${runPackages[@]}"; build release; }

work=$(mktemp -d)
screen="" screenName=""
trap endWine EXIT
export WINEPREFIX=$work/prefix WINEDEBUG=-all WINEARCH=win64 LC_ALL=C.UTF-8
unset DISPLAY
startScreen
failed=0
part "Start of Wine"
startWine
part "Tests"
runTests
part "Wizard's control"
driveControl
part "Registration"
tryRegistration
part "Package"
tryPackage
part "Commands"
compareCommands
part ""
printf '%s\n' "${times[@]}"
exit $failed
