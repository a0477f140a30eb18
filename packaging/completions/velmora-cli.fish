# fish completion for velmora-cli: commands and options from its own help, setting names from "defaults read",
# app names from the stored scan.

function __velmora_cli_words --description 'The words typed after velmora-cli, without the global options'
    commandline -opc | string match -v -r -- '^--(verbose|json)$' | tail -n +2
end

function __velmora_cli_needs_command
    test (count (__velmora_cli_words)) -eq 0
end

# True when the command is $argv[1] and exactly $argv[2] words follow it.
function __velmora_cli_at
    set -l words (__velmora_cli_words)
    test (count $words) -ge 1; and test "$words[1]" = $argv[1]; and test (math (count $words) - 1) -eq $argv[2]
end

function __velmora_cli_command_is
    set -l words (__velmora_cli_words)
    test (count $words) -ge 1; and contains -- $words[1] $argv
end

function __velmora_cli_commands
    velmora-cli --help 2>/dev/null | sed -n '/^Commands:/,/^$/s/^  \([a-z][a-z-]*\) *\(.*\)/\1\t\2/p'
end

function __velmora_cli_options
    set -l words (__velmora_cli_words)
    velmora-cli $words[1] --help 2>/dev/null | string match -a -r -- '--[a-z][a-z-]*' | sort -u
end

function __velmora_cli_settings
    velmora-cli defaults read 2>/dev/null | sed -n 's/^ *\([A-Za-z0-9_]*\) = .*/\1/p'
end

function __velmora_cli_apps
    velmora-cli list --json 2>/dev/null | grep -oE '"displayName": *"([^"\\\\]|\\\\.)*"' |
        sed -E 's/^"displayName": *"//; s/"$//; s/\\\\(.)/\1/g'
end

complete -c velmora-cli -f
complete -c velmora-cli -n __velmora_cli_needs_command -a '(__velmora_cli_commands)'
complete -c velmora-cli -n __velmora_cli_needs_command -l json -d 'print JSON on stdout'
complete -c velmora-cli -n __velmora_cli_needs_command -l verbose -d 'copy log lines to stderr'
complete -c velmora-cli -n __velmora_cli_needs_command -l version -d 'print the version'
complete -c velmora-cli -n __velmora_cli_needs_command -l help -d 'print the help'
complete -c velmora-cli -n 'not __velmora_cli_needs_command; and string match -q -- "-*" (commandline -ct)' -a '(__velmora_cli_options)'
complete -c velmora-cli -n '__velmora_cli_at defaults 0' -a 'read write delete'
complete -c velmora-cli -n '__velmora_cli_at defaults 1' -a '(__velmora_cli_settings)'
complete -c velmora-cli -n '__velmora_cli_at defaults 2; and __velmora_cli_command_is defaults; and contains -- write (__velmora_cli_words)' -a '-bool -int -float -string -array'
complete -c velmora-cli -n '__velmora_cli_at version 0' -a 'clean compare outdated'
complete -c velmora-cli -n '__velmora_cli_at account 0' -a 'login signup status profile logout forgot-password'
complete -c velmora-cli -n '__velmora_cli_at watchlist 0' -a 'add remove'
complete -c velmora-cli -n '__velmora_cli_at watchlist 1' -a '(__velmora_cli_apps)'
complete -c velmora-cli -n '__velmora_cli_command_is update ignore set-current unset-current dont-check' -a '(__velmora_cli_apps)'
complete -c velmora-cli -n '__velmora_cli_at report 0' -a '(__velmora_cli_apps)'
complete -c velmora-cli -n '__velmora_cli_command_is inspect' -F
