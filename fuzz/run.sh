#!/usr/bin/env bash
# run.sh TARGET SECONDS: runs a fuzz target from its samples and from what earlier runs found, which
# is kept beside it. A finding is left in the same place.
# run.sh TARGET merge FOLDER: puts into the folder what of that covers all that the whole covers.
set -euo pipefail
target=$1
seconds=$2
here=$(dirname "$(realpath "$0")")
name=$(basename "$target")
name=${name#fuzz_}
samples=$name
case $name in
*_receipt | *_receipts) samples=receipts ;; # the same records for every form
esac
found="$(dirname "$target")/found/$name"
mkdir -p "$found"

export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:malloc_context_size=8
export UBSAN_OPTIONS=print_stacktrace=1
export TZ=UTC
if [ "$seconds" = merge ]; then
  exec "$target" -merge=1 -timeout=60 -rss_limit_mb=2048 -max_len=8192 "$3" "$found"
fi
# Weighing inputs by their entropy costs a third of the time here, with thousands of branches each.
exec "$target" -max_total_time="$seconds" -timeout=60 -rss_limit_mb=2048 -max_len=8192 \
  -entropic=0 -dict="$here/record.dict" -artifact_prefix="$found-" -print_final_stats=1 \
  "$found" "$here/corpus/$samples"
