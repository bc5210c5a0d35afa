#!/usr/bin/env bash
# Usage: tools/check_windows_program.sh PROGRAM.EXE
# A program for Windows is one file: it imports from the system's own libraries alone. It may be placed anywhere in
# memory, has no executable data, bears no time of its build, says UTF-8 in its manifest, and is below 8 MB. A program
# with windows also follows each display's resolution and has the newer controls.
set -euo pipefail
program=$1
mostBytes=$((8 << 20))
system=(ADVAPI32 AUTHZ COMCTL32 DWMAPI GDI32 KERNEL32 NETAPI32 OLE32 OLEACC SHELL32 SHLWAPI USER32 UXTHEME msvcrt ntdll)

problems=0
Fail() {
    echo "$program: $*" >&2
    problems=1
}

headers=$(x86_64-w64-mingw32-objdump --private-headers "$program")
mapfile -t imported < <(sed -nE 's/^\s*DLL Name: (.*)\.dll$/\1/Ip' <<<"$headers")
[ "${#imported[@]}" -gt 0 ] || Fail "has no table of imports"
for library in "${imported[@]}"; do
    printf '%s\n' "${system[@]}" | grep -qixF -- "$library" || Fail "imports from $library.dll, which is not the system's"
done
for property in HIGH_ENTROPY_VA DYNAMIC_BASE NX_COMPAT; do
    grep -qw "$property" <<<"$headers" || Fail "lacks $property"
done
grep -q '^Time/Date\s*Thu Jan  1 00:00:00 1970' <<<"$headers" || Fail "bears the time of its build"
manifest=('>UTF-8</activeCodePage>' '>true</longPathAware>' '"asInvoker"')
if grep -q '^Subsystem.*(Windows GUI)' <<<"$headers"; then
    manifest+=('>PerMonitorV2, PerMonitor</dpiAwareness>' '>true/pm</dpiAware>' 'Microsoft.Windows.Common-Controls')
fi
for wanted in "${manifest[@]}"; do
    grep -qaF -- "$wanted" "$program" || Fail "has no $wanted in its manifest"
done
bytes=$(stat --format=%s "$program")
[ "$bytes" -lt "$mostBytes" ] || Fail "has $bytes bytes; $mostBytes are too many"
[ "$problems" = 0 ] && echo "$program: $bytes bytes, imports from ${imported[*]}"
exit "$problems"
