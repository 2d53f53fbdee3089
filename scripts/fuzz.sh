#!/usr/bin/env bash
# Runs every fuzz target on its seeds for so many seconds each (default 10). New finds stay out of the seed corpus.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-10}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for target in build/fuzz/bin/Fuzz*; do
  name=$(basename "$target")
  mkdir -p "$work/$name"
  seeds=()
  [ -d "fuzz/corpus/$name" ] && seeds=("fuzz/corpus/$name")
  "$target" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=4096 -print_final_stats=0 -verbosity=0 \
    -artifact_prefix="$work/$name-" "$work/$name" "${seeds[@]}" || {
    echo "$name found a failure:" >&2
    for artifact in "$work/$name"-*; do [ -f "$artifact" ] && base64 "$artifact" | head -c 4000 >&2; done
    exit 1
  }
  echo "$name: clean for $seconds s"
done
