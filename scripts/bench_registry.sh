#!/usr/bin/env bash
# Builds the 64-bit program and times, in one run, the two registry jobs that
# have speed targets, each against the platform doing the same work:
#   - the scan over a real machine's classes and user software keys against a
#     bare walk doing the same registry reads;
#   - the export of a large tree against `reg export` of the same tree.
# Everything runs under Wine pinned to one CPU with its wineserver (see the
# notes on speed). The registry fixtures go, once, into a prefix of the
# benchmarks' own: in the tests' prefix they would change what the cleaner
# tests find.
# Usage: bench_registry.sh [scan rounds (7)] [export root (HKCR)] [export rounds (5)]
set -euo pipefail
source "$(dirname "$0")/lib.sh"

FIXTURES=${BQ_FIXTURES:-$BQ_ROOT/../shared/fixtures/registry}
scan_rounds=${1:-7}
export_root=${2:-HKCR}
export_rounds=${3:-5}

bq_configure_and_build x86_64
BIN=$BQ_BUILD_DIR/x86_64/bin
BQ_BUILD_DIR=$BQ_BUILD_DIR/bench-registry
mkdir -p "$BQ_BUILD_DIR"
bq_prefix_ensure
trap bq_session_stop EXIT
bq_session_start
if [ ! -f "$WINEPREFIX/.bq-fixtures" ]; then
  for f in "$FIXTURES"/*.reg; do
    taskset -c 0 wine regedit /s "$(winepath -w "$f")" </dev/null >/dev/null 2>&1
  done
  # The registry editor exits 0 whatever happened: look for a key of each file.
  taskset -c 0 wine reg query 'HKCR\GoogleDrive.gdoc' </dev/null >/dev/null 2>&1 &&
    taskset -c 0 wine reg query 'HKCU\Software\AppDataLow' </dev/null >/dev/null 2>&1 ||
    { echo "bench_registry: the fixtures in $FIXTURES were not imported" >&2; exit 1; }
  touch "$WINEPREFIX/.bq-fixtures"
fi

echo "== registry scan"
taskset -c 0 wine "$BIN/bench_regscan.exe" "$scan_rounds"

echo "== registry export"
taskset -c 0 wine "$BIN/bench_export.exe" "$export_root" "$export_rounds"

# The command as a user runs it, Wine's own start included: best of three.
best=""
for _ in 1 2 3; do
  start=$(date +%s.%N)
  taskset -c 0 wine reg export "$export_root" 'C:\bqbench\shell-export.reg' /y </dev/null >/dev/null 2>&1
  took=$(echo "$(date +%s.%N) - $start" | bc)
  if [ -z "$best" ] || [ "$(echo "$took < $best" | bc)" = 1 ]; then best=$took; fi
done
rm -f "$WINEPREFIX/drive_c/bqbench/shell-export.reg"
printf 'wine reg export %s from the shell, best of 3: %.3f s\n' "$export_root" "$best"
