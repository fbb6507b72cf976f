#!/bin/bash
# manual.sh PROGRAM PAGE COMPLETION: each command and option stands in the manual page, and bash
# completes them.
set -eu
page=$(sed 's/\\-/-/g' "$2")
fail() {
  echo "$*"
  exit 1
}
source "$3"
complete() {  # words: what bash would offer for the last of them
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
  _pelion
  printf '%s\n' "${COMPREPLY[@]}"
}
compopt() { :; }  # only within a completion
mapfile -t commands < <("$1" --help | sed -n '/^subcommands:/I,/^$/s/^  \([a-z]*\) .*/\1/p')
[[ ${#commands[@]} -ge 4 ]] || fail "no commands in the help"
for command in "${commands[@]}"; do
  grep -q "^\.B $command$" <<<"$page" || fail "$command is not in the manual"
  [[ $(complete "$1" "${command:0:2}") == "$command" ]] || fail "$command is not completed"
  for option in $("$1" "$command" --help | sed -nE 's/^ +(-h, *)?(--[a-z-]+).*/\2/p'); do
    grep -qe "$option" <<<"$page" || fail "$option of $command is not in the manual"
    complete "$1" "$command" "${option:0:4}" | grep -qxe "$option" || fail "$option is not completed"
  done
done
