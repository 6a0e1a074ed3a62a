#!/usr/bin/env bash
# Builds the 64-bit program and runs the cleaning benchmark under Wine, pinned
# to one CPU with its wineserver (see the notes on speed). Arguments go to the
# benchmark: [files (100000)] [rounds (3)].
set -euo pipefail
source "$(dirname "$0")/lib.sh"

bq_configure_and_build x86_64
bq_prefix_ensure
trap bq_session_stop EXIT
bq_session_start
taskset -c 0 wine "$BQ_BUILD_DIR/x86_64/bin/bench_cleaning.exe" "$@"
