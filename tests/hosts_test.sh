#!/usr/bin/env bash
# hosts_test.sh COMMAND PYTHON-PACKAGES SOURCE: the commands for GNU parallel as docs/batch.md has them,
# over this machine and two that a stand-in for ssh makes of folders. Blocks are smaller, so that there
# are several.
set -euo pipefail
command=$1
packages=$2
source=$3
command -v parallel >/dev/null || exit 77
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/bin" "$work/home" "$work/here/archive" "$work/hosts"
ln -s "$command" "$work/bin/qelrcpt"
export PATH=$work/bin:$PATH HOME=$work/home PYTHONPATH=$packages PARALLEL_HOME=$work/home/.parallel
export PARALLEL_SSH=$work/bin/stand-in HOSTS=$work/hosts
mkdir -p "$PARALLEL_HOME"
touch "$PARALLEL_HOME/will-cite" # which would be asked for on the terminal
unset PARALLEL

# stand-in HOST COMMAND...: in the folder of the host, which then has a log. A login sets SHELL, without
# which GNU parallel runs nothing there and says nothing.
cat >"$work/bin/stand-in" <<'END'
#!/bin/sh
while [ "${1#-}" != "$1" ]; do shift; done
host=$1
shift
[ "$1" != -- ] || shift
mkdir -p "$HOSTS/$host"
cd "$HOSTS/$host"
echo "$@" >>"$HOSTS/$host.log"
SHELL=/bin/sh exec sh -c "$*"
END
chmod +x "$work/bin/stand-in"

python3 - "$source/examples/records" >"$work/here/archive.jsonl" <<'END'
import json, pathlib, sys
records = [json.loads(path.read_text())["record"] for path in sorted(pathlib.Path(sys.argv[1]).glob("*.json"))]
for at in range(300):
    print(json.dumps({**records[at % len(records)], "ttid": str(at), "timestamp": "1773502867"}))
END
cd "$work/here"
split -l 40 --additional-suffix=.jsonl archive.jsonl archive/
grep '^8/archive' "$source/docs/batch.md" | sed 's/^8/2/' >hosts
echo 2/: >>hosts
[ "$(wc -l <hosts)" -eq 3 ]

# run PATTERN: the line of the document that has it.
run() {
  local line
  line=$(grep -F -- "$1" "$source/docs/batch.md" | grep -- --sshloginfile)
  [ "$(wc -l <<<"$line")" -eq 1 ] || { echo "docs/batch.md: $1"; exit 1; }
  rm -f receipts.jsonl "$HOSTS"/*.log
  bash -euo pipefail -c "${line/--block 8M/--block 8k}" 2>"$work/log" || { cat "$work/log"; echo "failed: $line"; exit 1; }
  [ "$(cat "$HOSTS"/*.example.log | wc -l)" -gt 2 ] || { echo "the hosts did nothing: $line"; exit 1; }
}

# same WHAT FILE FILE: or the first of the lines that differ.
same() {
  diff "$2" "$3" >"$work/differs" || { echo "other receipts $1:"; cut -c -200 "$work/differs" | head -6; cat "$work/log"; exit 1; }
}

numberless() { sed -E 's/^\{"line": [0-9]+, //' "$@"; }

qelrcpt --batch --jobs 1 --quiet archive.jsonl >alone.jsonl
[ "$(wc -l <alone.jsonl)" -eq 300 ]
run '--keep-order qelrcpt'
same "than alone" <(numberless receipts.jsonl) <(numberless alone.jsonl)

if command -v rsync >/dev/null; then
  run "--trc {}.receipts"
  same "of files" <(numberless archive/*.receipts) <(numberless alone.jsonl)
  [ -z "$(find "$HOSTS" -name '*.jsonl*')" ] || { echo "files are left on the hosts"; exit 1; }
fi

[ -n "$packages" ] || exit 0
for host in "$HOSTS"/*.example . ; do cp "$source/examples/receipt_lines.py" "$host"; done
python3 receipt_lines.py <archive.jsonl >alone.jsonl
run 'python3 receipt_lines.py'
same "from Python" receipts.jsonl alone.jsonl
! grep -q '"error"' receipts.jsonl
