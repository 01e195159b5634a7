# Sourced by the other scripts: strict mode, the repository's root as working directory, and the
# functions that they share.
# shellcheck shell=bash
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

# CMake reads this variable when it configures a build for the first time.
if [[ -z ${CMAKE_CXX_COMPILER_LAUNCHER-} ]] && command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi

# Prints a heading, so that a long log can be found one's way in.
heading() {
  printf '\n== %s\n' "$*"
}

# Configures and builds the preset $1.
build_preset() {
  heading "Building the preset $1"
  cmake --preset "$1" >/dev/null
  cmake --build --preset "$1"
}

# Runs the tests of the preset $1; further arguments go to ctest. Many tests wait for processes that
# they have started, which leaves room for one more than there are processors.
test_preset() {
  local preset=$1
  shift
  heading "Testing the preset $preset"
  ctest --preset "$preset" --parallel "$(($(nproc) + 1))" "$@"
}

# Waits until the command in $2... succeeds, for $1 seconds at most.
wait_until() {
  local deadline=$((SECONDS + $1))
  shift
  until "$@"; do
    if ((SECONDS >= deadline)); then
      return 1
    fi
    sleep 0.05
  done
}

# Installs the release build into the directory $1. The manifest of an installation that somebody
# has made by hand, and removes by it, stays as it was.
install_release() {
  local manifest=build/release/install_manifest.txt before
  build_preset release
  heading "Installing into $1"
  before=$(cat "$manifest" 2>/dev/null || true)
  cmake --install build/release --prefix "$1" >/dev/null
  printf '%s' "$before" >"$manifest"
}

# Makes the directory $1 the home of all that is started from here on, with the desktop's files of
# the prefix $2 in view and nothing of the user's own session.
enter_private_home() {
  export HOME=$1 XDG_CONFIG_HOME=$1/.config XDG_DATA_HOME=$1/.local/share
  export XDG_CACHE_HOME=$1/.cache XDG_STATE_HOME=$1/.local/state XDG_RUNTIME_DIR=$1/run
  export XDG_DATA_DIRS=$2/share:/usr/local/share:/usr/share XDG_CONFIG_DIRS=/etc/xdg
  unset DBUS_SESSION_BUS_ADDRESS DBUS_STARTER_ADDRESS DISPLAY WAYLAND_DISPLAY XDG_CURRENT_DESKTOP
  unset http_proxy https_proxy all_proxy HTTP_PROXY HTTPS_PROXY ALL_PROXY
  mkdir -p "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME" "$XDG_STATE_HOME"
  mkdir -p "$XDG_RUNTIME_DIR"
  chmod 0700 "$XDG_RUNTIME_DIR"
}

# Publishes what the conferencing client would about itself; the client and its log directory are
# below the directory $1.
publish_configuration() {
  local client=$1/orvanta/bin/orvanta
  mkdir -p "$(dirname "$client")" "$XDG_CONFIG_HOME/brelto/Preferences"
  printf '#!/bin/sh\n' >"$client"
  chmod +x "$client"
  cat >"$XDG_CONFIG_HOME/brelto/Preferences/group.com.brelto.orvanta.plist" <<CONFIGURATION
<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN"
 "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
  <key>PublishedConfiguration</key>
  <dict>
    <key>AppName</key><string>Brelto Orvanta 3.22.1</string>
    <key>AppVersion</key><string>3.22.1.70.2</string>
    <key>SIPDomain</key><string>sip.example.com</string>
    <key>VideoCapable</key><true/>
    <key>MeetmeCapable</key><true/>
    <key>SIPReady</key><true/>
    <key>isMeetMeOnly</key><false/>
    <key>isTemporary</key><false/>
    <key>LogDirectory</key><string>$1/log</string>
    <key>ExecutablePath</key><string>$client</string>
  </dict>
</dict>
</plist>
CONFIGURATION
}
