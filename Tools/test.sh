#!/bin/sh
# Installs what is missing, builds everything and runs the tests.
#
#   Tools/test.sh [preset]    release (default), debug, asan or tsan
set -eu
. "$(dirname "$0")/setup.sh"

preset=${1:-release}
# shellcheck disable=SC2086 # a list of names
install_missing $TEST_PACKAGES

cmake --preset "$preset"
cmake --build --preset "$preset"
ctest --preset "$preset"
