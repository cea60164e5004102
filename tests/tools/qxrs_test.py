# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# Tests the tool by running it: qxrs_test.py GROUP, with the tool in $QXRS and the example data in
# $DATA. The single command lines are in cases.py; here is what a table cannot say.

import json
import os
import pty
import random
import re
import shlex
import signal
import sqlite3
import stat
import subprocess
import sys
import tempfile
import time

from cases import ACCEPTED, CASES, FILES, REFUSED, WORLD

QXRS = os.environ["QXRS"]
DATA = os.environ["DATA"]
failures = 0


def expect(what, actual, expected):
    global failures
    if actual != expected:
        failures += 1
        print(f"FAILED {what}\n  expected {expected!r}\n  got      {actual!r}")


def run(args, stdin="", **options):
    """The tool's (standard output, standard error, exit status)."""
    words = shlex.split(args) if isinstance(args, str) else args
    data = stdin if isinstance(stdin, bytes) else stdin.encode()
    done = subprocess.run([QXRS, *words], input=data, capture_output=True, **options)
    return done.stdout.decode(), done.stderr.decode(), done.returncode


def write(name, text):
    with open(name, "w", encoding="utf-8", newline="") as file:
        file.write(text)


def read(name):
    with open(name, encoding="utf-8", newline="") as file:
        return file.read()


# ---- The tables ----


def test_cases():
    for args, stdin, stdout, *rest in CASES:
        stderr, status = (rest + ["", 0])[:2] if len(rest) != 1 else (rest[0], 0)
        complaint = "qxrs: " + stderr if stderr else ""
        expect(args, run(args, stdin), (stdout, complaint, status))
    # An integer that fits the tool's long stays one, whatever the architecture.
    big = 2 ** (int(os.environ["LONG_BITS"]) - 1)
    expect("largest long", run("from-csv -i", f"a,b\n{big - 1},{big}\n")[0],
           f'{{"a":{big - 1},"b":"{big}"}}\n')


def test_check():
    for text, message in ACCEPTED:
        expect(text, run("check", text), (f"standard input: accepted: {message}\n", "", 0))
        expect(text, run("check --quiet", text), ("", "", 0))
    for text, message, shown, caret in REFUSED:
        complaint = f"qxrs: standard input: {message}\n  {shown}\n  {' ' * caret}^\n"
        expect(text, run("check", text), ("", complaint, 1))
    expect("several files", run("check one.json bad.json two.json"),
           ("one.json: accepted: an object of 2 members\ntwo.json: accepted: an object of 1 member\n",
            'qxrs: bad.json: line 3, column 7: expected \':\' behind the name\n    "b" 2\n        ^\n', 1))


# ---- Files and round trips ----


def test_output_file():
    expect("-o", run("table -o t.txt one.json"), ("", "", 0))
    expect("-o writes", read("t.txt"), "name  born\n----  ----\nAda   1815\n")
    os.chmod("t.txt", 0o640)
    run("to-csv -o t.txt one.json")
    expect("-o keeps the mode", stat.S_IMODE(os.stat("t.txt").st_mode), 0o640)
    expect("a failure", run("table -o t.txt bad.json")[2], 1)
    expect("a failure keeps the file", read("t.txt"), "name,born\nAda,1815\n")

    write("same.json", '{ "b":1, "a":2 }')
    os.symlink("same.json", "link.json")
    run("normalize -o link.json same.json")
    expect("input and output may be the same", read("same.json"), '{"a":2,"b":1}\n')
    expect("a link stays", os.path.islink("link.json"), True)
    expect("nothing is left behind", [f for f in os.listdir() if f.count(".") > 1], [])

    expect("no folder", run("table -o no/where one.json"),
           ("", "qxrs: cannot write no/where: No such file or directory\n", 1))
    with open("/dev/full", "wb") as full:
        done = subprocess.run([QXRS, "table", "one.json"], stdout=full, stderr=subprocess.PIPE)
    expect("full disk", (done.stderr, done.returncode),
           (b"qxrs: cannot write standard output: No space left on device\n", 1))


def test_interrupted():
    """Ended from outside, the tool leaves no temporary file."""
    with subprocess.Popen([QXRS, "from-csv", "-o", "late.json"], stdin=subprocess.PIPE) as process:
        while not any(name.startswith("late.json.") for name in os.listdir()):
            time.sleep(0.01)
        process.terminate()
    expect("ended by the signal", process.returncode, -signal.SIGTERM)
    expect("nothing is left behind", [f for f in os.listdir() if f.startswith("late")], [])


