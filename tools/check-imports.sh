#!/usr/bin/env bash
# Fails if a DLL imports anything but the system's own DLLs: the graphics
# support layer is linked in, never taken from a utility DLL.
#   tools/check-imports.sh OBJDUMP DLL...
set -uo pipefail
objdump=$1; shift
allowed='^(kernel32|user32|gdi32|ddraw|msvcrt|advapi32|ntdll|ole32|oleaut32|shell32|winmm|version|api-ms-win-crt-[a-z0-9-]+)\.dll$'
status=0
for dll in "$@"; do
  while read -r name; do
    lower=$(echo "$name" | tr 'A-Z' 'a-z')
    if ! [[ $lower =~ $allowed ]]; then
      echo "$dll imports $name, which is not a system DLL"
      status=1
    fi
  done < <("$objdump" -p "$dll" | awk '/DLL Name:/ {print $3}')
done
[ $status -eq 0 ] && echo "imports of $* are system DLLs only"
exit $status
