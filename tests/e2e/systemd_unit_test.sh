#!/bin/bash
# The systemd unit of the installed agent: what it forbids, and that the agent and its alert work
# under it.
# shellcheck source=tests/support/assertions.sh
source "$(dirname "${BASH_SOURCE[0]}")/../support/assertions.sh"
# shellcheck source=scripts/common.sh
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/common.sh"

id=com.brelto.vendril
unit=${VENDRIL_INSTALLED:-}/share/systemd/user/$id.service
patience=20 # seconds that any step may take

# What a review with all that systemd can do would find left, of 100; see docs/decisions.md.
most_exposure=64

make_empty_home() {
  make_scratch_directory
  export HOME=$scratch XDG_RUNTIME_DIR=$scratch
}

SystemdFindsNothingWrongWithTheUnit() {
  make_empty_home
  assert_silent_success 'systemd-analyze verify' \
    systemd-analyze --user verify --man=no --generators=no "$unit"
}

TheExposureHasNotGrown() {
  make_empty_home
  local output
  output=$(systemd-analyze --user security --no-pager --offline=true \
    --threshold="$most_exposure" "$unit") || fail "more than $most_exposure: $(tail -n 1 <<<"$output")"
  printf '%s\n' "${output##*$'\n'}"
}

# Runs the function $1 of this script in a session with a user manager.
in_user_session() {
  local status=0
  timeout 100 tests/support/user-session "$VENDRIL_BUILD_DIR" \
    /run/session/source/tests/e2e/systemd_unit_test.sh "$1" || status=$?
  ((status != 77)) || exit 77
  ((status == 0)) || fail "in the session, $1 ended with $status"
}

TheServiceReportsALinkFromTheBus() {
  in_user_session report_a_link
}

TheServiceShowsItsAlert() {
  in_user_session show_the_alert
}

# Adds the lines of standard input to the unit's section Service, for the session alone.
change_unit() {
  local directory=$HOME/.config/systemd/user/$id.service.d
  mkdir -p "$directory"
  {
    echo '[Service]'
    # There is no journal to read it from.
    echo "StandardError=file:$HOME/record"
    cat
  } >"$directory/test.conf"
  systemctl --user daemon-reload
}

show_what_was_written() {
  cat "$HOME"/{manager.log,portal.log,record} 2>/dev/null || true
}

record_says() {
  grep --quiet --fixed-strings "$1" "$HOME/record"
}

wait_for_record() {
  wait_until "$patience" record_says "$1" || fail "no '$1' in: $(show_what_was_written)"
}

open_on_bus() {
  busctl --user call "$id" "/${id//.//}" org.freedesktop.Application Open 'asa{sv}' 1 "$1" 0 ||
    fail "the bus could not start the service: $(show_what_was_written)"
}

status_of() {
  sed -n "s/^$2:[[:space:]]*//p" "/proc/$1/status"
}

# The process $1 is under the filter and in no namespace but those of the manager, which is the
# parent of both.
assert_confined() {
  assert_equal NoNewPrivs 1 "$(status_of "$1" NoNewPrivs)"
  assert_equal 'filters system calls' 2 "$(status_of "$1" Seccomp)"
  assert_equal Umask 0077 "$(status_of "$1" Umask)"
  local namespace
  for namespace in user mnt net ipc uts pid; do
    assert_equal "namespace $namespace" "$(readlink "/proc/self/ns/$namespace")" \
      "$(readlink "/proc/$1/ns/$namespace")"
  done
}

report_a_link() {
  change_unit </dev/null
  "$HOME/vendril-portal" >"$HOME/portal.log" 2>&1 &
  wait_until "$patience" grep --quiet http "$HOME/portal.log" || fail 'the portal did not start'
  open_on_bus "vendril://join?portalURI=$(grep --only-matching 'http:.*' \
    "$HOME/portal.log")/meeting?session_id=4711"
  wait_for_record 'has been successfully sent with HTTP status code: 200'
  assert_contains 'the request' 'session_id = 4711' "$(<"$HOME/portal.log")"
  assert_confined "$(systemctl --user show --property MainPID --value "$id")"
  [[ -e $HOME/.config/autostart/$id.desktop ]] || fail 'it has not become a login item'
  assert_no_complaint
}

# Libraries complain on standard error about calls that they were refused and cannot do without.
assert_no_complaint() {
  ! grep --extended-regexp 'CRITICAL|WARNING|not permitted' "$HOME/record" ||
    fail "something was refused: $(show_what_was_written)"
}

helper_is_shown() {
  [[ $(xdotool getactivewindow getwindowname 2>/dev/null) == Vendril ]]
}

alert_is_confirmed() {
  xdotool key Return
  record_says 'User confirmed about network connection issues'
}

start_display() {
  Xvfb -displayfd 1 -screen 0 1024x768x24 >"$HOME/display" 2>/dev/null &
  wait_until "$patience" test -s "$HOME/display" || fail 'there is no display'
  DISPLAY=:$(<"$HOME/display")
  export DISPLAY
  openbox --startup "touch $HOME/managed" &
  wait_until "$patience" test -e "$HOME/managed" || fail 'there is no window manager'
}

show_the_alert() {
  start_display
  change_unit <<CHANGES
ExecStart=
ExecStart=/run/session/prefix/bin/alert_agent dont-add-to-login-items
Environment=DISPLAY=$DISPLAY
CHANGES
  systemctl --user start "$id"
  wait_for_record Started
  systemctl --user kill --kill-whom=main --signal=USR1 "$id"
  wait_until "$patience" helper_is_shown || fail "no alert: $(show_what_was_written)"
  assert_confined "$(xdotool getactivewindow getwindowpid)"
  wait_until "$patience" alert_is_confirmed || fail "no answer: $(show_what_was_written)"
  assert_no_complaint
}

run_test "$@"
