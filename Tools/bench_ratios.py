#!/usr/bin/env python3
"""Prints our median times over the best peer's, from result files of Google Benchmark."""

import json
import sys

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
STANDARD = {"family_index", "per_family_instance_index", "repetitions", "repetition_index", "threads", "iterations",
            "real_time", "cpu_time", "label", "items_per_second", "bytes_per_second"}


def documents(text):
    """The results of a program, one document for each time that it starts itself anew."""
    decoder, at = json.JSONDecoder(), text.find("{")
    while at >= 0:
        document, end = decoder.raw_decode(text, at)
        yield document
        at = text.find("{", end)


def medians(paths):
    for path in paths:
        with open(path, encoding="utf-8") as file:
            text = file.read()
        for document in documents(text):
            # A case that is run once has no median.
            yield from (row for row in document["benchmarks"]
                        if row.get("aggregate_name") == "median" or row.get("repetitions") == 1)


def main():
    ours, best = {}, {}
    for row in medians(sys.argv[1:]):
        peer, _, case = row["run_name"].partition("/")
        # Real time where the case asks for it (threads, waits), processor time elsewhere.
        column = "real_time" if "real_time" in case else "cpu_time"
        time = row[column] * NANOSECONDS[row["time_unit"]]
        if peer == "Fundo":
            ours[case] = time, {k: v for k, v in row.items() if k not in STANDARD and isinstance(v, float)}
        elif case not in best or time < best[case][0]:
            best[case] = time, peer

    print(f"{'case':56} {'ours, ns':>12} {'best peer':>12} {'ratio':>8}  peer")
    for case, (time, counters) in ours.items():
        if case in best:
            print(f"{case:56} {time:12.2f} {best[case][0]:12.2f} {time / best[case][0]:8.2f}  {best[case][1]}")
        else:
            counted = "  ".join(f"{name} {value:.3f}" for name, value in counters.items())
            print(f"{case:56} {time:12.2f} {'-':>12} {'':8}  {counted}")


main()
