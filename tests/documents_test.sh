#!/usr/bin/env bash
# documents_test.sh COMMAND SOURCE: the manual, the completion and the documents name every option,
# record key and block that there is, and their links lead somewhere.
set -euo pipefail
command=$1
source=$2
faults=0

fault() {
  echo "$*"
  faults=1
}

options=$("$command" --help | grep -oE '(^|[ ,])--?[a-z][a-z-]*' | tr -d ' ,' | sort -u)
[ "$(wc -l <<<"$options")" -ge 15 ] || fault "the help names too few options: $options"
manual=$(sed 's/\\-/-/g' "$source/man/qelrcpt.1")
for option in $options; do
  grep -qE -- "^\.B.*$option( |,|$)" <<<"$manual" || fault "man/qelrcpt.1 does not have $option"
done

completed() { # WORD...: what the shell offers for the last of the words
  COMP_WORDS=(qelrcpt "$@")
  COMP_CWORD=$#
  COMP_LINE="qelrcpt $*"
  COMP_POINT=${#COMP_LINE}
  COMPREPLY=()
  _qelrcpt "$command"
  echo "${COMPREPLY[@]}"
}
if [ -r /usr/share/bash-completion/bash_completion ]; then
  set +eu
  # shellcheck source=/dev/null
  . /usr/share/bash-completion/bash_completion
  # shellcheck source=../completion/qelrcpt
  . "$source/completion/qelrcpt"
  offered=" $(completed --) "
  for option in $options; do
    [[ $option != --* || $offered == *" $option "* ]] || fault "completion does not have $option"
  done
  [ "$(completed --form moneris --block cust)" = "" ] || fault "completion offers a wrong block"
  [ "$(completed --form moneris-ecomm --block refund)" = refund_policy ] ||
    fault "completion does not offer the blocks of the form"
  set -eu
fi

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

for document in "$source"/*.md "$source"/docs/*.md "$source"/examples/*.md; do
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
