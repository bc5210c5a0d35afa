#!/usr/bin/env bash
# Usage: tools/mutable_globals.sh BUILD_FOLDER
# Compares the variables of static storage in the objects of src with the table "Mutable globals" of
# docs/architecture.md, and shows what stands in one of them only (< objects, > table). What is named as a constant
# counts as one.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

InObjects() {
    find "$1/src" -name '*.o' -not -path '*autogen*' -print0 | xargs -0 nm --demangle |
        sed -nE 's/^[0-9a-f]+ [bBdDuV] //p' |
        grep -vE '^(vtable|typeinfo|guard variable|VTT|non-virtual|DW\.ref|qt_|q_|\.L)|^(std|CLI|nlohmann|toml|Qt[A-Za-z]*|Q[A-Z][A-Za-z]*)::|::staticMetaObject|::qt_' |
        grep -vE '(^|::)(k[A-Z][A-Za-z0-9]*|[A-Z][A-Z0-9_]+)(\[abi:cxx11\])?$' |
        sed -E 's/\(anonymous namespace\):://g; s/^permora:://; s/\([^()]*(\([^()]*\)[^()]*)*\)( const)?//g; s/\[abi:cxx11\]//g' | sort -u
}
InTable() {
    sed -n '/^## Mutable globals/,/^## [^M]/s/^| `\([^`]*\)` |.*/\1/p' docs/architecture.md | sort -u
}

diff <(InObjects "$1") <(InTable) && echo "The table of mutable globals is complete."
