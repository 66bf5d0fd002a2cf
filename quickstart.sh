#!/usr/bin/env bash
# Quick start on a fresh Debian (12 or newer) or Ubuntu machine that has git
# and root or sudo:
#
#   ./quickstart.sh demo   install what is missing, build, run the oru tool demo
#   ./quickstart.sh test   install what is missing, build, run the whole test suite
#   ./quickstart.sh deps   only install what is missing
#
# The system packages are listed in .ci/packages, the one list that CI uses
# too.  The builds are the CMake presets `run` and `test`.
set -euo pipefail
cd "$(dirname "$0")"

install_missing() {
  local packages missing=() p
  mapfile -t packages < <(grep -v '^#' .ci/packages | grep .)
  for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
  done
  ((${#missing[@]})) || return 0
  echo "installing: ${missing[*]}"
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "quickstart: need root or sudo to install: ${missing[*]}" >&2
      exit 1
    fi
    as_root=(sudo)
  fi
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -q --no-install-recommends "${missing[@]}"
}

case "${1:-}" in
  demo)
    install_missing
    cmake --workflow --preset run
    ;;
  test)
    install_missing
    cmake --workflow --preset test
    ;;
  deps)
    install_missing
    ;;
  *)
    echo "usage: ./quickstart.sh demo|test|deps" >&2
    exit 2
    ;;
esac
