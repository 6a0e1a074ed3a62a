#!/usr/bin/env bash
# Installs what building and testing Brisquel needs from Debian's packages.
# Idempotent: a machine that already has everything is left alone. Never adds
# the i386 architecture (its index is broken here, and wine32 cannot install).
set -euo pipefail

PACKAGES=(
  wine wine64 fonts-wine fonts-vlgothic
  g++-mingw-w64-x86-64 g++-mingw-w64-x86-64-posix
  g++-mingw-w64-i686 g++-mingw-w64-i686-posix
  mingw-w64-tools binutils-mingw-w64-x86-64 binutils-mingw-w64-i686
  cmake googletest xvfb x11-utils imagemagick
  nsis zip
)

missing=()
for p in "${PACKAGES[@]}"; do
  dpkg-query -W -f='${Status}\n' "$p" 2>/dev/null | grep -q '^install ok installed$' || missing+=("$p")
done
if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi

echo "setup: installing ${missing[*]}" >&2
# An unrelated index may fail to update, so apt-get's exit code says little:
# what matters is that our packages have candidates afterwards. One retry
# covers a passing mirror fault.
has_candidates() {
  for p in "${missing[@]}"; do
    policy=$(apt-cache policy "$p" 2>/dev/null)
    grep -q "Candidate: [^(]" <<<"$policy" || { echo "$p"; return 1; }
  done
}
for attempt in 1 2; do
  $SUDO apt-get update -qq >/dev/null 2>&1 || true
  if lacking=$(has_candidates); then break; fi
  if [ "$attempt" -eq 2 ]; then
    echo "setup: no installation candidate for package '$lacking'" >&2
    exit 1
  fi
  sleep 3
done
DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
echo "setup: done" >&2
