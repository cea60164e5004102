#!/usr/bin/env python3
# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# Runs gdb on Program.cpp, linked with the installed library for which it has to find the pretty
# printers by itself, and compares what it prints. The environment says where: AUTO_LOAD and PROGRAM,
# which has all debugging symbols or finds them in DEBUG_FILES; BLIND_PROGRAM has its own only.
"""What gdb prints of record sets and documents."""

import os
import subprocess
import sys

# An expression, and what gdb prints of it.
CASES = [
    ("reference", 'record set: 2 rows, 5 columns = {[1].name = "Ada \\"L\\"", [1].born = 1815, '
     '[2].name = "", [2].dead = true, [2].note = null, [2].more = {"k":-1}}'),
    ("odd", "record set: 1000000 rows, 1 column = {[-7].row = -7, [0].row = 0, [1].row = 1, "
     "[1000000].row = 1000000}"),
    ("empty", "record set: 0 rows, 0 columns"),
    ("change", "record set: 1 row, 1 column = {[1].salary = 3100}"),
    ('$qxcell(people, "name")', '"Ada \\"L\\""'),
    ('$qxcell(wide, "c1999", 5)', "1999"),
    ('$qxcell(wide, "c3", 1200)', "1200"),
    ('$qxcell(wide, "c3", 1201)', "There is no cell 'c3' in row 1201."),
    ("message", 'object of 3 members = {zoo = array of 7 elements = {[0] = 1, [1] = -2.5e3, '
     '[2] = "a\\n\\"b\\"", [3] = null, [4] = true, [5] = array of 0 elements, '
     '[6] = object of 0 members}, a = object of 2 members = {b = object of 1 member = {c = 7}, '
     'd = "set"},  = "none"}'),
    ('$qxpath(message, "a.b.c")', "7"),
    ('$qxpath(message, "zoo.2")', '"a\\n\\"b\\""'),
    ('$qxpath(message, "a.x")', "There is no 'x' in 'a.x'."),
    ("broken", "object of 2 members = {a = 1, b = invalid array of 1 element = {[0] = 2}}"),
    ("nothing", "nothing"),
    ("params", 'parameter string: header "FIND", 2 parameters = {[0] = "0x00000000", '
     '[1] = "a;\\"b\\""}'),
    ("noParams", "parameter string: 0 parameters"),
    ("writer", 'writer, 2 open containers: {"a":[1'),
    ("whole", "writer: []"),
    ("wrong", "writer, called out of order"),
    ('$qxcell(reference, "born")', "1815"),
]

# Without the library's debugging symbols.
BLIND_CASES = [
    ("people", "CQXRecordSet (seen with the debugging symbols of libQXRecordSet)"),
    ("message", "JSON::Message (seen with the debugging symbols of libQXRecordSet)"),
    ('$qxcell(people, "name")', "gdb knows nothing of the inside of a record set: the debugging "
     "symbols of libQXRecordSet are missing (package libqxrecordset1-dbgsym)."),
    ('$qxpath(message, "a")', "gdb knows nothing of the inside of a document: the debugging symbols "
     "of libQXRecordSet are missing (package libqxrecordset1-dbgsym)."),
]


def printed(program, expressions):
    """What gdb prints of each expression, where main() has called Look()."""
    arguments = ["gdb", "--batch", "-nx", "-iex", "set auto-load safe-path /",
                 "-iex", "set auto-load scripts-directory " + os.environ["AUTO_LOAD"],
                 "-iex", "set debug-file-directory " + os.environ.get("DEBUG_FILES", "/nowhere"),
                 "-ex", "set print elements 100000", "-ex", "break Look", "-ex", "run", "-ex", "up"]
    for expression in expressions:
        arguments += ["-ex", "echo \\n===", "-ex", f"python \ntry:\n"
                      f"    gdb.execute('output ' + {expression!r})\n"
                      f"except gdb.error as error:\n    print(error, end='')"]
    done = subprocess.run(arguments + ["-ex", "echo \\n===", "-ex", "kill", program], timeout=120,
                          capture_output=True, text=True, check=False)
    results = done.stdout.split("\n===")[1:-1]
    if len(results) != len(expressions):
        sys.exit(f"gdb: {done.stdout}\n{done.stderr}")
    return results


failures = 0
for variable, cases in (("PROGRAM", CASES), ("BLIND_PROGRAM", BLIND_CASES)):
    if variable not in os.environ:
        continue
    for (expression, wanted), actual in zip(cases, printed(os.environ[variable], [c[0] for c in cases])):
        if actual != wanted:
            failures += 1
            print(f"{expression}\n  wanted: {wanted}\n  actual: {actual}")
print(f"{failures} failures")
sys.exit(1 if failures else 0)
