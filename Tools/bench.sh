#!/bin/sh
# Runs benchmark programs and prints our time over the best peer's.
#
#   Tools/bench.sh [program]...    such as Tools/bench.sh Codecs Time; all of them without arguments
#
# Cases are named Fundo/<subject>/<case> and <Peer>/<subject>/<case>. Repetitions of all cases are
# interleaved at random and the medians compared. BENCH_REPETITIONS (9) and BENCH_MIN_TIME (0.1 s) tune it,
# BENCH_FILTER is a regular expression of cases, BUILD_DIR names another build than build/release.
set -eu

root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build/release}
[ $# -gt 0 ] || set -- $(cd "$root/Benchmarks" && ls -d */ | tr -d /)

results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT

echo "machine: $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1), $(nproc) cores"
for subject in "$@"; do
    program=$build/Benchmarks/$subject/${subject}Benchmark
    [ -x "$program" ] || { echo "$program is not built" >&2; exit 1; }
    "$program" --benchmark_format=json --benchmark_report_aggregates_only=true \
        --benchmark_repetitions="${BENCH_REPETITIONS:-9}" --benchmark_min_time="${BENCH_MIN_TIME:-0.1}" \
        --benchmark_enable_random_interleaving=true --benchmark_filter="${BENCH_FILTER:-.*}" \
        >"$results/$subject.json" 2>"$results/errors" ||
        { cat "$results/errors" >&2; echo "$program failed" >&2; exit 1; }
done
python3 "$root/Tools/bench_ratios.py" "$results"/*.json
