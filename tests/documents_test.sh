#!/usr/bin/env bash
# documents_test.sh SOURCE: the documents name every record key and block that there is, and their
# links lead somewhere.
set -euo pipefail
source=$1
faults=0

fault() {
  echo "$*"
  faults=1
}

keys=$(sed -n 's/^"\\x1E\([a-z_0-9]*\)="$/\1/p' "$source/fuzz/record.dict")
[ "$(wc -l <<<"$keys")" -ge 80 ] || fault "too few record keys: $keys"
for key in $keys; do
  grep -qF "\`$key\`" "$source/README.md" || fault "README.md does not have $key"
done

# Every id, class and member that a receipt of the samples has.
names=$(grep -rhoE '(id|class)="[^"]*"' "$source/tests/receipts/html" |
  sed -E 's/^[a-z]*="(.*)"$/\1/' | tr ' ' '\n' |
  sed -E '/^(custom_.*|.*_(group|label))$/d' | sort -u)
names+=$'\n'$(grep -rhoE '^ +"[a-z_]+":' "$source/tests/receipts/json" | tr -d ' ":' | sort -u)
[ "$(wc -l <<<"$names")" -ge 100 ] || fault "too few names in the receipts: $names"
for name in $names; do
  grep -qE "\`([a-z_ ]* )?$name( [a-z_ ]*)?\`" "$source/docs/blocks.md" ||
    fault "docs/blocks.md does not have $name"
done

for document in "$source"/*.md "$source"/docs/*.md "$source"/examples/*.md "$source"/bindings/*/*.md; do
  for link in $(grep -oE '\]\([^)#:]+(#[^)]*)?\)' "$document" | sed -E 's/^\]\(([^)#]*).*/\1/'); do
    [ -e "$(dirname "$document")/$link" ] || fault "$document: $link does not exist"
  done
done

if command -v groff >/dev/null; then
  for page in qelrcpt.1 qelrcpt-record.5 libqelrcpt.3; do
    warnings=$(groff -man -ww -z -Tutf8 "$source/man/$page" 2>&1) || true
    [ -z "$warnings" ] || fault "man/$page: $warnings"
  done
fi
exit $faults
