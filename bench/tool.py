#!/usr/bin/env python3
# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# Processor time of the tool beside Miller, jq and sqlite3: bench/tool.py QXRS [ROWS]. Each command
# reads and writes files; the best of three runs counts, user and system time of all its threads.
"""Measures qxrs beside other tools and prints the table of docs/tool.md."""

import os
import random
import resource
import subprocess
import sys
import tempfile

# What is measured: for each tool a shell command, or none. {n} is a new file.
CASES = [
    ("CSV to JSON", "qxrs convert r.csv n.json", "mlr --icsv --ojson cat r.csv > n", None, None),
    ("CSV to JSON, kinds by column", "qxrs convert -i r.csv n.json", None, None, None),
    ("JSON to CSV", "qxrs convert r.json n.csv", "mlr --ijson --ocsv cat r.json > n", None, None),
    ("JSON to JSON Lines", "qxrs convert r.json n.jsonl", "mlr --ijson --ojsonl cat r.json > n",
     "jq -c '.[]' r.json > n", None),
    ("CSV to SQLite", "rm -f n.db; qxrs convert r.csv n.db", None, None,
     "rm -f n.db; sqlite3 n.db '.import --csv r.csv r'"),
    ("SQLite to CSV", "qxrs convert r.db n.csv", None, None, "sqlite3 -csv -header r.db 'SELECT * FROM r' > n"),
    ("SQLite to JSON", "qxrs convert r.db n.json", None, None, "sqlite3 -json r.db 'SELECT * FROM r' > n"),
    ("sort by a column", "qxrs sort --by amount r.csv --to csv -o n.csv", "mlr --csv sort -f amount r.csv > n",
     None, None),
]


def write_rows(count):
    source = random.Random(1)
    cities = ["Berlin", "New York", "São Paulo", '"Tokyo, Japan"', "Rome", "Oslo", "Lima", "Cairo"]
    with open("r.csv", "w", encoding="utf-8") as file:
        file.write("id,name,city,amount,price,active,created,code,note\n")
        for i in range(count):
            note = '"said ""hi"", then left"' if i % 20 == 0 else "" if i % 7 == 0 else f"some words {i % 1000} here"
            file.write(f"{i},user{source.randrange(10**6)},{source.choice(cities)},{source.randrange(10**6)},"
                       f"{source.random() * 1000:.2f},{'true' if i % 3 else 'false'},"
                       f"2024-{i % 12 + 1:02d}-{i % 28 + 1:02d}T10:{i % 60:02d}:00,{i % 100000:05d},{note}\n")


def seconds(command):
    """Processor time of a shell command that has to succeed."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(["bash", "-c", command], check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def main():
    os.environ["PATH"] = os.path.dirname(os.path.abspath(sys.argv[1])) + ":" + os.environ["PATH"]
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 1000000
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        write_rows(count)
        for other in ("json", "db"):
            subprocess.run(["qxrs", "convert", "r.csv", "r." + other], check=True)
        print(f"{count} rows, {os.path.getsize('r.csv') / 1e6:.0f} MB of CSV\n")
        print("| | qxrs | Miller | jq | sqlite3 |\n|---|---|---|---|---|")
        for name, *commands in CASES:
            times = [f"{min(seconds(c) for _ in range(3)):.2f}" if c else "" for c in commands]
            print(f"| {name} | " + " | ".join(times) + " |", flush=True)
        os.chdir("/")


if __name__ == "__main__":
    main()
