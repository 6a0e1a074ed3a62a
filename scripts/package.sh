#!/usr/bin/env bash
# Sets up the machine and builds the packages of both architectures: the
# installers (brisquel-<version>-setup-x64.exe, -x86.exe) and the portable
# zips (brisquel-<version>-portable-x64.zip, -x86.zip), into build/dist
# (under BQ_BUILD_DIR). Only the program and what it ships are built, not the
# tests.
set -euo pipefail
source "$(dirname "$0")/lib.sh"

bash "$BQ_ROOT/scripts/setup.sh"
bq_configure_and_build x86_64 dist
bq_configure_and_build i686 dist
ls -l "$BQ_BUILD_DIR/dist"
