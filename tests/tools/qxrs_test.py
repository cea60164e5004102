# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# Tests the tool by running it: qxrs_test.py GROUP, with the tool in $QXRS and the example data in
# $DATA. The single command lines are in cases.py; here is what a table cannot say.

import gzip
import json
import os
import random
import re
import select
import shlex
import shutil
import signal
import sqlite3
import stat
import subprocess
import sys
import tempfile
import time

from cases import CASES, FILES, ODBC, REFUSED, WORLD

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


def read_bytes(name):
    with open(name, "rb") as file:
        return file.read()


def read(name):
    with open(name, encoding="utf-8", newline="") as file:
        return file.read()


# ---- The tables ----


def test_cases():
    for args, stdin, stdout, *rest in CASES:
        stderr, status = rest + ["", 0][len(rest):]
        expect(args, run(args.replace("ODBC", ODBC), stdin), (stdout, stderr and "qxrs: " + stderr, status))
    # An integer that fits the tool's long stays one, whatever the architecture.
    big = 2 ** (int(os.environ["LONG_BITS"]) - 1)
    expect("largest long", run("from-csv -i", f"a,b\n{big - 1},{big}\n")[0],
           f'{{"a":{big - 1},"b":"{big}"}}\n')


def test_check():
    for text, message, shown, caret in REFUSED:
        complaint = f"qxrs: standard input: {message}\n  {shown}\n  {' ' * caret}^\n"
        expect(text, run("check", text), ("", complaint, 1))


# ---- Files and round trips ----


def test_output_file():
    write("t.txt", "old")
    write("r.csv", "a\n" * 200000)
    os.chmod("t.txt", 0o640)
    os.symlink("t.txt", "link")
    expect("a failure", run("table -o link bad.json")[2], 1)
    expect("a failure keeps the file", read("t.txt"), "old")
    expect("-o", run("to-csv -o link one.json"), ("", "", 0))
    expect("-o writes", (os.path.islink("link"), read("t.txt")), (True, "name,born\nAda,1815\n"))
    expect("-o keeps the mode", stat.S_IMODE(os.stat("t.txt").st_mode), 0o640)
    run("from-csv -o t.txt t.txt")
    expect("input and output may be the same", read("t.txt"), '{"name":"Ada","born":"1815"}\n')
    expect("nothing is left behind", [f for f in os.listdir() if f.count(".") > 1], [])

    for args in ("table one.json", "to-csv one.json", "check one.json", "get . one.json", "manual", "--help"):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([QXRS, *args.split()], stdout=full, stderr=subprocess.PIPE)
        expect("full disk " + args, (done.stderr[:34], done.returncode), (b"qxrs: cannot write standard output", 1))
    done = subprocess.run(["bash", "-c", "$QXRS convert r.csv - --to csv | head -n 1; exit ${PIPESTATUS[0]}"],
                          stdout=subprocess.PIPE)
    expect("closed pipe", (done.stdout, done.returncode), (b"a\n", 128 + signal.SIGPIPE))


def wait_for(condition, seconds=20):
    """Whether the condition came true in time."""
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.01)
    return True


def test_interrupted():
    """Ended from outside, or by a failure, the tool leaves no half file and no half table."""
    run("to-sql old.db t", '{"a":1}')
    for args, left in (("convert --from csv - late.json", []), ("convert --from csv - late.db", []),
                       ("convert --from csv - old.db --to-table u", ["old.db"])):
        name = args.split()[4].split(".")[0]
        with subprocess.Popen([QXRS, *args.split()], stdin=subprocess.PIPE) as process:
            process.stdin.write(b"a,b\n" + b"1,x\n" * 1000)
            process.stdin.flush()
            found = wait_for(lambda: any(f.startswith(name + ".") and f not in left for f in os.listdir()))
            expect(args + " begins", found, True)
            process.terminate()
        expect("ended by the signal", process.returncode, -signal.SIGTERM)
        # A journal belongs to the database until that is written again.
        expect("nothing is left behind",
               [f for f in os.listdir() if f.startswith(name) and not f.endswith("-journal")], left)
    expect("a failure", run("convert --from csv - old.db --to-table u", "a,b\n1,2\n3\n")[2], 1)
    expect("tables", run("from-sql old.db 'SELECT name FROM sqlite_schema'")[0], '{"name":"t"}\n')
    expect("databases", [f for f in os.listdir() if f.startswith("old")], ["old.db"])


