#!/usr/bin/env python3
# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# Tests pages of the documentation: docs_test.py PAGE..., each relative to the project's root.
#
#   ```cpp and ```c blocks with `int main`   are compiled and run; they must write the ```text block
#                                            that follows directly (nothing, when none does)
#   other ```cpp blocks                      are compiled, each as the body of a function
#   ```python blocks                         are run like programs, with the built library
#   ```js blocks                             are run by tests/npm, with the npm package
#   ```cmake blocks                          configure a project that has a host.cpp
#   ```sh blocks                             are run, in a folder with the program before them as
#                                            host.cpp or host.c and the database shop.db; of make and
#                                            cmake commands only targets and presets are looked at
#   other code blocks                        are not allowed
#   tables with a head out of TABLES         each row is computed anew and compared
#   links                                    must lead to a file of the project, and a heading of it
#
# The environment names the project and the compilers; see CMakeLists.txt. ONLY=commands leaves out
# what needs the built library: the commands are run beside an installed one.
"""Compiles, runs and compares what a page of the documentation shows."""

import os
import re
import shlex
import sqlite3
import subprocess
import sys
import tempfile
from pathlib import Path

SOURCE = Path(os.environ["SOURCE"]).resolve()
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Werror"]

INCLUDES = """
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <utility>

#include "json/JSON.h"
#include "json/JSONMessage.h"
#include "json/JSONSerialize.h"
#include "params/CParamsX.h"
#include "portable/CPortable.h"
#include "recordset/QXRecordSet.h"
#include "recordset/RS.h"
"""

# What the first two columns of a checked table mean, by its head: statements in which TEXT stands
# for the first column, as a string, and CODE for it as code. They set `result`, which the second
# column shows. Further columns are remarks.
TABLES = {
    ("JSON text", "Read as"):
        "JSON::Message m; result = \"refused\";"
        "if (m.Parse(TEXT)) { result.clear(); m.Serialize(result); }",
    ("Text loaded", "Written again"):
        "CQXRecordSet set(TEXT); result = set.GetString();",
    ("Calls on a new record set `set`", "`GetString()`"):
        "CQXRecordSet set; CODE; result = set.GetString();",
    ("Calls on a new writer `w`", "`String()`"):
        "JSON::Serialize w(64); w.CODE; result = w.String();",
    ("Text of a cell", "Written as"):
        "CQXRecordSet set; set.SetValue(\"c\", TEXT); result = set.GetString();",
    ("Number", "Written"):
        "char number[32]; DoubleToStr(CODE, number, 32); result = number;",
}


class Failure(Exception):
    """Something on the page is not true."""


class Block:
    """A fenced block: its language, its first line's number, its text, and the block behind it."""

    def __init__(self, language, line):
        self.language = language
        self.line = line
        self.lines = []
        self.follower = None

    @property
    def text(self):
        return "".join(line + "\n" for line in self.lines)

    def is_program(self):
        return re.search(r"\bint main\b", self.text) is not None


def read_page(path):
    """The blocks of a page, and its other lines as pairs of number and text."""
    blocks, prose, open_block, last = [], [], None, None
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if open_block is not None:
            if line == "```":
                open_block = None
            else:
                open_block.lines.append(line)
        elif line.startswith("```"):
            open_block = Block(line[3:].strip(), number + 1)
            if last is not None:
                last.follower = open_block
            last = open_block
            blocks.append(open_block)
        else:
            prose.append((number, line))
            if line.strip():
                last = None
    if open_block is not None:
        raise Failure(f"line {open_block.line - 1}: the block has no end")
    return blocks, prose


def run(line, command, **options):
    """What a command for that line of the page writes."""
    done = subprocess.run(command, capture_output=True, timeout=120, check=False, **options)
    if done.returncode != 0:
        raise Failure(f"line {line}: exit status {done.returncode} of {command[0]}\n"
                      f"{done.stdout.decode()}{done.stderr.decode()}")
    return done.stdout.decode("utf-8", "backslashreplace")


class Compiler:
    """Compiles and runs programs against the built library."""

    def __init__(self, page, folder):
        self.page = page
        self.folder = folder

    def compile(self, text, line, language, *options):
        c = language == "c"
        source = self.folder / f"line{line}.{language}"
        source.write_text(text, encoding="utf-8")
        run(line, [os.environ["CC" if c else "CXX"],
                   *shlex.split(os.environ["CFLAGS" if c else "CXXFLAGS"]),
                   "-std=c99" if c else "-std=c++17", *WARNINGS,
                   f"-I{SOURCE}", f"-I{os.environ['GENERATED']}", str(source), *options])

    def output_of(self, text, line, language):
        program = self.folder / f"line{line}"
        library = os.environ["LIBRARY"]
        self.compile(text, line, language, "-o", str(program), library,
                     f"-Wl,-rpath,{os.path.dirname(library)}")
        return run(line, [str(program)])

    def located(self, line, text):
        return f'#line {line} "{self.page}"\n{text}'


