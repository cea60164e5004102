#!/usr/bin/env python3
# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# Compares two runs of run.py, for example before and after a change:
#
#   bench/run.py --arch x64 --work parse && cp build/x64/bench-results.json /tmp/before.json
#   ... change, rebuild, measure again ...
#   bench/compare.py /tmp/before.json build/x64/bench-results.json
#
# A peer's figure is there to tell a change of the library from a change of the machine's mood.

import json
import pathlib
import sys

sys.dont_write_bytecode = True
import run  # noqa: E402


def load(path):
    return run.Results(json.loads(pathlib.Path(path).read_text()))


def main():
    if len(sys.argv) != 3:
        sys.exit('usage: compare.py BEFORE.json AFTER.json')
    before, after = load(sys.argv[1]), load(sys.argv[2])
    rows = []
    for contest, libraries in after.contests.items():
        for library, variants in libraries.items():
            for variant, figure in variants.items():
                old = before.contests.get(contest, {}).get(library, {}).get(variant)
                if old:
                    rows.append(['/'.join(contest + (library, variant)),
                                 run.format_seconds(old.seconds), run.format_seconds(figure.seconds),
                                 f'{old.seconds / figure.seconds:.2f}'])
    print(run.table(['', before.circumstances['commit'], after.circumstances['commit'],
                     'times as fast'], rows))


if __name__ == '__main__':
    main()