def test_round_trips():
    for name in ("planets", "countries", "elements"):
        source = f"{DATA}/{name}.csv"
        records = run(f"from-csv -i {source}")[0]
        columns = read(source).split("\n")[0]
        expect(name + " csv", run(f"to-csv -c {columns}", records)[0], read(source))
        for form in ("tsv --null '\\N'", "json", "jsonl"):
            text, errors, _ = run(f"to-{form}", records)
            expect(name + form + errors, run(f"from-{form}{' -i' if 'tsv' in form else ''}", text)[0], records)
        expect(name + " library", run("normalize", records)[0], records)
        if name != "planets":  # has a column of texts and integers, and SQLite makes it one of texts
            run(f"to-sql trip.db {name}", records)
            expect(name + " sql", run(f"from-sql trip.db 'SELECT * FROM {name}'")[0], records)


def test_sql_tables():
    run("to-sql out.db t", '{"rows":[{"i":1,"b":true,"t":"x","m":1},{"i":-5,"b":false,"m":"y","o":{"k":1},'
        '"big":99999999999999999999,"\\"q":null}]}')
    database = sqlite3.connect("out.db")
    types = database.execute("SELECT name || ' ' || type FROM pragma_table_info('t')").fetchall()
    expect("types", [row[0] for row in types], ["i INTEGER", "b BOOLEAN", "t TEXT", "m TEXT", "o TEXT",
                                                "big TEXT", '"q TEXT'])
    expect("rows", database.execute("SELECT * FROM t").fetchall(),
           [(1, 1, "x", "1", None, None, None),
            (-5, 0, None, "y", '{"k":1}', "99999999999999999999", None)])
    expect("existing", run("to-sql out.db t one.json"),
           ("", 'qxrs: out.db: table "t" already exists\n', 1))
    expect("append", run("to-sql --append out.db t", '{"i":9}'), ("", "", 0))
    expect("append fails whole", run("to-sql --append out.db t", '{"rows":[{"i":10},{"no":1}]}')[2], 1)
    expect("rows", database.execute("SELECT i FROM t").fetchall(), [(1,), (-5,), (9,)])
    expect("replace", run("to-sql --replace out.db t one.json"), ("", "", 0))
    expect("rows", database.execute("SELECT * FROM t").fetchall(), [("Ada", 1815)])
    expect("no columns", run("to-sql out.db u", "{}"),
           ("", "qxrs: there are no columns to make a table of\n", 1))


# ---- Terminals ----


def run_on_terminal(args, stdin, width=40, stdout=None, **environment):
    """Runs the tool with a terminal as standard error and, unless given, as standard output. Returns
    what the terminal got and the exit status."""
    leader, follower = pty.openpty()
    os.set_blocking(leader, True)
    subprocess.run(["stty", "cols", str(width), "-onlcr"], stdin=follower, check=True)
    variables = {"PATH": os.environ["PATH"], "TERM": "xterm", **environment}
    with subprocess.Popen([QXRS, *shlex.split(args)], stdin=subprocess.PIPE, stdout=stdout or follower,
                          stderr=follower, env=variables) as process:
        os.close(follower)
        process.stdin.write(stdin.encode())
        process.stdin.close()
        got = b""
        while True:
            try:
                piece = os.read(leader, 65536)
            except OSError:  # the last writer is gone
                break
            if not piece:
                break
            got += piece
    os.close(leader)
    return got.decode(), process.returncode


def test_terminal():
    wide = json.dumps({"a": "x" * 30, "b": "y" * 30})
    head = "a" + " " * 20 + "b"
    table = head + "\n" + "-" * 19 + "  " + "-" * 19 + "\n" + "x" * 18 + "…  " + "y" * 18 + "…\n"
    bold = table.replace(head, "\x1b[1m" + head + "\x1b[0m")
    expect("fits and is bold", run_on_terminal("table", wide), (bold, 0))
    expect("NO_COLOR", run_on_terminal("table", wide, NO_COLOR="1"), (table, 0))
    expect("empty NO_COLOR", run_on_terminal("table", wide, NO_COLOR=""), (bold, 0))
    expect("--color wins", run_on_terminal("table --color always", wide, NO_COLOR="1"), (bold, 0))
    expect("dumb", run_on_terminal("table", wide, TERM="dumb"), (table, 0))
    expect("--color never", run_on_terminal("table --color never", wide), (table, 0))


