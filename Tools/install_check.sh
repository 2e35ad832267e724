#!/bin/sh
# Installs the library into a scratch prefix and builds a program against it the two ways users do:
# by find_package and by pkg-config, with the shared and with the static library.
set -eu
. "$(dirname "$0")/setup.sh"

# shellcheck disable=SC2086 # a list of names
install_missing $BUILD_PACKAGES pkg-config

project=$FUNDO_ROOT/Tests/Consumer/Project
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

for shared in ON OFF; do
    prefix=$scratch/prefix-$shared
    cmake -S "$FUNDO_ROOT" -B "$scratch/build-$shared" -G Ninja -DCMAKE_BUILD_TYPE=Release \
        -DBUILD_SHARED_LIBS=$shared -DCMAKE_INSTALL_PREFIX="$prefix" \
        -DFUNDO_BUILD_TESTS=OFF -DFUNDO_BUILD_EXAMPLES=OFF -DFUNDO_BUILD_BENCHMARKS=OFF
    cmake --build "$scratch/build-$shared"
    cmake --install "$scratch/build-$shared" >/dev/null

    cmake -S "$project" -B "$scratch/consumer-$shared" -G Ninja -DCMAKE_PREFIX_PATH="$prefix"
    cmake --build "$scratch/consumer-$shared"
    "$scratch/consumer-$shared/Consumer"
    echo "find_package, shared library $shared: works"

    pc=$(find "$prefix" -name fundo.pc)
    PKG_CONFIG_PATH=$(dirname "$pc")
    export PKG_CONFIG_PATH
    static=
    [ $shared = ON ] || static=--static
    # shellcheck disable=SC2046 # flags
    g++ -std=c++17 -Wall -Wextra -Wpedantic -Werror "$project/Consumer.cpp" \
        $(pkg-config $static --cflags --libs fundo) -o "$scratch/consumer-pc-$shared"
    LD_LIBRARY_PATH=$(pkg-config --variable=libdir fundo) "$scratch/consumer-pc-$shared"
    echo "pkg-config, shared library $shared: works"
done
