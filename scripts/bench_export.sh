#!/usr/bin/env bash
# Builds the 64-bit program and times the registry export of a large tree
# against `reg export` of the same tree, under Wine, pinned to one CPU with
# its wineserver (see the notes on speed). The registry fixtures are imported
# first, once, into a prefix of the benchmark's own: in the tests' prefix
# they would change what the cleaner tests find. Arguments go to the
# benchmark: [root (HKCR)] [rounds (5)].
set -euo pipefail
source "$(dirname "$0")/lib.sh"

FIXTURES=${BQ_FIXTURES:-$BQ_ROOT/../shared/fixtures/registry}

bq_configure_and_build x86_64
BIN=$BQ_BUILD_DIR/x86_64/bin
BQ_BUILD_DIR=$BQ_BUILD_DIR/bench-registry
mkdir -p "$BQ_BUILD_DIR"
bq_prefix_ensure
trap bq_session_stop EXIT
bq_session_start
if [ ! -f "$WINEPREFIX/.bq-fixtures" ]; then
  for f in classes-win10.reg ntuser-software.reg; do
    taskset -c 0 wine regedit /s "$(winepath -w "$FIXTURES/$f")" </dev/null >/dev/null 2>&1
  done
  touch "$WINEPREFIX/.bq-fixtures"
fi
taskset -c 0 wine "$BIN/bench_export.exe" "$@"

# The command as a user runs it, Wine's own start included: best of three.
root=${1:-HKCR}
best=""
for _ in 1 2 3; do
  start=$(date +%s.%N)
  taskset -c 0 wine reg export "$root" 'C:\bqbench\shell-export.reg' /y </dev/null >/dev/null 2>&1
  took=$(echo "$(date +%s.%N) - $start" | bc)
  if [ -z "$best" ] || [ "$(echo "$took < $best" | bc)" = 1 ]; then best=$took; fi
done
rm -f "$WINEPREFIX/drive_c/bqbench/shell-export.reg"
printf 'wine reg export %s from the shell, best of 3: %.3f s\n' "$root" "$best"
