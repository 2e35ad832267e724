#!/bin/sh
# Builds the reference in build/docs/html; a public declaration without a comment is an error.
set -eu
. "$(dirname "$0")/setup.sh"

install_missing doxygen
mkdir -p build/docs
doxygen Docs/Doxyfile
echo "documentation: build/docs/html/index.html"
