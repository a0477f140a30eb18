# bash completion for velmora-cli: commands and options from its own help, setting names from "defaults read",
# app names from the stored scan.

_velmora_cli_commands() { velmora-cli --help 2>/dev/null | sed -n '/^Commands:/,/^$/s/^  \([a-z][a-z-]*\).*/\1/p'; }

_velmora_cli_options() { velmora-cli "$1" --help 2>/dev/null | grep -oE -- '--[a-z][a-z-]*' | sort -u; }

_velmora_cli_settings() { velmora-cli defaults read 2>/dev/null | sed -n 's/^ *\([A-Za-z0-9_]*\) = .*/\1/p'; }

# The display names of the stored scan, one a line.
_velmora_cli_apps() {
    velmora-cli list --json 2>/dev/null | grep -oE '"displayName": *"([^"\\]|\\.)*"' |
        sed -E 's/^"displayName": *"//; s/"$//; s/\\(.)/\1/g'
}

_velmora_cli() {
    local cur=${COMP_WORDS[COMP_CWORD]} command="" position=0 i word
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        case $word in
        --verbose | --json) ;;
        *) if [ -z "$command" ]; then command=$word; else position=$((position + 1)); fi ;;
        esac
    done
    local previous=${COMP_WORDS[COMP_CWORD - 1]}
    local IFS=$'\n'
    local candidates
    if [ -z "$command" ]; then
        if [[ $cur == -* ]]; then
            candidates=$(printf '%s\n' --json --verbose --version --help)
        else
            candidates=$(_velmora_cli_commands)
        fi
    elif [[ $cur == -* ]]; then
        candidates=$(_velmora_cli_options "$command")
    else
        case $command in
        defaults)
            case $position in
            0) candidates=$(printf '%s\n' read write delete) ;;
            1) candidates=$(_velmora_cli_settings) ;;
            2) [ "${COMP_WORDS[COMP_CWORD - 2]}" = write ] && candidates=$(printf '%s\n' -bool -int -float -string -array) ;;
            esac
            ;;
        version) [ "$position" -eq 0 ] && candidates=$(printf '%s\n' clean compare outdated) ;;
        account) [ "$position" -eq 0 ] && candidates=$(printf '%s\n' login signup status profile logout forgot-password) ;;
        watchlist)
            if [ "$position" -eq 0 ]; then
                candidates=$(printf '%s\n' add remove)
            else
                candidates=$(_velmora_cli_apps)
            fi
            ;;
        update | ignore | set-current | unset-current | dont-check) candidates=$(_velmora_cli_apps) ;;
        report) [ "$previous" != --text ] && [ "$position" -eq 0 ] && candidates=$(_velmora_cli_apps) ;;
        inspect)
            compopt -o filenames 2>/dev/null
            COMPREPLY=($(compgen -d -- "$cur"))
            return
            ;;
        esac
    fi
    # Names hold blanks: each candidate is one word, quoted as the shell needs.
    COMPREPLY=()
    local candidate
    for candidate in $(compgen -W "$candidates" -- "$cur"); do
        COMPREPLY+=("$(printf '%q' "$candidate")")
    done
}
complete -F _velmora_cli velmora-cli