def test_round_trips():
    for name in ("planets", "countries", "elements"):
        source = f"{DATA}/{name}.csv"
        records = run(f"from-csv -i {source}")[0]
        expect(name + " csv", run("to-csv", records)[0], read(source))
        for form in ("tsv --null '\\N'", "json", "jsonl"):
            text, errors, _ = run(f"to-{form}", records)
            expect(name + form + errors, run(f"from-{form}{' -i' if 'tsv' in form else ''}", text)[0], records)
        texts = run(f"from-csv {source}")[0]
        expect(name + " normalize", json.loads(run("normalize", texts)[0]), json.loads(texts))
        expect(name + " diff", run(f"diff {source} -", texts), ("", "", 0))


# What people publish: quotes, line breaks, big integers, nulls, nested values, characters of all kinds.
PUBLISHED_CSV = ('id,"the name, quoted",zip,amount,note\n1,Ada,01234,12345678901234567890,"line one\nline ""two"""\n'
                 '2,,98765,0.10,\n3,"",00000,-1e-7,😀 e\u0301 \u202e\n4, spaced ,1,+1,\u0007\t\n')
PUBLISHED_LINES = ('{"id":12345678901234567890,"r":1.10,"e":1e400,"s":"\\u00e9 \\ud83d\\ude00 😀\\/","n":null,'
                   '"o":{"b":[1.0,{"a":[]}],"a":-0},"t":true}\n{"new":"","id":-1,"n":"a\\"b"}\n{}\n')


def test_published():
    records = run("from-csv", PUBLISHED_CSV)[0]
    expect("CSV", run("to-csv", records)[0], PUBLISHED_CSV)
    crlf = "\ufeff" + PUBLISHED_CSV.replace("\n", "\r\n")
    expect("CSV of other systems", run("to-csv --bom --crlf", run("from-csv", crlf)[0])[0].replace("\r\n", "\n"),
           "\ufeff" + PUBLISHED_CSV)
    expect("TSV", run("from-tsv --null '\\N'", run("to-tsv --null '\\N'", records)[0])[0], records)
    # A pair of surrogates becomes one character for hosts, and stays one for others.
    pair = PUBLISHED_LINES.replace("\\ud83d\\ude00", "😀")
    expect("JSON Lines", run("to-jsonl", run("from-jsonl", PUBLISHED_LINES)[0])[0], pair)
    expect("JSON Lines to JSON Lines", run("convert --from jsonl --to jsonl - -", PUBLISHED_LINES)[0],
           PUBLISHED_LINES)
    for data, form in ((PUBLISHED_CSV, "csv"), (PUBLISHED_LINES, "jsonl")):
        write("plain." + form, data)
        for ending in (".gz", ".zst"):
            run(f"convert plain.{form} packed.{form}{ending}")
            expect("compressed", read_bytes(f"packed.{form}{ending}")[:2] in (b"\x1f\x8b", b"\x28\xb5"), True)
            expect(form + ending, run(f"convert packed.{form}{ending} - --to {form}")[0], data)
            cut = read_bytes(f"packed.{form}{ending}")[:-9]
            _, errors, status = run(f"convert - - --from {form} --to {form}", cut)
            expect("cut " + ending, ("damaged or end too soon" in errors, status), (True, 1))
    expect("members of gzip", run("from-csv", gzip.compress(b"a\n") + gzip.compress(b"1\n"))[0], '{"a":"1"}\n')


def schema(name):
    with sqlite3.connect(name) as database:
        tables = [row[0] for row in database.execute("SELECT name FROM sqlite_schema WHERE type = 'table'")]
        found = {table: (database.execute(f"PRAGMA table_info('{table}')").fetchall(),
                         database.execute(f"SELECT * FROM '{table}'").fetchall()) for table in tables}
    database.close()
    return found


