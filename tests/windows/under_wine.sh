#!/usr/bin/env bash
# Runs a test program under Wine: tests/windows/under_wine.sh PROGRAM.EXE. What Wine lacks for a test is listed in
# wine_lacks.txt, "SUITE.TEST REASON": such a test is left out, said so, and fails when it would pass by now.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
wine=$here/../../tools/wine.sh
program=$1

# The names of the tests that stand both in the list and in the program.
all=$("$wine" "$program" --gtest_list_tests | tr -d '\r' | sed -nE 's/ +#.*//; /^[^ ].*\.$/{s/ *$//;h;d}; /^  /{s/^ *//;G;s/(.*)\n(.*)/\2\1/p}')
[ -n "$all" ] || { echo "$program has no tests" >&2; exit 1; }
lacking=()
while read -r name reason; do
    case $name in '' | '#'*) continue ;; esac
    grep -qxF -- "$name" <<<"$all" || continue
    echo "Left out under Wine: $name: $reason"
    lacking+=("$name")
done <"$here/wine_lacks.txt"

listed=$(IFS=:; echo "${lacking[*]-}")
"$wine" "$program" --gtest_color=no --gtest_brief=1 --gtest_filter="-$listed"
for name in ${lacking[@]+"${lacking[@]}"}; do
    if "$wine" "$program" --gtest_color=no --gtest_brief=1 --gtest_filter="$name" >/dev/null 2>&1; then
        echo "$name passes under this Wine: take it out of wine_lacks.txt" >&2
        exit 1
    fi
done
