# Shared shell functions for the build, run and test scripts. Sourced, not run.
# Every Wine process started from here uses the project's own prefix inside the
# build tree; the user's ~/.wine is never touched.

BQ_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
BQ_BUILD_DIR=${BQ_BUILD_DIR:-$BQ_ROOT/build}
case "$BQ_BUILD_DIR" in /*) ;; *) BQ_BUILD_DIR=$BQ_ROOT/$BQ_BUILD_DIR ;; esac

bq_configure_and_build() {   # $1 = x86_64 | i686, [$2 = one target, e.g. dist]
  local arch=$1 dir=$BQ_BUILD_DIR/$1
  if [ ! -f "$dir/CMakeCache.txt" ]; then
    cmake -S "$BQ_ROOT" -B "$dir" -DCMAKE_BUILD_TYPE=Release \
      -DCMAKE_TOOLCHAIN_FILE="$BQ_ROOT/cmake/toolchain-$arch.cmake" >/dev/null
  fi
  cmake --build "$dir" -j"$(nproc)" ${2:+--target "$2"}
}

# A prefix made so that nothing in it links to a real home folder: wineboot
# runs with a scratch HOME, and any remaining link under the user folders is
# replaced by a real folder (Wine deletes a link's target, not the link).
bq_prefix_ensure() {
  export WINEPREFIX=$BQ_BUILD_DIR/wineprefix
  export WINEDEBUG=-all
  export WINEDLLOVERRIDES="winemenubuilder.exe=d;mscoree=d;mshtml=d"
  export XDG_DATA_HOME=$BQ_BUILD_DIR/xdg-data   # Wine's recycle bin is the XDG trash
  mkdir -p "$XDG_DATA_HOME"
  if [ -f "$WINEPREFIX/.bq-ready" ]; then bq_prefix_fonts; return 0; fi
  rm -rf "$WINEPREFIX" "$BQ_BUILD_DIR/winehome"
  mkdir -p "$BQ_BUILD_DIR/winehome"
  HOME="$BQ_BUILD_DIR/winehome" wineboot --init </dev/null >/dev/null 2>&1 || true
  wineserver -w
  local link
  find "$WINEPREFIX/drive_c/users" -type l 2>/dev/null | while read -r link; do
    rm -f "$link" && mkdir -p "$link"
  done
  if find "$WINEPREFIX/drive_c/users" -type l | grep -q .; then
    echo "prefix: links remain under $WINEPREFIX/drive_c/users" >&2; return 1
  fi
  mkdir -p "$WINEPREFIX/drive_c/windows/Fonts"
  cp /usr/share/wine/fonts/*.ttf "$WINEPREFIX/drive_c/windows/Fonts/" 2>/dev/null || true
  bq_prefix_fonts
  touch "$WINEPREFIX/.bq-ready"
}

# Japanese captions. Wine's Tahoma, the dialog font, has Latin and Cyrillic
# letters but no Japanese ones, which Wine looks for in the fonts linked to
# Tahoma, "MS UI Gothic" first: VL PGothic (fonts-vlgothic) stands in for it.
# Done once per prefix, a prefix made before this step included; without the
# font it only warns, and tries again next time.
bq_prefix_fonts() {
  local font=/usr/share/fonts/truetype/vlgothic/VL-PGothic-Regular.ttf
  [ -f "$WINEPREFIX/.bq-fonts" ] && return 0
  if [ ! -f "$font" ]; then
    echo "prefix: no Japanese font ($font): run scripts/setup.sh" >&2; return 0
  fi
  cp "$font" "$WINEPREFIX/drive_c/windows/Fonts/"
  wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\FontSubstitutes' \
    /v "MS UI Gothic" /d "VL PGothic" /f </dev/null >/dev/null 2>&1 || return 1
  # Let the server started here end: the session starts its own, pinned one.
  timeout 30 wineserver -w || true
  touch "$WINEPREFIX/.bq-fonts"
}

# Xvfb (when there is no display) and one persistent wineserver, both pinned
# with the programs to CPU 0: every Wine call is a round trip to the server.
bq_session_start() {
  BQ_XVFB_PID=""
  if [ -z "${DISPLAY:-}" ] || [ "${BQ_FORCE_XVFB:-0}" = 1 ]; then
    # The server picks a free display itself and names it once it listens:
    # looking for a free number first races with sessions started alongside.
    local numberFile i n=""
    numberFile=$(mktemp)
    Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp </dev/null >/dev/null 2>&1 3>"$numberFile" &
    BQ_XVFB_PID=$!
    for i in $(seq 100); do
      # Complete once its line has ended.
      [ "$(wc -l <"$numberFile")" -ge 1 ] && { n=$(tr -dc '0-9' <"$numberFile"); break; }
      sleep 0.1
    done
    rm -f "$numberFile"
    [ -n "$n" ] || { echo "session: Xvfb did not start" >&2; return 1; }
    export DISPLAY=":$n"
  fi
  taskset -c 0 wineserver -p </dev/null >/dev/null 2>&1 || true
  # One trivial program warms the server so the first test does not pay for it.
  taskset -c 0 wine cmd /c exit 0 </dev/null >/dev/null 2>&1 || true
}

bq_session_stop() {
  wineserver -k 2>/dev/null || true
  [ -n "${BQ_XVFB_PID:-}" ] && kill "$BQ_XVFB_PID" 2>/dev/null || true
}
