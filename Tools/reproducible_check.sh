#!/bin/sh
# Builds the last commit twice, from clones in different folders, and compares the libraries byte by byte;
# then checks that a build from a modified tree says so when it is loaded.
#
#   Tools/reproducible_check.sh [build type]    Release (default) or RelWithDebInfo
set -eu
. "$(dirname "$0")/setup.sh"

# shellcheck disable=SC2086 # a list of names
install_missing $BUILD_PACKAGES git

type=${1:-Release}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# A compiler cache would answer the second build with the first one's objects.
unset CMAKE_CXX_COMPILER_LAUNCHER CMAKE_C_COMPILER_LAUNCHER

# build FOLDER BUILD: both libraries, in a build folder of its own name, from the same compiled sources.
build() {
    for shared in ON OFF; do
        cmake -S "$1" -B "$1/$2" -G Ninja -DCMAKE_BUILD_TYPE="$type" -DBUILD_SHARED_LIBS=$shared \
            -DFUNDO_BUILD_TESTS=OFF -DFUNDO_BUILD_EXAMPLES=OFF -DFUNDO_BUILD_BENCHMARKS=OFF >/dev/null
        cmake --build "$1/$2"
    done
}

# told FOLDER: the errors that a program shows when it loads the library.
told() {
    LD_PRELOAD=$1/libFundo.so /bin/true
}

first=$scratch/first
second=$scratch/a/longer/way/to/second
git clone --quiet "$FUNDO_ROOT" "$first"
git clone --quiet "$FUNDO_ROOT" "$second"
build "$first" build
(umask 077 && TZ=Asia/Tokyo build "$second" out/of/the/way)

for library in libFundo.so libFundo.a; do
    cmp "$first/build/$library" "$second/out/of/the/way/$library"
    echo "$library: equal, $(sha256sum <"$first/build/$library" | cut -c 1-16)"
done

[ -z "$(told "$first/build")" ] || { echo "a clean build reports errors when loaded" >&2; exit 1; }
cmake -S "$first" -B "$first/build" -DBUILD_SHARED_LIBS=ON >/dev/null
echo >>"$first/README.md"
cmake --build "$first/build"
told "$first/build" | grep -q 'Fundo version error' || { echo "a modified build keeps quiet" >&2; exit 1; }
echo "a build from a modified tree: told when loaded"
