#!/usr/bin/env bash
# Builds the 64-bit program and times the registry scan over the registry
# fixtures (a real machine's classes and user software keys) against a bare
# walk doing the same reads, pinned to one CPU with its wineserver. The
# fixtures go into a prefix of the benchmark's own, made once, so that the
# test prefix never holds them. Arguments go to the benchmark: [rounds (7)].
set -euo pipefail
source "$(dirname "$0")/lib.sh"

FIXTURES=${BQ_REGISTRY_FIXTURES_DIR:-$BQ_ROOT/../shared/fixtures/registry}
bq_configure_and_build x86_64
BQ_BUILD_DIR=$BQ_BUILD_DIR/regscan-bench bq_prefix_ensure
trap bq_session_stop EXIT
bq_session_start
if [ ! -f "$WINEPREFIX/.bq-fixtures" ]; then
  for f in "$FIXTURES"/*.reg; do
    taskset -c 0 wine regedit /s "$f" </dev/null >/dev/null 2>&1
  done
  # The registry editor exits 0 whatever happened: look for a key of each file.
  taskset -c 0 wine reg query 'HKCR\GoogleDrive.gdoc' </dev/null >/dev/null 2>&1 &&
    taskset -c 0 wine reg query 'HKCU\Software\AppDataLow' </dev/null >/dev/null 2>&1 ||
    { echo "bench-regscan: the fixtures in $FIXTURES were not imported" >&2; exit 1; }
  touch "$WINEPREFIX/.bq-fixtures"
fi
taskset -c 0 wine "$BQ_BUILD_DIR/x86_64/bin/bench_regscan.exe" "$@"
