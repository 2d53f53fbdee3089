#!/usr/bin/env bash
# The component beside the real applications, where they are installed or can be within two minutes. What isn't run
# is said, and with CI=true a failure.
#
# usage: run.sh [PROGRAM], the optimised build's without one
set -uo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
source "$root/scripts/packages.sh"
program=${1:-$root/build/release/bin/vorlent-mozilla}
[ $# -gt 0 ] || build release
failed=0

# try SCRIPT COMMANDS PACKAGE...: runs the script beside the commands (words of one text), which the packages bring.
try() {
  local script=$1 commands=$2 packages=("${@:3}")
  # shellcheck disable=SC2086
  if [ "$(command -v $commands | wc -l)" -ne "$(wc -w <<<"$commands")" ]; then
    if [ "$(id -u)" -ne 0 ] || ! timeout 120 apt-get install -y -qq --no-install-recommends "${packages[@]}" >/dev/null 2>&1; then
      echo "$script: NOT RUN, ${packages[*]} are not installed and could not be within two minutes"
      [ "${CI:-}" != true ] || failed=1
      return
    fi
  fi
  if timeout 300 python3 "$root/tests/RealClients/$script" "$program"; then
    echo "$script: passed"
  else
    echo "$script: FAILED"
    failed=1
  fi
}

try thunderbird.py thunderbird thunderbird
try firefox.py firefox-esr firefox-esr
try chromium.py "chromium xvfb-run" chromium xvfb xauth
try calendars.py thunderbird thunderbird
exit $failed
