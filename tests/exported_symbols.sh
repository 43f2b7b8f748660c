#!/usr/bin/env bash
# exported_symbols.sh LIBRARY LIST: fails unless the library exports exactly the symbols of the list.
set -euo pipefail
export LC_ALL=C
exported() {
  nm -D --defined-only --format=posix "$1" | awk '$2 != "A" { sub(/@.*/, "", $1); print $1 }' | sort
}
if ! diff <(sort "$2") <(exported "$1"); then
  echo "$1 does not export (>) what $2 lists (<)"
  exit 1
fi
