#!/bin/bash
# What bash, zsh and fish complete, in the shells themselves, with what the packages have installed.
set -euo pipefail

fail() {
  echo "completions: $*" >&2
  exit 1
}

options_of() {
  kruteinctl "$1" --help | grep -oE '^  (-[a-z],)?--[a-z-]+' | grep -oE -- '--[a-z-]+'
}

in_fish() {
  fish -c "complete -C 'kruteinctl $1'" | cut -f 1
}

# What zsh lists below the line when completions are asked for behind these words.
in_zsh() {
  zsh -f -c '
    zmodload zsh/zpty
    zpty shell zsh -f -i
    zpty -w shell "PS1=; stty columns 200; autoload -Uz compinit; compinit -u -D; bindkey \"^I\" list-choices; echo rea\dy"
    zpty -r shell seen "*ready*"
    zpty -w -n shell "kruteinctl $1"$'"'\t'"'
    sleep 1
    while zpty -r -t shell seen; do print -rn -- $seen; done
  ' zsh "$1"
}

in_bash() {
  bash --norc -c '
    . /usr/share/bash-completion/completions/kruteinctl
    COMP_WORDS=(kruteinctl $1 "")
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    [[ $1 == *- ]] && unset "COMP_WORDS[$COMP_CWORD]" && COMP_CWORD=$((COMP_CWORD - 1))
    _kruteinctl
    printf "%s\n" "${COMPREPLY[@]}"' bash "$1"
}

commands="backup restore size list files verify show devices info"
for shell in bash zsh fish; do
  offered=$(in_$shell "")
  for command in $commands; do
    grep -qw "$command" <<<"$offered" || fail "$shell does not offer $command: $offered"
    options=$(in_$shell "$command --")
    for option in $(options_of "$command"); do
      grep -qE -- "(^|[^a-z-])$option([^a-z-]|\$)" <<<"$options" || fail "$shell does not offer $command $option: $options"
    done
  done
  echo "completions of $shell: ok"
done
