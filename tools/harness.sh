#!/usr/bin/env bash
# Test and demo harness around Wine.
#   tools/harness.sh prefix          make the project's Wine prefix once (build/wineprefix)
#   tools/harness.sh run CMD ARGS..  run CMD with an X display and one wineserver kept up
#                                    for the whole command; both are stopped afterwards
# Without $DISPLAY an Xvfb of our own is started on a free display number. Every
# process started here is stopped by its own pid, never by name.
set -uo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${ZYN_WINEPREFIX:-$here/build/wineprefix}
export WINEDEBUG=-all
export WINEDLLOVERRIDES=mscoree,mshtml=
state=$here/build/harness
wine=/usr/lib/wine/wine64; [ -x "$wine" ] || wine=wine64
wineserver=/usr/lib/wine/wineserver64; [ -x "$wineserver" ] || wineserver=wineserver
mkdir -p "$state"

make_prefix() {
  [ -f "$WINEPREFIX/.zyn-ready" ] && return 0
  echo "harness: making the Wine prefix in $WINEPREFIX (once)"
  rm -rf "$WINEPREFIX"
  "$wine" wineboot -i >/dev/null 2>&1
  cat > "$state/settings.reg" <<'REG'
REGEDIT4

[HKEY_CURRENT_USER\Software\Wine\X11 Driver]
"Managed"="N"
"Decorated"="N"

[HKEY_CURRENT_USER\Software\Wine\WineDbg]
"ShowCrashDialog"=dword:00000000

[HKEY_CURRENT_USER\Software\Wine\Direct3D]
"VideoMemorySize"="256"
"renderer"="gl"

[HKEY_CURRENT_USER\Software\Wine\Explorer]
"Desktop"="Default"

[HKEY_CURRENT_USER\Software\Wine\Explorer\Desktops]
"Default"="1024x768"
REG
  "$wine" regedit /S "$(winepath_of "$state/settings.reg")" >/dev/null 2>&1
  "$wineserver" -w
  touch "$WINEPREFIX/.zyn-ready"
}

winepath_of() { echo "Z:$(echo "$1" | sed 's|/|\\|g')"; }

start_x() {
  if [ -n "${DISPLAY:-}" ]; then return 0; fi
  local n=90
  while [ -e "/tmp/.X$n-lock" ] || [ -e "/tmp/.X11-unix/X$n" ]; do n=$((n + 1)); done
  Xvfb ":$n" -screen 0 1024x768x24 -nolisten tcp >/dev/null 2>&1 &
  echo $! > "$state/xvfb.pid"
  export DISPLAY=":$n"
  echo "$DISPLAY" > "$state/display"
  for _ in $(seq 50); do [ -e "/tmp/.X11-unix/X$n" ] && return 0; sleep 0.1; done
  echo "harness: Xvfb did not come up on :$n" >&2
  return 1
}

stop_all() {
  "$wineserver" -k >/dev/null 2>&1
  if [ -f "$state/wineserver.pid" ]; then
    kill "$(cat "$state/wineserver.pid")" 2>/dev/null
    rm -f "$state/wineserver.pid"
  fi
  if [ -f "$state/xvfb.pid" ]; then
    kill "$(cat "$state/xvfb.pid")" 2>/dev/null
    rm -f "$state/xvfb.pid" "$state/display"
  fi
}

case "${1:-}" in
  prefix)
    start_x || exit 1
    trap stop_all EXIT
    make_prefix
    ;;
  run)
    shift
    start_x || exit 1
    trap stop_all EXIT
    make_prefix
    "$wineserver" -p </dev/null >/dev/null 2>&1 &
    echo $! > "$state/wineserver.pid"
    # Wine's own background processes (services, explorer) start with the first
    # program and would inherit its output pipe, so ctest would wait for them to
    # close it. Start them here, detached, before anything is timed.
    "$wine" cmd /c exit </dev/null >/dev/null 2>&1
    "$@"
    ;;
  *)
    echo "usage: $0 prefix | run CMD [ARGS...]" >&2
    exit 2
    ;;
esac
