#!/bin/bash
# The demo, with the release build that is there.
# shellcheck source=tests/support/assertions.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/assertions.sh"
# shellcheck source=scripts/common.sh
source scripts/common.sh

demo_says() {
  grep --quiet "$1" "$scratch/demo.log"
}

nothing_of_the_demo_runs() {
  ! pgrep --full "$root/build/demo/prefix/bin/" >"$scratch/left"
}

AServingDemoReportsLinksAndEndsWholeWhenItIsInterrupted() {
  local demo portal status=0
  make_scratch_directory
  # With job control the demo can be interrupted, as from a terminal.
  set -m
  scripts/demo --serve >"$scratch/demo.log" 2>&1 &
  demo=$!
  wait_until 300 demo_says 'Ctrl-C' || fail "the demo does not serve: $(<"$scratch/demo.log")"
  portal=$(sed -n 's/^== The practice portal is at //p' "$scratch/demo.log")
  assert_contains 'the page' 'practice portal' "$(curl --silent --noproxy '*' "$portal/")"
  build/demo/inside gio open "vendril://join?portalURI=$portal/report?session_id=9009"
  wait_until 20 demo_says '^  session_id = 9009$' || fail "no report: $(<"$scratch/demo.log")"
  wait_until 20 demo_says 'sent with HTTP status code: 200' ||
    fail "no outcome: $(<"$scratch/demo.log")"
  kill -INT -- "-$demo"
  wait "$demo" || status=$?
  assert_equal 'exit status' 0 "$status"
  wait_until 20 nothing_of_the_demo_runs || fail "still running: $(<"$scratch/left")"
  [[ ! -e build/demo/inside ]] || fail 'the way into the desktop is still there'
}

AnUnknownWordIsRefused() {
  local status=0
  scripts/demo --unknown 2>/dev/null || status=$?
  assert_equal 'exit status' 2 "$status"
}

run_test "$@"
