#!/bin/bash
# The scripts of this repository.
# shellcheck source=tests/support/assertions.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/assertions.sh"

shell_scripts() {
  git ls-files --cached --others --exclude-standard | while IFS= read -r file; do
    if [[ $file == *.sh ]] || head --lines 1 "$file" 2>/dev/null | grep --quiet '^#!/bin/bash'; then
      printf '%s\n' "$file"
    fi
  done
}

ShellcheckFindsNothing() {
  local scripts
  mapfile -t scripts < <(shell_scripts)
  ((${#scripts[@]} >= 8)) || fail "only ${#scripts[@]} scripts were found"
  assert_silent_success shellcheck shellcheck --external-sources "${scripts[@]}"
}

InstallDepsIsSilentWhenEverythingIsThere() {
  assert_silent_success 'a second run' scripts/install-deps
}

run_test "$@"
