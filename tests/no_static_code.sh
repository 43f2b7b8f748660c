#!/usr/bin/env bash
# no_static_code.sh LIBRARY: fails when loading the library runs code of its own. One entry in
# .init_array is the compiler's.
set -euo pipefail
size=$(readelf -SW "$1" | awk '$2 == ".init_array" { print $6 } $3 == ".init_array" { print $7 }')
[ "$size" = 000008 ] && exit 0
echo "$1 has static constructors: .init_array is 0x$size bytes long"
exit 1
