#!/usr/bin/env python3
# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# 100,000 rows of ten columns from text to Python objects, beside json.loads in the same run:
#
#   PYTHONPATH=python QXRECORDSET_LIBRARY=build/x64/libQXRecordSet.so.1 python/benchmark.py [ROWS]
#
# CPU time, best of seven, taking turns. "times as fast" is beside json.loads of the same bytes.
"""Measures qxrecordset beside the standard library."""

import json
import random
import sys
import time

from qxrecordset import RecordSet

WORDS = ["alpha", "beta gamma", "Delta street 12", "Wien", "Größe", "x", "", "Graz", "Linz",
         "a longer text with some words in it"]


def row(i):
    word = random.choice
    return {"id": i, "amount": random.randrange(10**6), "count": random.randrange(100),
            "open": random.random() < .5, "name": word(WORDS) + str(i), "city": word(WORDS),
            "street": word(WORDS), "note": None if i % 5 == 0 else word(WORDS),
            "kind": word(WORDS), "code": f"C{i:06}"}


def lists(columns):
    return {name: column.tolist() for name, column in columns.items()}


def main():
    random.seed(1)
    rows = [row(i) for i in range(int(sys.argv[1]) if len(sys.argv) > 1 else 100000)]
    text = json.dumps({"rows": rows}, ensure_ascii=False, separators=(",", ":")).encode()
    works = {
        "json.loads": lambda: json.loads(text)["rows"],
        "from_json().rows()": lambda: RecordSet.from_json(text).rows(),
        "from_json().columns()": lambda: RecordSet.from_json(text).columns(),
        "the same, as lists": lambda: lists(RecordSet.from_json(text).columns()),
        "json.dumps": lambda: json.dumps({"rows": rows}, ensure_ascii=False),
        "from_rows().to_json()": lambda: RecordSet.from_rows(rows).to_json(),
    }
    if works["json.loads"]() != works["from_json().rows()"]():
        sys.exit("the rows differ")
    best = dict.fromkeys(works, 1e9)
    for _ in range(7):
        for name, work in works.items():
            begin = time.process_time()
            made = work()
            best[name] = min(best[name], time.process_time() - begin)
            del made
    print(f"{len(rows)} rows, {len(text) / 1e6:.1f} MB of text")
    for name, seconds in best.items():
        print(f"{name:24}{seconds * 1000:8.1f} ms  {best['json.loads'] / seconds:5.2f} times as fast")


if __name__ == "__main__":
    main()
