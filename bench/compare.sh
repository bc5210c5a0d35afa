#!/usr/bin/env bash
# Measures everything and prints the one table of ratios; see README.md.
#   sudo bench/compare.sh [--quick] [--output FILE] [NAME...]
# --quick takes small samples and few runs (some three minutes). --output writes the table to a file too. With names,
# "copy" for example, only those benchmarks run. Ends with 1 when a benchmark could not do its work; rows that miss
# their goals are named but are no failure, since the speed of the machine is unknown.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh
# shellcheck source=tools/build.sh
source tools/build.sh

names=()
quick=() # the argument that every benchmark takes
output=
while [ $# -gt 0 ]; do
    case $1 in
        --quick) quick=(--quick) ;;
        --output) output=${2:?--output needs a file}; shift ;;
        -*) echo "$0: no such option: $1" >&2; exit 1 ;;
        *) names+=("$1") ;;
    esac
    shift
done
# Benchmarks with few files come first: a disk without a journal makes files slowly after many were deleted.
[ ${#names[@]} -gt 0 ] || names=(startup list turn copy shred share rendering domain_rendering listing propagation tree_apply owner command saved survey history threads)

EnsurePackages "${buildPackages[@]}" "${volumePackages[@]}" "${serverPackages[@]}" "${domainPackages[@]}" >&2
BuildPreset release "${names[@]/%/_bench}" >&2

Load() { cut -d ' ' -f 1-3 /proc/loadavg; }

table=$(mktemp)
runtime=$(mktemp -d)
trap 'rm -rf "$table" "$runtime"' EXIT
export XDG_RUNTIME_DIR=$runtime # the toolkit complains when there is none
# Say LINE... prints at once and adds to the table.
Say() { printf '%s\n' "$@" | tee -a "$table"; }

processor=$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)
Say "$(date --utc '+%F %H:%M') UTC, $(nproc) x ${processor:-$(uname -m)}, Linux $(uname -r), $(
    [ ${#quick[@]} -eq 0 ] && echo "whole run" || echo "quick run"), load before: $(Load)." "" \
    "| what | where | ours | peer | ratio | goal | met |" \
    "|---|---|---|---|---|---|---|"
failed=()
for name in "${names[@]}"; do
    inDomain=()
    [[ $name != domain_* ]] || inDomain=(tests/support/domain.sh run --users 200)
    # The benchmark has already reported the reason on standard error.
    "${inDomain[@]}" "build/release/bin/${name}_bench" "${quick[@]}" | tee -a "$table" || failed+=("$name")
done
Say "" "Load after: $(Load)."

missed=$(awk -F ' *[|] *' '$8 == "no" { print "  " $2 ", " $3 ": " $4 " (" $5 "), ratio " $6 ", goal " $7 }' "$table")
if [ -n "$missed" ]; then
    printf 'Missed their goals:\n%s\n' "$missed" >&2
else
    echo "Every row that was measured met its goal." >&2
fi
[ -z "$output" ] || cp "$table" "$output"
[ ${#failed[@]} -eq 0 ] || { echo "Could not do their work: ${failed[*]}" >&2; exit 1; }
