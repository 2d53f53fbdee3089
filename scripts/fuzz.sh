#!/usr/bin/env bash
# fuzz.sh [SECONDS [TARGET...]]: runs fuzz targets on their seeds for so many seconds each (default 10, all targets),
# as many side by side as there are processors, and tells for each how many inputs it ran. What breaks a target is
# kept in build/fuzz/finds; inputs that are only new stay out of the seed corpus.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-10}
targets=("${@:2}")
if [ ${#targets[@]} -eq 0 ]; then
  for program in build/fuzz/bin/Fuzz*; do targets+=("$(basename "$program")"); done
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
finds=build/fuzz/finds
mkdir -p "$finds"

# The dictionary of a target: its own, or for those that read mails the one of mailboxes.
dictionary() {
  case $1 in
    FuzzReadHeader | FuzzReadStream | FuzzRestore) echo "-dict=fuzz/mailbox.dict" ;;
    *) [ ! -f "fuzz/$1.dict" ] || echo "-dict=fuzz/$1.dict" ;;
  esac
}

run() {
  local name=$1 corpus=$work/$1 seeds=()
  mkdir "$corpus"
  [ -d "fuzz/corpus/$name" ] && seeds=("fuzz/corpus/$name")
  # Leaks are looked for once, at the end: a search after every input costs more than the input.
  # shellcheck disable=SC2046
  if "build/fuzz/bin/$name" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=4096 -detect_leaks=0 \
    -print_final_stats=1 -verbosity=0 $(dictionary "$name") -artifact_prefix="$finds/$name-" \
    "$corpus" "${seeds[@]}" >"$corpus.log" 2>&1; then
    echo "$name: clean for $seconds s, $(sed -n 's/^stat::number_of_executed_units: *//p' "$corpus.log") runs"
  else
    { echo "$name found a failure, kept in $finds:"; tail -n 60 "$corpus.log"; } >&2
    return 1
  fi
}

export -f run dictionary
export work finds seconds
printf '%s\n' "${targets[@]}" | xargs -P "$(nproc)" -I{} bash -c 'run {}' || exit 1
