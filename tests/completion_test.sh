#!/usr/bin/env bash
# completion_test.sh bash|zsh|fish COMMAND SOURCE: what the shell offers after a tab. Skipped (77)
# where there is no such shell.
set -euo pipefail
shell=$1
command=$2
source=$3
command -v "$shell" >/dev/null || exit 77
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
ln -s "$command" "$work/qelrcpt"
PATH=$work:$PATH
cd "$source" # for the names of files
faults=0

# offered LINE: what the shell makes of the line and the tab after it, words and what it shows of them.
case $shell in
bash)
  [ -r /usr/share/bash-completion/bash_completion ] || exit 77
  offered() {
    bash -c '
      . /usr/share/bash-completion/bash_completion
      . completion/qelrcpt
      COMP_LINE=$1
      COMP_POINT=${#1}
      read -r -a COMP_WORDS <<<"${1/=/ = }"
      [[ $1 == *[\ =] ]] && COMP_WORDS+=("")
      COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
      _qelrcpt qelrcpt
      printf "%s\n" "${COMPREPLY[@]}"' bash "$1"
  }
  ;;
fish)
  offered() {
    XDG_CONFIG_HOME=$work fish --no-config -c 'source completion/qelrcpt.fish; complete -C $argv[1]' \
      "$1"
  }
  ;;
zsh)
  cat >"$work/offered.zsh" <<'END'
zmodload zsh/zpty
zpty shell zsh -f -i
await() { # what the shell writes until it has written the pattern
  local some=
  output=
  for ((i = 0; i < 1200; i++)); do
    while zpty -r -t shell some; do output+=$some; done
    [[ $output == $~1 ]] && return
    sleep 0.05
  done
}
zpty -w shell "PS1=; COLUMNS=200; LISTMAX=10000; fpath=($PWD/completion \$fpath)
autoload -Uz compinit; compinit -u -D; tell() { print -n '<''end>' }; zle -N tell; bindkey '^E' tell
setopt auto_list no_list_beep; print '<''ready>'"
await '*<ready>*'
zpty -w -n shell "$1"$'\t\x05'
await '*<end>*'
print -r -- "$output"
END
  offered() { zsh -f "$work/offered.zsh" "$1"; }
  ;;
esac

# expect LINE WORD...: all of the words are offered, those with a '!' in front are not.
expect() {
  local line=$1 word told
  shift
  told=$(offered "$line")
  for word in "$@"; do
    if grep -qE -- "(^|[^a-z_-])${word#!}($|[^a-z_-])" <<<"$told"; then
      [[ $word != !* ]] || { faults=1 && echo "'$line': ${word#!} is offered"; }
    else
      [[ $word == !* ]] || { faults=1 && echo "'$line': $word is not offered: $told"; }
    fi
  done
}

mapfile -t options < <("$command" --list-options | sed -n 's/^\(--[a-z-]*\)|.*/\1/p')
[ ${#options[@]} -ge 15 ] || { faults=1 && echo "the command lists too few options"; }
expect "qelrcpt --" "${options[@]}"
expect "qelrcpt --form m" moneris
expect "qelrcpt --output=" text json
expect "qelrcpt --block re" reference '!refund_policy'
expect "qelrcpt --form moneris-ecomm --block " refund_policy '!emv'
expect "qelrcpt --form=html --timezone America/Toron" America/Toronto
expect "qelrcpt -o READ" README.md
expect "qelrcpt --page READ" README.md
exit $faults
