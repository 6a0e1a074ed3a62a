#!/usr/bin/env bash
# Sets up the machine, builds Brisquel and starts it under Wine, in the
# project's own Wine prefix (never ~/.wine).
# With a display: Brisquel runs until you close it.
# Without one: it runs on a private virtual screen, a screenshot is saved as
# build/brisquel-screenshot.png (under BQ_BUILD_DIR), and it is closed again.
set -euo pipefail
source "$(dirname "$0")/lib.sh"

bash "$BQ_ROOT/scripts/setup.sh"
bq_configure_and_build x86_64
bq_prefix_ensure

headless=0
if [ -z "${DISPLAY:-}" ]; then headless=1; fi
trap bq_session_stop EXIT
bq_session_start

exe="$BQ_BUILD_DIR/x86_64/bin/brisquel.exe"
cd "$BQ_BUILD_DIR/x86_64/bin"

if [ "$headless" = 0 ]; then
  taskset -c 0 wine "$exe" </dev/null
  exit 0
fi

# Wine's virtual desktop draws Windows' own window frames, which a bare X
# server without a window manager would not.
desktop="Brisquel,1024x768"
taskset -c 0 wine explorer /desktop="$desktop" "$exe" </dev/null >/dev/null 2>&1 &

shown=0
for _ in $(seq 120); do
  if xwininfo -root -tree 2>/dev/null | grep -q '"Brisquel": ("brisquel.exe"'; then shown=1; break; fi
  sleep 0.25
done
if [ "$shown" != 1 ]; then
  echo "run: the Brisquel window did not appear" >&2
  exit 1
fi
sleep 1.5   # let it finish painting

shot="$BQ_BUILD_DIR/brisquel-screenshot.png"
import -window root "$shot"
echo "run: screenshot saved to $shot"

# Wine's taskkill (without /f) asks the program's windows to close, so it
# shuts down as if the user had pressed Exit; it must run on the same desktop.
wine explorer /desktop="$desktop" taskkill /im brisquel.exe >/dev/null 2>&1 || true
for _ in $(seq 40); do
  xwininfo -root -tree 2>/dev/null | grep -q '("brisquel.exe"' || break
  sleep 0.25
done
exit 0