def test_databases():
    """From database to database: rows, kinds, declared types, keys."""
    for name in ("big", "keys", "plain"):
        records = run(f"from-sql world.db 'SELECT * FROM {name}'")[0]
        expect(name + " to-sql", run(f"to-sql through.db {name}", records), ("", "", 0))
        expect(name + " convert", run(f"convert world.db direct.db --table {name}"), ("", "", 0))
    run("convert world.db direct.db --table t")  # has a boolean that is none, which text cannot tell
    world = schema("world.db")
    expect("in one step", schema("direct.db"), world)
    del world["t"]
    expect("through text", schema("through.db"), world)


# ---- Terminals ----


def run_on_terminal(command, **environment):
    """What a terminal of 40 columns gets from a shell command."""
    done = subprocess.run(["script", "-qec", "stty cols 40 -onlcr; " + command, "/dev/null"],
                          stdin=subprocess.DEVNULL, capture_output=True, check=False,
                          env={"PATH": os.environ["PATH"], "QXRS": QXRS, "TERM": "xterm", **environment})
    return done.stdout.decode()


def test_terminal():
    write("wide.json", json.dumps({"a": "x" * 30, "b": "y" * 30}))
    head = "a" + " " * 20 + "b"
    table = head + "\n" + "-" * 19 + "  " + "-" * 19 + "\n" + "x" * 18 + "…  " + "y" * 18 + "…\n"
    bold = table.replace(head, "\x1b[1m" + head + "\x1b[0m")
    for options, environment, expected in (
            ("", {}, bold), ("", {"NO_COLOR": "1"}, table), ("", {"NO_COLOR": ""}, bold),
            ("--color always", {"NO_COLOR": "1"}, bold), ("", {"TERM": "dumb"}, table),
            ("--color never", {}, table)):
        expect(f"table {options} {environment}",
               run_on_terminal(f"$QXRS table {options} wide.json", **environment), expected)


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
    expect("short work on a terminal", run_on_terminal("$QXRS stats -o s.txt one.json"), "")
    # Nothing when piped, and nothing when not wanted, however long the work: the input waits.
    slow = "(cat long.json; sleep 0.7; cat long.json) | $QXRS get rows.1.a"
    shown = run_on_terminal(slow)
    expect("on a terminal " + shown,
           re.fullmatch(r"(\r0\.\d MB\x1b\[K)+\r\x1b\[K1\n", shown) is not None, True)
    done = subprocess.run(["sh", "-c", slow], capture_output=True, check=False)
    expect("piped", (done.stdout, done.stderr), (b"1\n", b""))


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
        records = run("from-json", json.dumps(rows, indent=indent, ensure_ascii=False))[0]
        for text in (records, json.dumps({"rows": rows, "more": [1]}, indent=indent, ensure_ascii=False)):
            lines = run("to-jsonl", text)[0].splitlines()
            expect(f"rows {seed}", [json.loads(line) for line in lines] == rows, True)
    # The parser takes four bytes behind \u, a quote among them; so do those who look for a cut.
    odd = ",".join(['{"a":"\\u12"},{","b":1}', '{"a":"x","b":2}'] * 15000)
    lines, errors, _ = run("to-jsonl", '{"rows":[' + odd + "]}")
    expect("quotes in escapes", (errors, lines.count("\n")), ("", 30000))
    rows = ",".join(['{"a":1}'] * 60000)
    for end, count in ((",null]}", None), (",," + rows + "]}", None), ("", None), ("]", None), ("]}x", None),
                       (',{"b":2}],"rows":5}\n', 60001)):
        lines, _, status = run("to-jsonl", '{"rows" : [' + rows + end)
        expect("end " + end[:20], None if status else lines.count("\n"), count)


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
        if "is no object" in pieces[1]:
            continue  # seen a little earlier
        expect(f"position of a fault at {at}", (pieces[1], pieces[2]),
               (whole[1].split("\n")[0] + "\n" if whole[2] else "", whole[2]))
    expect("some were refused", refused > 10, True)


