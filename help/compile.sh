#!/usr/bin/env bash
# Usage: help/compile.sh COMPILER PROJECT
# Compiles the help in the current folder, to the same bytes from the same pages. The compiler lets the time of day and
# memory that it has not filled get into the file. That memory is the same where addresses and environment are; but not in the
# index in its binary form, where it depends on the libraries of the machine. So the project leaves that form out.
set -euo pipefail
compiler=$1
project=$2
out=ZELHELP.chm

# There are containers that refuse fixed addresses.
fixed=(setarch --addr-no-randomize)
"${fixed[@]}" true 2>/dev/null || fixed=()
env --ignore-environment "${fixed[@]}" "$compiler" --no-html-scan "$project"

Erase() { printf '\0\0\0\0' | dd of=$out bs=1 seek="$1" conv=notrunc status=none; }
# In the file's header, and in its object #SYSTEM, where the compiler's version follows after four bytes.
Erase 16
version=$(LC_ALL=C grep --byte-offset --only-matching --text 'HHA Version' $out | head -n 1)
Erase $((${version%%:*} - 8))
