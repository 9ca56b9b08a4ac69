#!/usr/bin/env bash
# completion.sh TQXML FOLDER: the completions in FOLDER offer, in the real shells, what can be typed,
# and the manual page there describes it.
set -euo pipefail
tqxml=$1
folder=$2

# shellcheck source=/dev/null
. "$folder/tqxml.bash"

# WORD...: what a shell offers for the last word, one a line, sorted.
# shellcheck disable=SC2317  # called by name
in_bash() {
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
    _tqxml
    printf '%s\n' "${COMPREPLY[@]}" | sort
}
# shellcheck disable=SC2317
in_fish() {
    fish -Nc "source $folder/tqxml.fish; complete -C '$*'" | cut -f 1 | sort
}
# Types the words, and a tab, in a zsh that prints what is offered for what follows the last comma.
# shellcheck disable=SC2016,SC2317
in_zsh() {
    local typed=${*: -1} before
    before=${typed%"${typed##*,}"}
    zsh -fc '
        zmodload zsh/zpty
        zpty shell zsh -fi
        zpty -w shell "PROMPT= fpath=($1 \$fpath); autoload -Uz compinit; compinit -D -u"
        zpty -w shell "zstyle \":completion:*\" menu no; bindkey \"^I\" complete-word"
        zpty -w shell "compadd() {
            [[ \${(M)@:#-[OAD]} ]] && { builtin compadd \"\$@\"; return }
            local -a offered; builtin compadd -O offered \"\$@\"
            print -r -- \"
OFFERED:\"\${^offered}
            builtin compadd \"\$@\" }; print READY"
        zpty -r shell text "*READY*READY*"
        shift
        zpty -n -w shell "$*"$'"'\t'"'
        # Removes the line, with keys that do nothing before the shell reads them itself.
        zpty -n -w shell $'"'\x01\x0b'"'"print DO\"\"NE"$'"'\n'"'
        zpty -r shell text "*DONE*"
        print -r -- $text' zsh "$folder" "$@" | tr -d '\r' | sed 's/OFFERED:/\n&/g' |
        sed -n "s/^OFFERED:\([^ ]*\).*/$before\1/p" | sort -u
}

shells=()
for shell in bash zsh fish; do
    if [[ ${CI:-} == true ]] || command -v "$shell" >/dev/null; then
        shells+=("$shell")
    else
        echo "$shell is not installed, and left out"
    fi
done

failed=0
# expect EXPECTED WORD...
expect() {
    local shell offered expected
    expected=$(tr ' ' '\n' <<<"$1" | sed '/^$/d' | sort)
    shift
    for shell in "${shells[@]}"; do
        offered=$("in_$shell" "$@" || true)
        if [[ $offered != "$expected" ]]; then
            printf '%s offers for "%s":\n%s\ninstead of:\n%s\n' "$shell" "$*" "$offered" "$expected"
            failed=1
        fi
    done
}

# Long options that the help of a verb shows.
options_of() { "$tqxml" help "$@" | sed -nE 's/^  (-[a-z], )?(--[a-z-]+).*/\2/p'; }

verbs=$("$tqxml" help | sed -nE 's/^  ([a-z-]+) .*/\1/p')
expect "$verbs" tqxml ''
expect "$(options_of) --database" tqxml --
for verb in $verbs; do
    options=$(options_of "$verb")
    expect "$options" tqxml "$verb" --
    section=$(sed -n "/^\.SS ${verb/-/\\\\-}\$/,/^\.S[SH]/p" "$folder/tqxml.1" | sed 's/\\-/-/g')
    for option in $options; do
        if ! grep -q -e "^[^ ]*.*$option" <<<"$section$(options_of)"; then
            printf 'the manual page does not describe "%s %s"\n' "$verb" "$option"
            failed=1
        fi
    done
done
kinds='outputs publications books jobs owners profiles'
expect "$kinds" tqxml list ''
expect "$kinds" tqxml --database shop.db list ''
expect "$kinds" tqxml -q list -f csv ''
expect 'output publication book job owner profile' tqxml show ''
expect 'table xml json jsonl csv tsv' tqxml list jobs --format ''
expect 'json jsonl' tqxml list jobs -f j
expect 'waiting in-progress done' tqxml list --state ''
expect 'key name city country founded' tqxml list owners --columns ''
expect 'device_class' tqxml -q list profiles --sort name --sort de
expect 'title technology trim_box' tqxml list --columns t
expect 'key,name' tqxml list jobs --columns key,na
expect 'xml packet' tqxml convert --to ''
expect "$verbs" tqxml help ''
cd "$folder"
for line in 'list jobs --database' init 'convert --to xml' 'import-icc a.db'; do
    read -ra words <<<"$line"
    expect tqxml.fish tqxml "${words[@]}" tqxml.f
done
exit $failed