def test_memory():
    """Where rows stream, memory does not grow with the input, whatever columns the rows bring."""
    if os.environ.get("SANITIZED"):
        return  # they keep released memory
    write("long.csv", "a,b\n" + "1,some text that takes room\n" * 1200000)
    run("convert -i long.csv long.rs")
    run("convert long.rs long.jsonl.gz")
    write("late.jsonl", read("long.rs")[9:-3].replace("},{", "}\n{") + '\n{"late":[1.5]}\n')
    size, limit = os.path.getsize("late.jsonl"), 24000
    expect("more than the limit", size > limit * 1024, True)
    for args in ("from-csv long.csv", "from-csv -i long.csv", "to-csv late.jsonl",
                 "to-json long.rs", "to-tsv long.jsonl.gz", "stats late.jsonl", "diff long.rs long.rs",
                 "diff -k a,b -q long.rs long.rs", "convert late.jsonl late.db", "convert late.db - --to csv",
                 "convert -i long.csv late.csv.zst", "sort --by b,a late.jsonl", "tail late.jsonl",
                 "table -w 40 long.csv", "sql 'SELECT a, count(*) FROM x GROUP BY 1' x=late.jsonl"):
        limited = f"ulimit -d {limit}; {QXRS} {args} > /dev/null"
        done = subprocess.run(["bash", "-c", limited], stderr=subprocess.PIPE, check=False)
        expect(limited, (done.stderr, done.returncode), (b"", 0))


def test_live():
    """What is wanted of a pipe that stays open comes without waiting for more."""
    for args, sent, expected in (("head -n 2 --from csv --to jsonl", b"a\n1\n2\n", b'{"a":"1"}\n{"a":"2"}\n'),
                                 ("table -n 1 --from jsonl", b'{"a":1}\n', b"a\n-\n1\n"),
                                 ("convert --from json --to csv --unbuffered - -", b'[{"a":1},{"a":2}', b"a\n1\n2\n"),
                                 ("from-csv --unbuffered", b"a\n1\n2\n", b'{"rows":[{"a":"1"},{"a":"2"}')):
        with subprocess.Popen([QXRS, *args.split()], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as process:
            process.stdin.write(sent)
            process.stdin.flush()
            got = b""
            while len(got) < len(expected) and select.select([process.stdout], [], [], 20)[0]:
                piece = os.read(process.stdout.fileno(), 4096)
                got += piece
                if not piece:
                    break
            expect(args, got, expected)
            process.kill()


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
        expect(name + " width", [line for line in text.split("\n") if len(line) > 80], [])
        expect(name + " texts", re.findall(r"^  \S+(?: [A-Z]+)? *\n(?! {9})", text, re.M), [])
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
    page = subprocess.run(["groff", "-man", "-Tutf8", "-P-cbou", "-rLL=80n"], input=manual.encode(),
                          capture_output=True, check=True).stdout.decode()
    expect("manual's width", [line for line in page.split("\n") if len(line) > 80], [])
    manual = manual.replace("\\-", "-")
    for name in subcommands():
        options = set(re.findall(r"^  (?:-\w,)?(--[a-z0-9-]+)", run(name + " --help")[0], re.M))
        expect("completion of " + name, set(complete(f"qxrs {name} --")), options)
        section = re.search(rf"^\.SS {name}\n(.*?)(?=^\.S|\Z)", manual, re.S | re.M).group(1)
        expect("manual of " + name, set(re.findall(r"^\\fB.*?(--[a-z0-9-]+)\\fR", section, re.M)), options)
    expect("commands", set(complete("qxrs params ")), {"build", "read", "--help"})
    expect("commands", complete("qxrs from-j"), ["from-json", "from-jsonl"])
    expect("files", complete("qxrs table --color never on"), ["one.json"])
    for shell in ("zsh", "fish"):
        if shutil.which(shell):
            done = subprocess.run([shell, "-n"], input=run("completion " + shell)[0].encode(),
                                  capture_output=True, check=False)
            expect("completion of " + shell, (done.stderr, done.returncode), (b"", 0))


GROUPS = {
    "cases": [test_cases, test_check],
    "files": [test_output_file, test_interrupted, test_round_trips, test_published, test_databases],
    "terminal": [test_terminal, test_progress],
    "streaming": [test_batches, test_positions, test_memory, test_live],
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
