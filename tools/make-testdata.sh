#!/usr/bin/env bash
# Makes the image and archive files that the image, file and bench programs read.
#   tools/make-testdata.sh DIR          the test corpus in DIR/image, DIR/zip, DIR/search
#   tools/make-testdata.sh DIR bench    the 2048 x 2048 benchmark files in DIR/bench
# Pictures come from ImageMagick (/usr/bin/convert); what it cannot write (DXT3,
# BMP RLE4, 16-bit DDS, top-first Targa, damaged files, zip archives) comes from
# tools/zyntestdata.py. Every picture also gets NAME.rgba: ImageMagick's own decode,
# 8-bit RGBA rows top first, which the tests compare with ours.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
out=${1:?usage: make-testdata.sh DIR [bench]}
convert=/usr/bin/convert
[ -x "$convert" ] || { echo "make-testdata: ImageMagick's $convert is missing (tools/setup.sh installs it)" >&2; exit 1; }

# -auto-orient: ImageMagick writes Targa rows top first while marking them bottom first,
# and its reader only records the origin; turned round here, the decode follows the file.
rgba() { "$convert" "$1" -auto-orient -depth 8 RGBA:"$1.rgba"; }

if [ "${2:-}" = bench ]; then
  mkdir -p "$out/bench"
  cd "$out/bench"
  "$convert" logo: -resize 2048x2048! -alpha set bench.png
  "$convert" bench.png -alpha off -type TrueColor bench.tga
  "$convert" bench.png -alpha off -type TrueColor BMP3:bench.bmp
  "$convert" bench.png -alpha off -quality 90 bench.jpg
  "$convert" bench.png -define dds:compression=none -define dds:mipmaps=0 bench.dds
  rm -f bench.png
  exit 0
fi

mkdir -p "$out/image" "$out/zip" "$out/search"
# console scripts inside a zip archive, lines ending in CR LF
mkdir -p "$out/console"
python3 - "$out/console/scripts.zip" <<'PYEOF'
import sys, zipfile
with zipfile.ZipFile(sys.argv[1], "w", zipfile.ZIP_DEFLATED) as z:
    z.writestr("cfg/zipped.cfg", "Print zipped one\r\nPrint \"zipped two\"\r\n")
PYEOF
cd "$out/image"
# pictures: rose (70 x 46, no alpha), alpha (rose with a gradient as alpha)
"$convert" rose: \( -size 70x46 gradient: \) -alpha off -compose CopyOpacity -composite alpha.png
"$convert" rose: -crop 5x4+20+20 +repage w5.png
"$convert" rose: -crop 6x4+20+20 +repage w6.png
"$convert" rose: -crop 7x4+20+20 +repage w7.png
"$convert" rose: -crop 4x4+20+20 +repage w4.png

# Targa: plain and run-length, 24 and 32 bits, stored bottom row first
"$convert" rose: -type TrueColor -compress None tga24.tga
"$convert" alpha.png -compress None tga32.tga
"$convert" rose: -type TrueColor -compress RLE tga24rle.tga
"$convert" alpha.png -compress RLE tga32rle.tga
"$convert" w5.png -type TrueColor -compress RLE tga24rle_w5.tga

# Windows Bitmap: 4, 8 (plain and RLE), 24, 32 bits, odd widths; 1 and 16 bits are read as no pixels
"$convert" rose: -type TrueColor BMP3:bmp24.bmp
"$convert" w5.png -type TrueColor BMP3:bmp24_w5.bmp
"$convert" w4.png -type TrueColor BMP3:bmp24_w4.bmp
"$convert" alpha.png -define bmp3:alpha=true BMP3:bmp32.bmp
"$convert" rose: -colors 200 -type Palette -compress None BMP3:bmp8.bmp
"$convert" w6.png -colors 8 -type Palette -compress None BMP3:bmp8_w6.bmp
# ImageMagick pads run-length rows to 4 pixels, which a linear decode does not skip: width 64
"$convert" rose: -resize 64x46! -colors 200 -type Palette -compress RLE BMP3:bmp8rle.bmp
"$convert" rose: -colors 16 -type Palette -compress None BMP3:bmp4.bmp
"$convert" w6.png -colors 16 -type Palette -compress None BMP3:bmp4_w6.bmp
"$convert" w7.png -colors 16 -type Palette -compress None BMP3:bmp4_w7.bmp
"$convert" rose: -monochrome BMP3:bmp1.bmp
"$convert" rose: -define bmp:subtype=RGB565 BMP3:bmp16.bmp

# JPEG: colour, grey, progressive, four-channel (Adobe CMYK), two rows high
"$convert" rose: -quality 92 jpg_color.jpg
"$convert" rose: -colorspace Gray -quality 92 jpg_grey.jpg
"$convert" rose: -interlace JPEG -quality 92 jpg_prog.jpg
"$convert" rose: -colorspace CMYK -quality 92 jpg_cmyk.jpg
"$convert" rose: -crop 70x2+0+20 +repage -quality 92 jpg_h2.jpg

# DDS: uncompressed 32 and 24 bits, a mip chain, DXT1 and DXT5
"$convert" alpha.png -resize 64x64! -define dds:compression=none -define dds:mipmaps=0 dds_argb.dds
"$convert" rose: -resize 64x64! -define dds:compression=none -define dds:mipmaps=0 dds_rgb24.dds
"$convert" alpha.png -resize 64x64! -define dds:compression=none -define dds:mipmaps=3 dds_mips.dds
"$convert" rose: -resize 64x64! -define dds:compression=dxt1 dds_dxt1.dds
"$convert" alpha.png -resize 64x64! -define dds:compression=dxt5 -define dds:mipmaps=3 dds_dxt5.dds

python3 "$here/zyntestdata.py" "$out"

for f in *.tga *.bmp *.jpg *.dds; do
  case "$f" in
    bad_*|dds_16_*|bmp4rle*) ;;            # damaged or judged by the formulas, not by a decoder
    dds_dxt2*|dds_dxt4*) ;;                # ImageMagick does not read the premultiplied forms
    *) rgba "$f" ;;
  esac
done
# ImageMagick turns CMYK to RGB only when asked
"$convert" jpg_cmyk.jpg -colorspace sRGB -depth 8 RGBA:jpg_cmyk.jpg.rgba
cp jpg_cmyk.jpg.rgba jpg_cmyk_jfif.jpg.rgba
rm -f alpha.png w4.png w5.png w6.png w7.png
touch "$out/.complete"