class Installation:
    """What someone has who installed the library: the build's installation and its tool."""

    def __init__(self, folder):
        self.folder = folder
        self.prefix = os.environ["INSTALLED"]
        commands = folder / "bin"
        commands.mkdir()
        for name, compiler, flags in (("c++", "CXX", "CXXFLAGS"), ("cc", "CC", "CFLAGS")):
            self.command(commands / name,
                         f'exec {os.environ[compiler]} {os.environ[flags]} "$@"')
        if os.environ["QXRS"]:
            self.command(commands / "qxrs", f'exec {os.environ["QXRS"]} "$@"')
        library = f"{self.prefix}/{os.environ['LIBDIR']}"
        self.environment = {
            **os.environ, "PATH": f"{commands}:{os.environ['PATH']}", "CXX": str(commands / "c++"),
            "CC": str(commands / "cc"), "LD_LIBRARY_PATH": library, "CMAKE_PREFIX_PATH": self.prefix,
            "PKG_CONFIG_PATH": f"{library}/pkgconfig"}
        with sqlite3.connect(folder / "shop.db") as shop:
            shop.executescript("CREATE TABLE article (name TEXT, price INTEGER);"
                               "INSERT INTO article VALUES ('lamp', 4990), ('bulb', 350);")
        shop.close()

    @staticmethod
    def command(path, text):
        path.write_text("#!/bin/sh\n" + text + "\n", encoding="utf-8")
        path.chmod(0o755)

    def run(self, line, *command, folder=None):
        return run(line, command, cwd=folder or self.folder, env=self.environment)


def check_project(installation, block):
    folder = installation.folder / f"project{block.line}"
    folder.mkdir()
    (folder / "host.cpp").write_text("int main() {}\n", encoding="utf-8")
    (folder / "CMakeLists.txt").write_text(
        "cmake_minimum_required(VERSION 3.25)\nproject(Host LANGUAGES CXX)\n"
        "add_executable(host host.cpp)\n" + block.text, encoding="utf-8")
    toolchain = [f"-DCMAKE_TOOLCHAIN_FILE={t}"] if (t := os.environ["TOOLCHAIN"]) else []
    installation.run(block.line, "cmake", "-B", "build", *toolchain, folder=folder)


def is_build_command(line, words):
    """Whether the line is for make or cmake; then its target or preset is looked for."""
    if words[:1] == ["make"]:
        run(line, ["make", "--dry-run", "--silent", *words[1:]], cwd=SOURCE)
    elif words[:1] == ["cmake"]:
        presets = re.findall(r'"([^"]+)"', run(line, ["cmake", "--list-presets"], cwd=SOURCE))
        named = [word.removeprefix("build/") for before, word in zip(words, words[1:])
                 if before == "--preset" or word.startswith("build/")]
        if not named or not set(named) <= set(presets):
            raise Failure(f"line {line}: no such preset: {named}")
    else:
        return False
    return True


def check_shell(installation, block, program):
    if program is not None:
        name = "host.c" if program.language == "c" else "host.cpp"
        (installation.folder / name).write_text(program.text, encoding="utf-8")
    commands = [text for line, text in enumerate(block.lines, block.line)
                if not is_build_command(line, shlex.split(text, comments=True))]
    if commands and (os.environ["QXRS"] or "qxrs " not in block.text):
        output = installation.run(block.line, "bash", "-euo", "pipefail", "-c", "\n".join(commands))
        if block.follower is not None and block.follower.language == "text":
            compare(block.line, block.follower.text, output)


def check_python(folder, block):
    script = folder / f"line{block.line}.py"
    script.write_text(block.text, encoding="utf-8")
    library = folder / "libQXRecordSet.so.1"
    if not library.exists():
        library.symlink_to(os.environ["LIBRARY"])
    environment = {**os.environ, "LD_LIBRARY_PATH": str(folder), "PYTHONUTF8": "1",
                   "PYTHONPATH": str(SOURCE / "python")}
    output = run(block.line, [sys.executable, "-B", str(script)], cwd=folder, env=environment)
    compare(block.line, block.follower.text, output)


def compare(line, wanted, actual):
    if wanted != actual:
        raise Failure(f"line {line}: the page shows\n{wanted}\nbut it is\n{actual}")


def check_program(compiler, block):
    follower = block.follower
    wanted = follower.text if follower is not None and follower.language == "text" else ""
    actual = compiler.output_of(compiler.located(block.line, block.text), block.line, block.language)
    compare(block.line, wanted, actual + "\n" * (actual[-1:] not in ("", "\n")))


