#!/usr/bin/env bash
# Runs the demo host (build/<arch>/zyndemo.exe) under Wine.
#   With $DISPLAY: on that display until its window is closed (or Escape).
#   Without:       under the harness's own Xvfb for about 180 frames, writing
#                  build/demo.png, which must then show the scene: many colours
#                  and a good share of pixels away from the background.
set -uo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
dir=$(cd "${1:-$here/build/x86_64}" && pwd)
exe=$dir/zyndemo.exe
if [ ! -f "$exe" ]; then
  echo "run-demo: $exe is missing; build it with make build-x86_64" >&2
  exit 1
fi
cd "$dir" || exit 1

if [ -n "${DISPLAY:-}" ]; then
  echo "run-demo: zyndemo on $DISPLAY; close its window or press Escape to end it"
  exec bash "$here/tools/harness.sh" run "$here/tools/wine-run" "$exe"
fi

png=$here/build/demo.png
rm -f "$png"
winpng="Z:$(echo "$png" | sed 's|/|\\|g')"
timeout 180 bash "$here/tools/harness.sh" run "$here/tools/wine-run" "$exe" --frames 180 --screenshot "$winpng" \
  | tr -d '\r'
status=${PIPESTATUS[0]}
if [ "$status" -ne 0 ]; then
  echo "run-demo: zyndemo failed with exit status $status" >&2
  exit 1
fi
if [ ! -s "$png" ]; then
  echo "run-demo: zyndemo wrote no picture at $png" >&2
  exit 1
fi

# The background is the colour of the bottom-left corner, away from the text
# line at the top; the scene is whatever differs from it by more than 10%.
colours=$(/usr/bin/identify -format '%k' "$png")
height=$(/usr/bin/identify -format '%h' "$png")
bg=$(/usr/bin/convert "$png" -format "%[pixel:p{2,$((height - 3))}]" info:)
share=$(/usr/bin/convert "$png" -fuzz 10% -fill black -opaque "$bg" -fill white +opaque black \
  -colorspace Gray -format '%[fx:mean]' info:)
echo "run-demo: $png: $colours colours, background $bg, $(awk -v s="$share" 'BEGIN { printf "%.1f", s * 100 }')% scene"
if [ "$colours" -lt 64 ] || awk -v s="$share" 'BEGIN { exit !(s < 0.02) }'; then
  echo "run-demo: $png looks blank: expected at least 64 colours and 2% of the pixels away from the background" >&2
  exit 1
fi
echo "run-demo: the demo's last frame is $png"
