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

# Runs the tests of the preset $1; further arguments go to ctest.
test_preset() {
  local preset=$1
  shift
  heading "Testing the preset $preset"
  ctest --preset "$preset" --parallel "$(nproc)" "$@"
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
