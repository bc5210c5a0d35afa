#!/usr/bin/env bash
# Builds the terminal program and what has no window, each target's sources joined, and runs the tests that need neither a
# screen nor a server at work. check_root.sh runs this where nothing is installed yet.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
# shellcheck source=tools/packages.sh
source tools/packages.sh
# shellcheck source=tools/build.sh
source tools/build.sh

programs=(platform_nt_tests platform_base_tests platform_files_tests platform_registry_tests platform_shell_tests
    platform_linux_accounts_tests platform_linux_samba_tests share_tests descriptor_tests security_api_tests
    object_security_test owner_candidates_test history_test permora_undo_test secure_delete_test permora_saved_test
    permora_restore_test permora_tree_source_test permora_survey_test permora_changes_test permora_report_test
    permora_terminal_test)

EnsurePackages "${buildPackages[@]}" "${volumePackages[@]}" "${serverPackages[@]}"
Configure dev "${joined[@]}"
BuildPreset dev permora-cli "${programs[@]}"
# shellcheck disable=SC2016 # the inner shell's own
printf '%s\n' "${programs[@]}" | xargs -P "$(nproc)" -I '{}' sh -c '
    build/dev/bin/{} --gtest_brief=1 >build/dev/{}.log 2>&1 </dev/null && grep -E "^.  (PASSED|SKIPPED) " build/dev/{}.log ||
        { cat build/dev/{}.log; exit 1; }'
