#!/usr/bin/env bash
# Runs a test in the emulated machine: run_in_machine.sh KERNEL_FOLDER PERMORA_CLI SCRIPT [PROGRAM...]. The script gets all
# programs, without what only debuggers need. 77: it cannot run here.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
kernel=$1 script=$3
programs=("$2" "${@:4}")
[ "$(id -u)" = 0 ] || { echo "It needs root."; exit 77; }
for tool in qemu-system-x86_64 busybox cpio depmod mount.cifs smbd; do
    command -v "$tool" >/dev/null || { echo "$tool is missing."; exit 77; }
done
# The slow machine reads less of it so.
mkdir -p "$kernel"
folder=$(mktemp -d "$(readlink -f "$kernel")/program.XXXXXX")
trap 'rm -rf "$folder"' EXIT
for program in "${programs[@]}"; do strip --output-file "$folder/$(basename "$program")" "$program"; done
"$here/../support/kernel_machine.sh" "$kernel" "$script" "${programs[@]/#*\//$folder/}"
