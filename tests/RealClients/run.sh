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

try() {
  local package=$1 script=$2
  if ! command -v "$package" >/dev/null; then
    if [ "$(id -u)" -ne 0 ] || ! timeout 120 apt-get install -y -qq --no-install-recommends "$package" >/dev/null 2>&1; then
      echo "$script: NOT RUN, $package is not installed and could not be within two minutes"
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

try thunderbird thunderbird.py
try firefox-esr firefox.py
exit $failed
