# Sourced by the tests that are shell scripts.
# shellcheck shell=bash
set -euo pipefail

# Ends the test as failed, with a reason.
fail() {
  printf 'FAILED: %s\n' "$*" >&2
  exit 1
}

# Ends the test as skipped, with a reason.
skip() {
  printf 'SKIPPED: %s\n' "$*"
  exit 77
}

assert_equal() {
  local what=$1 expected=$2 actual=$3
  [[ $expected == "$actual" ]] || fail "$what: expected '$expected', got '$actual'"
}

assert_contains() {
  local what=$1 part=$2 whole=$3
  [[ $whole == *"$part"* ]] || fail "$what: '$part' is not in '$whole'"
}

# The command in $2... succeeds and prints nothing. $1 names what is asserted.
assert_silent_success() {
  local what=$1 output status=0
  shift
  output=$("$@" 2>&1) || status=$?
  ((status == 0)) || fail "$what: '$*' ended with $status: $output"
  [[ -z $output ]] || fail "$what: '$*' printed: $output"
}

# A directory of the test's own, removed when it ends.
make_scratch_directory() {
  scratch=$(mktemp --directory)
  trap 'rm -rf "$scratch"' EXIT
}

# Runs the test that is named by the script's argument.
run_test() {
  declare -F "${1-}" >/dev/null || fail "there is no test '${1-}'"
  "$1"
}
