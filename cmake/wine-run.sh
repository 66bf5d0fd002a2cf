#!/bin/sh
# Runs a Windows program under Wine: wine-run.sh PROGRAM.exe [ARGS...]
#
# The Wine prefix is a throwaway one beside the program's build tree
# (ORU_WINEPREFIX, default: <build directory>/wine, the build directory being
# the nearest parent holding CMakeCache.txt).  The first run creates it under
# a lock, so parallel tests do not race to initialise it, and keeps the Wine
# server alive for a while so the next program starts quickly.
set -eu

if [ -z "${ORU_WINEPREFIX:-}" ]; then
  dir=$(cd "$(dirname "$1")" && pwd)
  while [ "$dir" != / ] && [ ! -f "$dir/CMakeCache.txt" ]; do dir=$(dirname "$dir"); done
  [ "$dir" = / ] && dir=$(cd "$(dirname "$1")" && pwd)
  ORU_WINEPREFIX=$dir/wine
fi
WINEPREFIX=$ORU_WINEPREFIX
WINEDEBUG=-all
WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
export WINEPREFIX WINEDEBUG WINEDLLOVERRIDES

wine=$(command -v wine64 || command -v /usr/lib/wine/wine64 || command -v wine)

(
  flock 9
  if [ ! -f "$WINEPREFIX/system.reg" ]; then
    "$wine" wineboot -i </dev/null >/dev/null 2>&1 9>&- || true
  fi
  # Keep the Wine server running between programs (it exits 60 s after the
  # last one).  When it is started anew, its service processes are started
  # too, here, with their standard streams closed: started by the program's
  # own wine process they would inherit its output pipe and hold it open as
  # long as the server lives, and whoever reads the output would wait.  (Nor
  # may they keep the lock's descriptor.)
  if wineserver -p60 </dev/null >/dev/null 2>&1 9>&-; then
    "$wine" wineboot </dev/null >/dev/null 2>&1 9>&- || true
  fi
) 9>"$WINEPREFIX.lock"

exec "$wine" "$@"