def check_fragments(compiler, fragments):
    text = INCLUDES + "".join(
        f"void Fragment{block.line}();\nvoid Fragment{block.line}() {{\n"
        + compiler.located(block.line, block.text) + "}\n" for block in fragments)
    compiler.compile(text, fragments[0].line, "cpp", "-fsyntax-only", "-Wno-unused")


def cells_of(row):
    return [cell.strip() for cell in row.strip().strip("|").split("|")]


def table_rows(prose):
    """The rows of all checked tables: line number, statements, wanted result."""
    rows, statements = [], None
    for number, line in prose:
        if not line.startswith("|"):
            statements = None
            continue
        cells = cells_of(line)
        if statements is None:
            statements = TABLES.get(tuple(cells[:2]), "")
        elif statements and not set(line) <= set("|- :"):
            rows.append((number, statements, cells[0], cells[1]))
    return rows


def unquoted(cell, number):
    quoted = re.fullmatch(r"`` ?(.*?) ?``|`(.*)`", cell)
    if quoted:
        return quoted[1] if quoted[1] is not None else quoted[2]
    if cell in ("refused", "(empty)"):
        return cell.replace("(empty)", "")
    raise Failure(f"line {number}: the cell is neither code nor 'refused' nor '(empty)': {cell}")


def check_tables(compiler, rows):
    """Computes all rows in one program, which writes the results with a NUL behind each."""
    text = INCLUDES + "int main() {\nstd::string result;\n"
    for number, statements, given, _ in rows:
        given = unquoted(given, number)
        body = statements.replace("TEXT", f'R"~~({given})~~"').replace("CODE", given)
        text += "{\n" + compiler.located(number, body) + "\n}\nstd::cout << result << '\\0';\n"
    results = compiler.output_of(text + "}\n", rows[0][0], "cpp").split("\0")
    for (number, _, given, wanted), actual in zip(rows, results):
        if unquoted(wanted, number) != actual:
            raise Failure(f"line {number}: {given} gives {actual}")


def anchor_of(heading):
    """The name that a heading gets when the page is shown."""
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def fault_of_link(path, target):
    """What is wrong with a link of the page at `path`, or None."""
    if re.match(r"[a-z]+:", target):
        return None
    name, _, anchor = target.partition("#")
    linked = (path.parent / name).resolve() if name else path
    if not linked.exists() or SOURCE not in [linked, *linked.parents]:
        return "leads nowhere"
    headings = read_page(linked)[1] if anchor else []
    if anchor and anchor not in [anchor_of(t.lstrip("# ")) for _, t in headings if t[:1] == "#"]:
        return "names no heading"
    return None


def check_links(path, prose):
    faults = [f"line {number}: {target} {fault}" for number, line in prose
              for target in re.findall(r"\]\(([^)\s]+)\)", line)
              if (fault := fault_of_link(path, target))]
    if faults:
        raise Failure("\n".join(faults))


def faults_of_page(page):
    path = SOURCE / page
    failures = 0

    def attempt(check, *arguments):
        nonlocal failures
        try:
            check(*arguments)
        except Failure as failure:
            failures += 1
            print(f"{page}: {failure}")

    blocks, prose = read_page(path)
    rows = table_rows(prose)
    programs = [b for b in blocks if b.language in ("cpp", "c") and b.is_program()]
    fragments = [b for b in blocks if b.language == "cpp" and not b.is_program()]
    commands = [b for b in blocks if b.language in ("sh", "cmake")]
    scripts = [b for b in blocks if b.language == "python"]
    others = {b.language for b in blocks} - {"cpp", "c", "text", "sh", "cmake", "python", "js", ""}
    if others or any(b.language == "c" and not b.is_program() for b in blocks):
        failures += 1
        print(f"{page}: code that nothing checks: {others or 'a fragment of C'}")
    with tempfile.TemporaryDirectory() as folder:
        if os.environ.get("ONLY") != "commands":
            compiler = Compiler(page, Path(folder))
            for block in programs:
                attempt(check_program, compiler, block)
            if fragments:
                attempt(check_fragments, compiler, fragments)
            if rows:
                attempt(check_tables, compiler, rows)
        if os.environ["PYTHON_LOADS"]:
            for block in scripts:
                attempt(check_python, Path(folder), block)
        if commands and os.environ["INSTALLED"]:
            installation = Installation(Path(folder))
            for block in commands:
                before = [b for b in programs if b.line < block.line]
                if block.language == "cmake":
                    attempt(check_project, installation, block)
                else:
                    attempt(check_shell, installation, block, before[-1] if before else None)
    attempt(check_links, path, prose)
    print(f"{page}: {len(programs)} programs, {len(fragments)} fragments, {len(rows)} table rows, "
          f"{len(commands)} blocks of commands, {len(scripts)} scripts, {failures} faults")
    return failures


if __name__ == "__main__":
    sys.exit(1 if sum(faults_of_page(argument) for argument in sys.argv[1:]) else 0)
