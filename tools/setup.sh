#!/usr/bin/env bash
# Installs what the build, the tests and the demo need from Debian's packages.
# Only missing packages are installed, and the package lists are refreshed at
# most once, so a second run costs a dpkg query and nothing else.
set -euo pipefail

PACKAGES=(
  cmake ninja-build make
  g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix binutils-mingw-w64-x86-64 binutils-mingw-w64-i686
  libz-mingw-w64-dev libstb-dev googletest
  wine wine64
  xvfb xauth libgl1 libgl1-mesa-dri libglx-mesa0
  imagemagick fonts-dejavu-core python3 zip unzip
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO="sudo"
echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
