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

{
echo "machine: $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1), $(nproc) cores"
for subject in "$@"; do
    program=$build/Benchmarks/$subject/${subject}Benchmark
    [ -x "$program" ] || { echo "$program is not built" >&2; exit 1; }
    "$program" --benchmark_format=csv --benchmark_report_aggregates_only=true \
        --benchmark_repetitions="${BENCH_REPETITIONS:-9}" --benchmark_min_time="${BENCH_MIN_TIME:-0.1}" \
        --benchmark_enable_random_interleaving=true --benchmark_filter="${BENCH_FILTER:-.*}" 2>/dev/null
done
} | awk -F, '
    { line = $0; gsub(/"/, "", line); split(line, field, ",") }
    field[1] !~ /_median$/ { if (field[1] ~ /^machine/) print line; next }
    {
        name = field[1]; sub(/_median$/, "", name)
        # real time where the case asks for it (threads, waits), processor time elsewhere
        time = name ~ /real_time/ ? field[3] : field[4]
        peer = name; sub(/\/.*/, "", peer)
        what = name; sub(/^[^\/]*\//, "", what)
        if (peer == "Fundo") { ours[what] = time; order[++count] = what }
        else if (!(what in best) || time + 0 < best[what] + 0) { best[what] = time; who[what] = peer }
    }
    END {
        printf "%-56s %12s %12s %8s  %s\n", "case", "ours", "best peer", "ratio", "peer"
        for (i = 1; i <= count; i++) {
            what = order[i]
            if (what in best) printf "%-56s %12.2f %12.2f %8.2f  %s\n", what, ours[what], best[what], ours[what] / best[what], who[what]
            else printf "%-56s %12.2f %12s\n", what, ours[what], "-"
        }
    }'