def test_progress():
    text = '{"rows":[' + ",".join(['{"a":1}'] * 50000) + "]}"
    write("long.json", text)
    _, errors, _ = run("stats --progress long.json")
    expect("a bar", re.findall(r"\[#+ *\] \d+ %  0\.\d MB", errors)[:1] != [], True)
    expect("is wiped", errors.endswith("\r\x1b[K"), True)
    _, errors, _ = run("stats --progress", text)
    expect("no share of an unknown total", re.match(r"\r0\.\d MB\x1b\[K", errors) is not None, True)
    _, errors, _ = run("from-sql --progress world.db 'SELECT * FROM t'")
    expect("rows", errors, "\r1 rows\x1b[K\r\x1b[K")
    expect("short work on a terminal", run_on_terminal("stats -o s.txt", "{}"), ("", 0))
    # Nothing when piped, and nothing when not wanted, however long the work: the input waits.
    slow = f"(cat long.json; sleep 0.7; cat long.json) | {QXRS} "
    done = subprocess.run(["sh", "-c", slow + "get rows.1.a"], capture_output=True, check=False)
    expect("piped", (done.stdout, done.stderr), (b"1\n", b""))
    leader, follower = pty.openpty()
    subprocess.run(["sh", "-c", slow + "get rows.1.a"], stdout=subprocess.PIPE, stderr=follower, check=False)
    os.close(follower)
    expect("on a terminal", os.read(leader, 4096).startswith(b"\r0."), True)
    os.close(leader)


# ---- Long input ----


def tricky_rows(seed, count):
    source = random.Random(seed)
    texts = ["", "a,b", "]}", "{", '"', "\\", '\\"', "\n", "é日本", "},{", "[" * 5, "x" * 300]
    return [{f"c{source.randrange(4)}": source.choice([source.choice(texts), source.randrange(10**6),
                                                       True, None, {"o": source.choice(texts)}])
             for _ in range(1 + source.randrange(4))} for _ in range(count)]


def test_batches():
    """A text of many batches gives the same rows as its parser in one piece would."""
    for seed, indent in ((1, None), (2, 1)):
        rows = tricky_rows(seed, 20000)
        for command, document in (("to-jsonl", {"rows": rows, "more": [1]}), ("from-json", rows)):
            text = json.dumps(document, indent=indent, ensure_ascii=False)
            lines = run(command, text)[0]
            if command == "from-json":
                lines = run("to-jsonl", lines)[0]
            expect(f"{command} {seed}", [json.loads(line) for line in lines.splitlines()] == rows, True)
    # The parser takes four bytes behind \u, a quote among them; so do those who look for a cut.
    odd = ",".join(['{"a":"\\u12"},{","b":1}', '{"a":"x","b":2}'] * 15000)
    lines, errors, _ = run("to-jsonl", '{"rows":[' + odd + "]}")
    expect("quotes in escapes", (errors, lines.count("\n")), ("", 30000))
    rows = ",".join(['{"a":1}'] * 60000)
    for end, count in ((",null,{},x]}", None), (",null" + ("," + rows) + "]}", 60000),
                       (",," + rows + "]}", 60000), (',{"b":2}],"rows":5} tail', 60001)):
        lines, errors, status = run("to-jsonl", '{"rows" : [' + rows + end)
        expect("end " + end[:20], (status, lines.count("\n") if status == 0 else None),
               (0, count) if count else (1, None))


def test_positions():
    """A fault is found where the parser finds it in the whole text."""
    source = random.Random(7)
    text = json.dumps({"rows": tricky_rows(3, 16000)}, indent=1, ensure_ascii=False).encode()
    refused = 0
    for _ in range(40):
        at = source.randrange(len(text))
        broken = text[:at] + source.choice([b'"', b"{", b"}", b"]", b"\\", b"x", b":", b"\0", b""]) + \
            (text[at + 1:] if source.random() < 0.8 else b"")
        whole = run("check", broken)
        pieces = run("stats", broken)
        refused += whole[2]
        expect(f"position of a fault at {at}", (pieces[1], pieces[2]),
               (whole[1].split("\n")[0] + "\n" if whole[2] else "", whole[2]))
    expect("some were refused", refused > 10, True)


# A process begins with the memory peak of the one that started it, so a small one does.
MEASURE = """import os, subprocess, sys
process = subprocess.Popen(sys.argv[1:], stdout=subprocess.DEVNULL)
_, status, usage = os.wait4(process.pid, 0)
print(status, usage.ru_maxrss * 1024)"""


def peak_memory(args, stdin_file):
    """The largest memory of one run, in bytes."""
    with open(stdin_file, "rb") as file:
        done = subprocess.run([sys.executable, "-c", MEASURE, QXRS, *args.split()], stdin=file,
                              capture_output=True, check=True)
    status, peak = map(int, done.stdout.split())
    expect("status of " + args, status, 0)
    return peak


