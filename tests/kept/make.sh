#!/usr/bin/env bash
# Makes the files of this version, which later versions are tested with. As root, since other owners are in them.
#   make.sh VERSION [BUILD_FOLDER]
# Files that are as those of the version before need not be kept.
set -euo pipefail
folder=$(dirname "$(readlink -f "$0")")
build=$(readlink -f "${2:-$folder/../../build/dev}")
export PERMORA_KEEP=$folder/$1
mkdir -p "$PERMORA_KEEP"
"$build/bin/settings_test" --gtest_filter='KeptSettings.*'
"$build/bin/history_test" --gtest_filter='KeptHistories.*'
"$build/bin/permora_undo_test" --gtest_filter='KeptUndos.*'
"$build/bin/permora_restore_test" --gtest_filter='*ListsThatEarlierVersions*'
# Nobody needs to know on which machine.
for history in "$PERMORA_KEEP"/*.db; do
    python3 -c 'import sqlite3, sys
with sqlite3.connect(sys.argv[1]) as history:
    history.execute("UPDATE changes SET user = ?", (r"SERVER\anna",))' "$history"
done
chmod 644 "$PERMORA_KEEP"/*
ls -l "$PERMORA_KEEP"
