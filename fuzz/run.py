#!/usr/bin/env python3
"""Runs the fuzz targets, one after another or two at a time, and sums up.

    fuzz/run.py --seconds 60 [--arch x64,x86] [--targets parse,flat] [--jobs 2]

Starts from the seeds in fuzz/TARGET/corpus and from what earlier runs found worth keeping in
build/ARCH-fuzz/corpus/TARGET. An input that breaks a promise is kept in build/fuzz/crashes, and the
command that runs it again is printed. The status is 1 when there was one.
"""

import argparse
import concurrent.futures
import os
import re
import subprocess
import sys
import time
from pathlib import Path

SOURCE = Path(__file__).resolve().parent.parent
CRASHES = SOURCE / "build" / "fuzz" / "crashes"
TARGETS = sorted(folder.parent.name for folder in (SOURCE / "fuzz").glob("*/corpus"))

# Those that read JSON text, with its dictionary and the documents that the tests use as more seeds.
JSON_TARGETS = {"parse", "roundtrip", "recordset", "flat", "pretty"}

# Bytes of an input. Where the work grows with the square of the input, shorter ones find more.
LONGEST_INPUT = 4096
SHORTER_INPUT = {"pretty": 512, "recordset": 1024, "lives": 512}
LONGEST_RUN = 10  # seconds for one input; nothing that small may take as long
MEMORY = 2048  # megabytes


def options_of(target):
    longest = SHORTER_INPUT.get(target, LONGEST_INPUT)
    options = [f"-max_len={longest}", f"-timeout={LONGEST_RUN}", f"-rss_limit_mb={MEMORY}",
               "-print_final_stats=1"]
    own = list((SOURCE / "fuzz" / target).glob("*.dict"))
    if target in JSON_TARGETS:
        own.append(SOURCE / "fuzz" / "json.dict")
    return options + [f"-dict={name}" for name in own]


def run(arch, target, seconds):
    """Runs one target; gives the number of inputs and the files of those that failed."""
    folder = SOURCE / "build" / f"{arch}-fuzz"
    program = folder / "fuzz" / f"fuzz_{target}"
    kept = folder / "corpus" / target
    kept.mkdir(parents=True, exist_ok=True)
    seeds = [SOURCE / "fuzz" / target / "corpus"]
    if target in JSON_TARGETS:
        seeds.append(SOURCE / "tests" / "data")
    before = set(CRASHES.iterdir())
    began = time.monotonic()
    done = subprocess.run(
        [program, *options_of(target), f"-max_total_time={seconds}",
         f"-artifact_prefix={CRASHES}/{arch}-{target}-", kept, *seeds],
        capture_output=True, text=True, errors="replace", check=False,
        env={**os.environ, "ASAN_OPTIONS": "detect_leaks=1:detect_stack_use_after_return=1",
             "UBSAN_OPTIONS": "print_stacktrace=1"})
    took = time.monotonic() - began
    inputs = re.search(r"number_of_executed_units: *(\d+)", done.stderr)
    count = int(inputs[1]) if inputs else 0
    found = sorted(path for path in set(CRASHES.iterdir()) - before
                   if path.name.startswith(f"{arch}-{target}-"))
    print(f"{arch} {target:<10} {took:6.0f} s {count:>12,} inputs "
          f"{len(list(kept.iterdir())):>6} kept  {len(found)} findings", flush=True)
    if done.returncode != 0:
        print("\n".join(done.stderr.splitlines()[-60:]), flush=True)
        for path in found:
            print(f"  {program.relative_to(SOURCE)} {path.relative_to(SOURCE)}", flush=True)
    return count, found, done.returncode != 0


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--seconds", type=int, default=60, help="for each target")
    parser.add_argument("--arch", default="x64,x86")
    parser.add_argument("--targets", default=",".join(TARGETS))
    parser.add_argument("--jobs", type=int, default=1, help="targets at a time")
    options = parser.parse_args()
    CRASHES.mkdir(parents=True, exist_ok=True)
    work = [(arch, target) for target in options.targets.split(",")
            for arch in options.arch.split(",")]
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        results = list(pool.map(lambda one: run(*one, options.seconds), work))
    failed = sum(broken for _, _, broken in results)
    inputs = sum(count for count, _, _ in results)
    print(f"fuzz: {len(work)} runs of {options.seconds} s, {inputs:,} inputs, "
          f"{failed} runs with findings"
          + (f", kept in {CRASHES.relative_to(SOURCE)}" if failed else ""))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