def test_memory():
    """Where rows stream, memory does not grow with the input."""
    if os.environ.get("SANITIZED"):
        return  # they keep released memory
    write("long.csv", "a,b\n" + "1,some text that takes room\n" * 700000)
    size = os.path.getsize("long.csv")
    run("from-csv -o long.json long.csv")
    run("to-jsonl -o long.jsonl long.json")
    run("to-json -o array.json long.json")
    for args, file in (("from-csv", "long.csv"), ("from-tsv", "long.csv"), ("to-csv --columns a,b", "long.json"),
                       ("to-json", "long.json"), ("stats", "long.json"), ("from-jsonl", "long.jsonl"),
                       ("from-json", "array.json"), ("diff long.json -", "long.json")):
        peak = peak_memory(args, file)
        expect(f"{args}: {peak} bytes for an input of {size}", peak < size * 3 / 4, True)


# ---- Help ----


def subcommands():
    listed = re.search(r"Subcommands:\n(.*?)\n\n", run("--help")[0], re.S).group(1)
    names = re.findall(r"^  (\S+)", listed, re.M)
    return names + ["params build", "params read"]


def test_help():
    expect("version", re.fullmatch(r"qxrs \d+\.\d+\.\d+\n", run("--version")[0]) is not None, True)
    names = subcommands()
    expect("number of subcommands", len(names) > 15, True)
    run("from-csv -i -o planets.json " + DATA + "/planets.csv")
    os.symlink(os.path.dirname(QXRS), "bin")
    for name in [""] + names:
        text, errors, status = run(name + " --help")
        expect(name + " help", (errors, status), ("", 0))
        expect(name + " width", [line for line in text.split("\n") if len(line) > 100], [])
        expect(name + " exit status", len(re.findall(r"^Exit status: 0 .*, 2 ", text, re.M)), 1)
        examples = re.search(r"Examples:\n((?:  .*\n)+)", text).group(1).splitlines()
        expect(name + " examples", len(examples), 2)
        for line in examples:
            # Its files are not all there; the options have to be right.
            done = subprocess.run(["bash", "-c", "PATH=$PWD/bin:$PATH; " + line], capture_output=True,
                                  stdin=subprocess.DEVNULL, check=False)
            expect(f"usage of {line}", re.findall(b".*--help\\)", done.stderr), [])


def complete(line):
    """What bash offers behind `line`."""
    words = shlex.split(line) + ([""] if line.endswith(" ") else [])
    script = f"""PATH=$PWD/bin:$PATH; source <(qxrs completion)
COMP_WORDS=({" ".join(shlex.quote(word) for word in words)}); COMP_CWORD={len(words) - 1}; _qxrs
printf '%s\\n' "${{COMPREPLY[@]}}" """
    done = subprocess.run(["bash", "-ec", script], capture_output=True, check=True)
    return done.stdout.decode().split()


def test_self_description():
    """Completion and manual name exactly what --help names."""
    os.symlink(os.path.dirname(QXRS), "bin")
    manual, errors, _ = run("manual")
    expect("manual", errors, "")
    manual = manual.replace("\\-", "-")
    for name in subcommands():
        options = set(re.findall(r"^  (?:-\w,)?(--[a-z0-9-]+)", run(name + " --help")[0], re.M))
        expect("completion of " + name, set(complete(f"qxrs {name} --")), options)
        section = re.search(rf"^\.SS {name}\n(.*?)(?=^\.S|\Z)", manual, re.S | re.M).group(1)
        expect("manual of " + name, set(re.findall(r"^\\fB.*?(--[a-z0-9-]+)\\fR", section, re.M)), options)
    expect("commands", set(complete("qxrs params ")), {"build", "read", "--help"})
    expect("commands", complete("qxrs from-j"), ["from-json", "from-jsonl"])
    expect("files", complete("qxrs table --color never on"), ["one.json"])


GROUPS = {
    "cases": [test_cases, test_check],
    "files": [test_output_file, test_interrupted, test_round_trips, test_sql_tables],
    "terminal": [test_terminal, test_progress],
    "streaming": [test_batches, test_positions, test_memory],
    "help": [test_help, test_self_description],
}

if __name__ == "__main__":
    for test in GROUPS[sys.argv[1]]:
        with tempfile.TemporaryDirectory() as folder:
            os.chdir(folder)
            for file_name, content in FILES.items():
                write(file_name, content)
            with sqlite3.connect("world.db") as world:
                world.executescript(WORLD)
            world.close()
            test()
            os.chdir("/")
    sys.exit(1 if failures else 0)
