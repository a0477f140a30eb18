#!/usr/bin/env bash
# Drives the bash, zsh and fish completions of velmora-cli without a terminal and checks what they offer for a few
# command lines, against a stored scan of our own. Usage: check-completions.sh COMPLETIONS_DIR VELMORA_CLI
set -euo pipefail
completions=$1
cli=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/bin" "$work/home/.local/share/Velmora/Velmora Desktop 6"
ln -s "$cli" "$work/bin/velmora-cli"
export PATH=$work/bin:$PATH HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_DATA_HOME=$work/home/.local/share
cat >"$XDG_DATA_HOME/Velmora/Velmora Desktop 6/vldscan.vld6" <<'JSON'
{"apps": [{"displayName": "Some App", "name": "Some App.app", "localPath": "/Applications/Some App.app"},
          {"displayName": "Sonar", "name": "Sonar.app", "localPath": "/Applications/Sonar.app"}]}
JSON

# What each shell offers for a command line (the last word is completed), one candidate a line, unquoted.
offer_bash() {
    bash -c 'source "$1"; read -ra COMP_WORDS <<<"$2"; [[ $2 == *" " ]] && COMP_WORDS+=("");
             COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _velmora_cli;
             for c in "${COMPREPLY[@]}"; do eval "printf \"%s\n\" $c"; done' _ "$completions/velmora-cli.bash" "$1"
}
offer_zsh() {
    zsh -f -c 'compadd() { while [[ $1 == -* && $1 != -- ]]; do shift; done; [[ $1 == -- ]] && shift; print -l -- "$@"; }
               _describe() { local -a items; items=(${(P)${@[-1]}}); print -l -- ${items%%:*}; }
               _files() { print -- "<files>"; }
               words=(${(z)1}); [[ $1 == *" " ]] && words+=(""); CURRENT=${#words};
               source "$2"' _ "$1" "$completions/_velmora-cli" | awk -v prefix="${1##* }" 'index($0, prefix) == 1'
}
offer_fish() { fish -N -c 'source $argv[1]; complete -C $argv[2]' "$completions/velmora-cli.fish" "$1" | cut -f1; }

status=0
# command line | a candidate that must be offered | one that must not
while IFS='|' read -r line wanted unwanted; do
    for shell in bash zsh fish; do
        offered=$(offer_$shell "$line")
        if ! grep -qxF -- "$wanted" <<<"$offered" || { [ -n "$unwanted" ] && grep -qxF -- "$unwanted" <<<"$offered"; }; then
            echo "$shell: '$line' offers [$(tr '\n' ' ' <<<"$offered")], wanted '$wanted'${unwanted:+ and not '$unwanted'}"
            status=1
        fi
    done
done <<'TABLE'
velmora-cli def|defaults|
velmora-cli --json up|update-all|defaults
velmora-cli defaults |write|
velmora-cli defaults read showM|showMAS|serviceHost
velmora-cli defaults write showMAS |-bool|showMAS
velmora-cli update So|Some App|
velmora-cli --verbose ignore Son|Sonar|Some App
velmora-cli update-all --|--yes|
velmora-cli account |logout|
TABLE
[ $status -eq 0 ] && echo "bash, zsh and fish complete velmora-cli as expected"
exit $status
