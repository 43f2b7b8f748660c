#!/usr/bin/env bash
# install_test.sh shared|static BUILD SOURCE: installs what BUILD built into a prefix of its own (for
# static, static libraries that are built for it) and builds and runs the examples against that, once
# through pkg-config and once through find_package.
set -euo pipefail
kind=$1
build=$2
source=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

quietly() {
  "$@" >"$work/log" 2>&1 || { cat "$work/log"; echo "failed: $*"; exit 1; }
}

if [ "$kind" = static ]; then
  quietly cmake -S "$source" -B "$build/static" -G Ninja -DBUILD_SHARED_LIBS=OFF \
    -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0 -DQELRCPT_TOOLS=OFF -DQELRCPT_TESTS=OFF
  build=$build/static
  quietly cmake --build "$build"
fi
quietly cmake --install "$build" --prefix "$prefix"
pc=$(dirname "$(find "$prefix" -name qelrcpt.pc)")
lib=$(dirname "$pc")

# expect NAME LINE...: the file NAME in the work folder has each of the lines.
expect() {
  local name=$1 line
  shift
  for line in "$@"; do
    grep -qFx -- "$line" "$work/$name" || {
      cat "$work/$name"
      echo "$name: there is no line \"$line\""
      exit 1
    }
  done
}

# run_examples HOW FOLDER: runs the examples that were built into the folder.
run_examples() {
  local how=$1 folder=$2 name
  for name in receipt_c receipt_cpp own_layout_c own_layout_cpp; do
    "$folder/$name" >"$work/$name.$how" || { echo "$name ($how) failed"; exit 1; }
  done
  expect "receipt_c.$how" \
    "$(printf '%-34s%s' 'SOUS-TOTAL:' '30.00$')" "$(printf '%-34s%s' 'TOTAL:' '$33.90')" \
    "$(printf '%-23s%s' 'TIME:' '14/03/26 11:41:07')" '             MERCHANT COPY'
  expect "receipt_cpp.$how" "$(printf '%-26s%s' 'TOTAL:' '33.90$')" '  "totalamount": "$33.90"'
  expect "own_layout_c.$how" "$(printf '%-26s%s' '1 TROUT' '$24.00')"
  expect "own_layout_cpp.$how" "$(printf '%-26s%s' '14/03/26 09:41:07' '£13.50')" \
    '                        DECLINED'
}

export PKG_CONFIG_PATH=$pc
mkdir "$work/pkg-config"
# shellcheck disable=SC2162 # which writes a backslash in front of a blank
read -a flags <<<"$(pkg-config --cflags qelrcpt)"
[ "$kind" = static ] && also=(--static) || also=()
# shellcheck disable=SC2162
read -a libraries <<<"$(pkg-config "${also[@]}" --libs qelrcpt)"
for name in receipt own_layout; do
  quietly cc "$prefix/share/doc/libqelrcpt-dev/examples/$name.c" -o "$work/pkg-config/${name}_c" \
    "${flags[@]}" "${libraries[@]}" "-Wl,-rpath,$lib"
  quietly c++ -std=c++17 "$prefix/share/doc/libqelrcpt-dev/examples/$name.cpp" \
    -o "$work/pkg-config/${name}_cpp" "${flags[@]}" "${libraries[@]}" "-Wl,-rpath,$lib"
done
run_examples pkg-config "$work/pkg-config"

quietly cmake -S "$prefix/share/doc/libqelrcpt-dev/examples" -B "$work/cmake" -G Ninja \
  -DCMAKE_PREFIX_PATH="$prefix"
quietly cmake --build "$work/cmake"
run_examples find_package "$work/cmake"

if [ "$kind" = static ]; then
  if ldd "$work/cmake/receipt_c" | grep -q libqel; then
    echo "the examples are linked with shared libraries"
    exit 1
  fi
  # A project in C alone.
  mkdir "$work/c"
  cat >"$work/c/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.22)
project(c LANGUAGES C)
find_package(qelrcpt 1 REQUIRED)
add_executable(receipt "$source/examples/receipt.c")
target_link_libraries(receipt PRIVATE qelrcpt::qelrcpt)
END
  quietly cmake -S "$work/c" -B "$work/c/build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix"
  quietly cmake --build "$work/c/build"
  "$work/c/build/receipt" >/dev/null
  exit 0
fi

# An empty element is the folder that a program is started in.
for file in "$build"/lib/*.so "$build"/tools/qelrcpt "$build"/bindings/python/qelrcpt/*.so \
  "$prefix"/lib/*.so "$prefix"/bin/qelrcpt; do
  if readelf -d "$file" 2>/dev/null | grep -E 'R(UN)?PATH.*(\[:|::|:\])'; then
    echo "$file: libraries are looked for wherever it is started"
    exit 1
  fi
done

# The Python package too, where it is built.
packages=$prefix/lib/python3/dist-packages
if [ -e "$packages" ]; then
  PYTHONPATH=$packages /usr/bin/env python3 -B "$source/examples/receipt.py" >"$work/python"
  expect python "$(printf '%-26s%s' 'GESAMT:' '€18,40')" 'Total: €18,40' \
    "$(printf '%-15s%s' 'ZEIT:' '14/03/26 16:41:07')"
fi

# The command finds its libraries beside it, and the manual and the completion belong to it.
"$prefix/bin/qelrcpt" --width 20 --block money "$source/examples/records/void.json" >"$work/command"
grep -q '^TOTAL: ' "$work/command"
for file in share/qelrcpt/{receipt.css,qelrcpt-api.json} share/man/man{1/qelrcpt.1,3/libqelrcpt.3}; do
  [ -s "$prefix/$file" ] || { echo "$file is not installed"; exit 1; }
done
