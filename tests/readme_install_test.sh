#!/usr/bin/env bash
# readme_install_test.sh SOURCE WORK [BUILD]: follows README's section "Into your code" to the letter,
# with a home of its own, and runs the program that it prints. With BUILD it installs what is built
# there, instead of building anew, and leaves out the project that takes the sources in.
set -euo pipefail
source=$1
work=$2
build=${3:-}
mkdir -p "$work"
work=$(cd "$work" && pwd)
rm -rf "$work/app" "$work/cmake"
mkdir -p "$work/app" "$work/cmake"
HOME=$(mktemp -d /tmp/readme_install.XXXXXX) # as most homes, its name has no blank
trap 'rm -rf "$HOME"' EXIT
export HOME CMAKE_BUILD_TYPE=Debug
unset PKG_CONFIG_PATH CMAKE_PREFIX_PATH LD_LIBRARY_PATH

# block KIND NUMBER: the code of that kind below the heading.
block() {
  awk -v kind="$1" -v number="$2" '
    /^## / { is_here = $0 == "## Into your code" }
    is_here && $0 == "```" kind { is_in = ++count == number; next }
    /^```$/ { is_in = 0 }
    is_in' "$source/README.md"
}

run() { # FOLDER TEXT: the lines as they stand, in the folder
  [ -n "$2" ] || { echo "README.md lacks a block"; exit 1; }
  (cd "$1" && bash -euc "$2") >"$work/log" 2>&1 || { cat "$work/log"; echo "failed: $2"; exit 1; }
}

if [ -n "$build" ]; then
  run "$work" "cmake --install '$build' --prefix ~/.local"
else
  rm -rf "$work/source"
  mkdir "$work/source"
  (cd "$source" && tar -cf - --exclude=./build --exclude=./.git --exclude=node_modules .) |
    tar -xf - -C "$work/source" # so that nothing of an old build helps
  run "$work/source" "$(block sh 1)"
fi

expect_receipt() { # COMMAND
  "$1" >"$work/printed"
  diff "$work/printed" <(printf '%-34s%s\n' 'SUBTOTAL:' '$12.34' 'TOTAL:' '$12.34')
}
block c 1 >"$work/app/app.c"
run "$work/app" "$(block sh 2)"
expect_receipt "$work/app/app"

cp "$work/app/app.c" "$work/cmake"
{
  echo 'cmake_minimum_required(VERSION 3.22)'
  echo 'project(app LANGUAGES C)'
  block cmake 1 | sed '/^target_link/i add_executable(app app.c)'
} >"$work/cmake/CMakeLists.txt"
run "$work/cmake" "$(block sh 3)"
run "$work/cmake" 'cmake --build build'
expect_receipt "$work/cmake/build/app"

# Each exported function has its page.
cat "$source"/tests/exports/*.txt | while read -r name; do
  [ -s "$HOME/.local/share/man/man3/$name.3" ] || { echo "$name has no manual page"; exit 1; }
done
grep -q 'released by Qel_hash_dict_destroy' "$HOME/.local/share/man/man3/Qel_rcpt_generate_xml.3"
if command -v groff >/dev/null; then
  warnings=$(for page in "$HOME"/.local/share/man/man3/*.3; do groff -K utf8 -man -ww -z -Tutf8 "$page" 2>&1; done)
  [ -z "$warnings" ] || { echo "$warnings"; exit 1; }
fi
[ -z "$build" ] || exit 0

# As a part of a project in C alone.
mkdir -p "$work/part"
cp "$work/app/app.c" "$work/part"
cat >"$work/part/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.22)
project(part LANGUAGES C)
include(FetchContent)
FetchContent_Declare(qelrcpt SOURCE_DIR $work/source)
FetchContent_MakeAvailable(qelrcpt)
add_executable(app app.c)
target_link_libraries(app PRIVATE qelrcpt::qelrcpt)
END
run "$work/part" 'cmake -S . -B build -G Ninja && cmake --build build'
expect_receipt "$work/part/build/app"
[ ! -e "$work/part/build/_deps/qelrcpt-build/tools" ] || { echo "the command is built too"; exit 1; }
