#!/usr/bin/env python3
"""Runs the fuzz targets, one after another or two at a time, and sums up.

    fuzz/run.py --seconds 60 [--arch x64,x86] [--targets parse,flat] [--jobs 2]

Half of the time starts from the seeds in fuzz/TARGET/corpus alone, the other half from them and from
what earlier runs found worth keeping in build/ARCH-fuzz/corpus/TARGET. An input that breaks a promise
is kept in build/fuzz/crashes, and the command that runs it again is printed. The status is 1 when
there was one, and when a run ended in any other way than by its time, or made up hardly any inputs.
"""

import argparse
import concurrent.futures
import os
import re
import subprocess
import sys
import tempfile
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
LONGEST_END = 300  # seconds that a program may take beyond twice its time, with its seeds and report
LEAST_INPUTS = 50  # that a run from the seeds makes up, or it says nothing
MEMORY = 2048  # megabytes


def options_of(target):
    longest = SHORTER_INPUT.get(target, LONGEST_INPUT)
    options = [f"-max_len={longest}", f"-timeout={LONGEST_RUN}", f"-rss_limit_mb={MEMORY}",
               "-print_final_stats=1"]
    own = list((SOURCE / "fuzz" / target).glob("*.dict"))
    if target in JSON_TARGETS:
        own.append(SOURCE / "fuzz" / "json.dict")
    return options + [f"-dict={name}" for name in own]


class Outcome:
    """One run of a program: the inputs that it made up, those that failed, and what is wrong."""

    def __init__(self, status, output, wanted, problem=""):
        # What is read from folders before the first input is made up does not count.
        begun = re.search(r"^#(\d+)\tINITED", output, re.MULTILINE)
        ended = re.search(r"number_of_executed_units: *(\d+)", output)
        self.inputs = max(0, int(ended[1]) - int(begun[1])) if begun and ended else 0
        self.found = [Path(name) for name in re.findall(r"Test unit written to (\S+)", output)]
        self.output = output
        self.problem = problem
        if self.found:
            self.problem = f"{len(self.found)} findings"
        elif not problem and status < 0:
            self.problem = f"was killed by signal {-status}"
        elif not problem and status != 0:
            self.problem = f"ended with status {status}, without a finding"
        elif not problem and self.inputs < wanted:
            self.problem = f"made up {self.inputs} inputs, fewer than {wanted}"


def execute(program, target, seconds, prefix, kept=(), wanted=0):
    """Runs a program on its seeds, and on the folders with what earlier runs kept."""
    seeds = [SOURCE / "fuzz" / target / "corpus"]
    if target in JSON_TARGETS:
        seeds.append(SOURCE / "tests" / "data")
    with tempfile.TemporaryDirectory() as new:
        began = time.monotonic()
        try:
            done = subprocess.run(
                [program, *options_of(target), f"-max_total_time={seconds}",
                 f"-artifact_prefix={prefix}", *(kept or [new]), *seeds],
                capture_output=True, text=True, errors="replace", check=False,
                timeout=2 * seconds + LONGEST_END,
                env={**os.environ, "ASAN_OPTIONS": "detect_leaks=1:detect_stack_use_after_return=1",
                     "UBSAN_OPTIONS": "print_stacktrace=1"})
            took = time.monotonic() - began
            early = done.returncode == 0 and took < seconds - 1
            return Outcome(done.returncode, done.stderr, wanted,
                           f"ended after {took:.0f} s of {seconds}" if early else "")
        except OSError as error:
            return Outcome(None, "", wanted, f"does not start: {error}")
        except subprocess.TimeoutExpired as late:
            return Outcome(None, (late.stderr or b"").decode(errors="replace"), wanted,
                           "did not end")


def run(arch, target, seconds):
    """Runs one target; gives the number of inputs and whether something is wrong.

    Half of the time starts from the seeds alone: what is kept leads each run to the same places,
    and reading it may take all the time of a short one.
    """
    folder = SOURCE / "build" / f"{arch}-fuzz"
    program = folder / "fuzz" / f"fuzz_{target}"
    kept = folder / "corpus" / target
    kept.mkdir(parents=True, exist_ok=True)
    prefix = CRASHES / f"{arch}-{target}-"
    half = max(1, seconds // 2)
    began = time.monotonic()
    outcomes = [execute(program, target, half, prefix, wanted=LEAST_INPUTS),
                execute(program, target, half, prefix, [kept])]
    took = time.monotonic() - began
    count = sum(outcome.inputs for outcome in outcomes)
    problems = [outcome for outcome in outcomes if outcome.problem]
    print(f"{arch} {target:<10} {took:6.0f} s {count:>12,} inputs "
          f"{len(list(kept.iterdir())):>6} kept  "
          + ("; ".join(outcome.problem for outcome in problems) or "0 findings"), flush=True)
    for outcome in problems:
        print("\n".join(outcome.output.splitlines()[-60:]), flush=True)
        for path in outcome.found:
            print(f"  {program.relative_to(SOURCE)} {path.relative_to(SOURCE)}", flush=True)
    return count, bool(problems)


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
    failed = sum(broken for _, broken in results)
    inputs = sum(count for count, _ in results)
    print(f"fuzz: {len(work)} runs of {options.seconds} s, {inputs:,} inputs, "
          f"{failed} runs failed"
          + (f"; inputs are kept in {CRASHES.relative_to(SOURCE)}" if failed else ""))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
