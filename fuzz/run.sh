#!/usr/bin/env bash
# Runs every fuzz target that has a seed corpus for a bounded time.
# Usage: fuzz/run.sh <build-dir> [seconds per target, default 20]
# A target with a file fuzz/<name>.seconds runs at least that many seconds.
# New inputs go to a temporary folder; the committed corpora stay as they are.
set -euo pipefail
cd "$(dirname "$0")/.."
build="${1:?usage: fuzz/run.sh <build-dir> [seconds]}"
seconds="${2:-20}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
for corpus in fuzz/corpus/*/; do
  name="$(basename "$corpus")"
  target="$build/fuzz/$name"
  if [ ! -x "$target" ]; then
    echo "fuzz target $name was not built" >&2
    exit 1
  fi
  target_seconds="$seconds"
  if [ -f "fuzz/$name.seconds" ]; then
    minimum="$(cat "fuzz/$name.seconds")"
    [ "$minimum" -gt "$target_seconds" ] && target_seconds="$minimum"
  fi
  args=(-max_total_time="$target_seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1)
  mkdir -p "$build/fuzz/artifacts"
  [ -f "fuzz/$name.dict" ] && args+=(-dict="fuzz/$name.dict")
  mkdir -p "$work/$name"
  echo "-- $name (${target_seconds}s)"
  "$target" "${args[@]}" -artifact_prefix="$build/fuzz/artifacts/$name-" "$work/$name" "$corpus" 2>"$work/$name.log" || {
    tail -n 60 "$work/$name.log" >&2
    echo "fuzz target $name failed; the input is in $build/fuzz/artifacts/" >&2
    exit 1
  }
  grep -E "^(stat::number_of_executed_units|stat::new_units_added)" "$work/$name.log" || true
done
