#!/usr/bin/env bash
# completion.sh TQXML FOLDER MANUAL: the completions in FOLDER offer, and the manual page describes,
# the commands and options that the command's help shows.
set -euo pipefail
tqxml=$1
folder=$2
manual=$(sed 's/\\-/-/g' "$3")

# shellcheck source=tools/tqxml/tqxml.bash
. "$folder/tqxml.bash"

# WORD...: what bash and zsh offer for the last word, one a line, sorted.
# shellcheck disable=SC2317  # called by name
in_bash() {
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
    _tqxml
    printf '%s\n' "${COMPREPLY[@]}" | sort
}
# shellcheck disable=SC2016,SC2317
in_zsh() {
    zsh -fc 'compadd() { print -l -- ${@[2,-1]} }; _files() { print FILES }
        source $1/_tqxml; shift; words=("$@"); CURRENT=$#; _tqxml' \
        zsh "$folder" "$@" | sort
}

failed=0
# expect EXPECTED WORD...
expect() {
    local shell offered expected
    expected=$(tr ' ' '\n' <<<"$1" | sed '/^$/d' | sort)
    shift
    for shell in bash zsh; do
        if [[ $shell == zsh && ${CI:-} != true ]] && ! command -v zsh >/dev/null; then
            continue
        fi
        offered=$("in_$shell" "$@" || true)
        if [[ $offered != "$expected" ]]; then
            printf '%s offers for "%s":\n%s\ninstead of:\n%s\n' "$shell" "$*" "$offered" "$expected"
            failed=1
        fi
    done
}

commands=$("$tqxml" --help | sed -nE 's/^usage: tqxml ([a-z-]+).*/\1/p')
expect "$commands --help --version" tqxml ''
for command in $commands; do
    help=$("$tqxml" "$command" --help)
    options=$(sed -nE 's/^  (-h, )?(--[a-z-]+).*/\2/p' <<<"$help")
    expect "$options" tqxml "$command" x -
    if ! grep -qx ".SS $command" <<<"$manual"; then
        printf 'the manual page has no section "%s"\n' "$command"
        failed=1
    fi
    for option in $options; do
        if ! grep -qw -e "$option" <<<"$manual"; then
            printf 'the manual page does not describe "%s"\n' "$option"
            failed=1
        fi
    done
done
for line in 'list jobs --database' init 'convert --to xml' 'import-icc a.db'; do
    read -ra words <<<"$line"
    if [[ $(in_bash tqxml "${words[@]}" "$folder/_tq") != "$folder/_tqxml" ]]; then
        printf 'bash offers no file for "%s"\n' "$line"
        failed=1
    fi
    if command -v zsh >/dev/null && ! in_zsh tqxml "${words[@]}" '' | grep -qx FILES; then
        printf 'zsh offers no files for "%s"\n' "$line"
        failed=1
    fi
done
types=$("$tqxml" list --help | sed -nE '1s/.* list ([a-z|]+).*/\1/p' | tr '|' ' ')
expect "$types --help" tqxml list ''
expect 'job book owner output profile --help' tqxml show ''
expect 'xml table' tqxml list jobs --format ''
expect 'xml packet' tqxml convert --to ''
expect '' tqxml list jobs --key ''
exit $failed
