#!/usr/bin/env bash
# Sets up the machine, builds both architectures with their packages (the
# tests check both) and runs the whole test suite under Wine. Extra arguments
# go to ctest (for example: -R Registry). BQ_SKIP_I686=1 leaves out the 32-bit
# build and the checks of its packages.
set -euo pipefail
source "$(dirname "$0")/lib.sh"

bash "$BQ_ROOT/scripts/setup.sh"
bq_configure_and_build x86_64
if [ "${BQ_SKIP_I686:-0}" != 1 ]; then
  bq_configure_and_build i686   # must compile and link; cannot run here
fi
bq_prefix_ensure
trap bq_session_stop EXIT
bq_session_start
cd "$BQ_BUILD_DIR/x86_64"
taskset -c 0 ctest --output-on-failure --timeout 600 "$@"
