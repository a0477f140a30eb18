#!/usr/bin/env bash
# Checks that a man page and its program's --help name the same commands and the same long options: every one of
# the help's is in the page, and the page names no other. Usage: check-man-page.sh PAGE PROGRAM
set -euo pipefail
page=$1
program=$2

# Commands: the first word of each line of the help's "Commands:" list, or of each alternative of a "usage:" line.
help_commands() {
    local help
    help=$("$program" --help 2>&1 || true)
    if grep -qi '^commands:' <<<"$help"; then
        sed -n '/^[Cc]ommands:/,/^$/p' <<<"$help" | sed -n 's/^ \+\([a-z][a-z-]*\).*/\1/p'
    else
        grep -i 'usage:' <<<"$help" | sed 's/.*[Uu]sage: *[^ ]* //' | tr '|' '\n' | awk 'NF && $1 !~ /^\[/ { print $1 }'
    fi
}

# Long options of the program and, where it lists commands, of each command's help. A program with only a usage
# line has verbs that act on their arguments, so nothing more is run.
help_options() {
    {
        "$program" --help 2>&1 || true
        if "$program" --help 2>&1 | grep -qi '^commands:'; then
            for command in $(help_commands); do "$program" "$command" --help 2>&1 || true; done
        fi
    } | grep -oE -- '--[a-z][a-z0-9-]*' || true
}

# The page's commands: the first word of each entry (.TP) of its COMMANDS section, outside the nested lists.
page_commands() {
    awk '/^\.SH / { in_commands = ($2 == "COMMANDS") ; next }
         in_commands && /^\.RS/ { nested++ } in_commands && /^\.RE/ { nested-- }
         in_commands && !nested && tagged { gsub(/"/, ""); print $2; tagged = 0; next }
         in_commands && !nested && /^\.TP/ { tagged = 1 }' "$page"
}

page_options() { grep -oE -- '\\-\\-[a-z][a-z0-9-]*' "$page" | sed 's/\\//g' || true; }

compare() {
    local what=$1 from_help from_page status=0
    from_help=$(sort -u <<<"$2")
    from_page=$(sort -u <<<"$3")
    missing=$(comm -23 <(echo "$from_help") <(echo "$from_page") | sed '/^$/d')
    extra=$(comm -13 <(echo "$from_help") <(echo "$from_page") | sed '/^$/d')
    [ -z "$missing" ] || { echo "$page lacks the $what of --help: $missing" | tr '\n' ' '; echo; status=1; }
    [ -z "$extra" ] || { echo "$page names $what that --help does not: $extra" | tr '\n' ' '; echo; status=1; }
    return $status
}

status=0
compare commands "$(help_commands)" "$(page_commands)" || status=1
compare options "$(help_options)" "$(page_options)" || status=1
[ $status -eq 0 ] && echo "$page agrees with $program --help"
exit $status
