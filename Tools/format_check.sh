#!/bin/sh
# Fails, naming the places, if a source differs from what clang-format 14 makes of it.
set -eu
. "$(dirname "$0")/setup.sh"

install_missing clang-format-14
git ls-files -z -- '*.cpp' '*.h' | xargs -0 clang-format-14 --dry-run --Werror
echo "format: clean"
