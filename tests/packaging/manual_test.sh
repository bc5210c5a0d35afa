#!/usr/bin/env bash
# The manual pages have everything that the help of the program has, and are clean for those who judge pages.
#   manual_test.sh BUILD_FOLDER
set -euo pipefail
made=$1/packaging/manual/made
programs=$1/bin
cli=$programs/permora-cli
for tool in man mandoc; do
    command -v "$tool" >/dev/null || { echo "[  SKIPPED ] $tool is not there"; exit; }
done
problems=0
Say() {
    echo "$1"
    problems=1
}

for page in "$made"/*/man1/*.1; do
    faults=$(mandoc -T lint -W style "$page" || true; man --warnings --local-file "$page" 2>&1 >/dev/null)
    [ -z "$faults" ] || Say "$faults"
done

# HasAll PROGRAM PAGE COMMAND...: whether the page has the subcommands, arguments and options in the help of the command.
checked=0
HasAll() {
    local program=$1 page=$made/$1/man1/$2.1 text word words
    shift 2
    text=$(MANWIDTH=200 LC_ALL=C.UTF-8 man --local-file "$page" 2>/dev/null)
    words=$("$programs/$program" "$@" --help | sed -nE 's/^  (-[^ ]+|[A-Za-z]+)( .*)?$/\1/p' | tr ',' '\n')
    for word in $words; do
        grep -qE -- "(^|[ ,[])$word([], .]|$)" <<<"$text" || Say "$page has no $word"
        checked=$((checked + 1))
    done
}

HasAll permora permora
HasAll permora-cli permora-cli
for command in $("$cli" --help | sed -nE '/^Subcommands:/,/^$/s/^  ([a-z]+) .*/\1/p'); do
    HasAll permora-cli "permora-cli-$command" "$command"
    for inner in $("$cli" "$command" --help | sed -nE '/^Subcommands:/,/^$/s/^  ([a-z]+) .*/\1/p'); do
        HasAll permora-cli "permora-cli-$command" "$command" "$inner"
    done
done
[ "$checked" -ge 100 ] || Say "Only $checked words of the help were found."
exit "$problems"
