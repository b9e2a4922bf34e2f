#!/usr/bin/env bash
# Makes zynkernel/zynkernel/zynfont.dds, the console font resource, from
# DejaVu Sans Mono (fonts-dejavu-core) with a small host program on
# stb_truetype (libstb-dev). The DDS is committed; run this only to remake it.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
font=${1:-/usr/share/fonts/truetype/dejavu/DejaVuSansMono.ttf}
mkdir -p "$here/build/host"
gcc -O2 -std=c99 -Wall -I/usr/include/stb "$here/tools/zynfont_gen.c" -lm -o "$here/build/host/zynfont_gen"
"$here/build/host/zynfont_gen" "$font" "$here/zynkernel/zynkernel/zynfont.dds"
echo "make-font: wrote zynkernel/zynkernel/zynfont.dds"
