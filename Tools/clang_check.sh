#!/bin/sh
# Compiles the library and every public header with Clang 14.
set -eu
. "$(dirname "$0")/setup.sh"

# shellcheck disable=SC2086 # a list of names
install_missing $TEST_PACKAGES clang-14

cmake --preset clang
cmake --build --preset clang --target Fundo FundoHeaderCheck
