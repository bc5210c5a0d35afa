#!/usr/bin/env bash
# Usage: tools/check_hardening.sh PROGRAM...
# Reads finished programs for what cmake/Hardening.cmake asks for: they may be placed anywhere in memory, what the loader has
# filled in is not writable, neither stack nor data are executable, stacks and calls of the C library are checked, and
# on x86 returns and indirect jumps are.
set -euo pipefail

[ $# -gt 0 ] || { echo "Which programs?" >&2; exit 2; }
problems=0
Check() {
    local program=$1 text=$2
    shift 2
    "$@" >/dev/null || { echo "$program: $text" >&2; problems=1; }
}
# shellcheck disable=SC2317 # called by Check
HasNot() { ! grep "$@"; }
# Of functions whose address can be taken, each begins with the mark of a place that may be jumped to.
# shellcheck disable=SC2317
HasMarkedTargets() { [ "$(LC_ALL=C grep --only-matching --text --perl-regexp '\xf3\x0f\x1e\xfa' "$1" | wc -l)" -ge 100 ]; }

for program; do
    report=$(readelf --wide --file-header --program-headers --dynamic --notes --dyn-syms "$program")
    Check "$program" "is not movable (PIE)" grep -E '^ *Type: +DYN ' <<<"$report"
    Check "$program" "has no read-only relocations (RELRO)" grep -E '^ *GNU_RELRO ' <<<"$report"
    Check "$program" "is not bound at its start (BIND_NOW)" grep -E 'FLAGS.* (BIND_)?NOW' <<<"$report"
    Check "$program" "has an executable stack" grep -E '^ *GNU_STACK .* RW +0x' <<<"$report"
    Check "$program" "has memory that is writable and executable" HasNot -E '^ *LOAD .* RWE ' <<<"$report"
    Check "$program" "has no protected stack" grep -w __stack_chk_fail <<<"$report"
    Check "$program" "has no checked calls of the C library" grep -E ' __[a-z]+_chk@' <<<"$report"
    if grep -qE 'Machine: +Advanced Micro Devices X86-64' <<<"$report"; then
        Check "$program" "is not marked for shadow stacks" grep -E 'x86 feature:.*SHSTK' <<<"$report"
        Check "$program" "has unmarked targets of indirect jumps" HasMarkedTargets "$program"
    fi
    [ "$problems" != 0 ] || echo "$program is hardened."
done
exit "$problems"
