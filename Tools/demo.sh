#!/bin/sh
# Installs what is missing, builds the main example and runs it for ten seconds.
set -eu
. "$(dirname "$0")/setup.sh"

# shellcheck disable=SC2086 # a list of names
install_missing $BUILD_PACKAGES

cmake --preset demo
cmake --build --preset demo

log=$(mktemp -d)
trap 'rm -rf "$log"' EXIT

# The commands arrive while it runs, as from a console.
{
    sleep 4
    echo slow
    echo logfilter -logversion off
    sleep 3
    echo threads
    echo timers
    sleep 4
} | build/demo/Examples/Monitor/FundoMonitor --seconds 10 --log "$log/monitor.log"
