#!/usr/bin/env python3
"""Plants faults in a copy of the library, one at a time; a fuzz target has to find each of them.

    fuzz/prove.py [--seconds 60] [--arch x64] [--faults 0,3]
    fuzz/prove.py --check    only: does each fault still have its place in the sources?

So a run of fuzz/run.py that finds nothing says something. Each program starts from its seeds alone.
What it finds must break no promise of the library without the fault. The status is 1 when a fault is
not found.
"""

import argparse
import shutil
import subprocess
import sys
import time

from run import SOURCE, TARGETS, execute

COPY = SOURCE / "build" / "fuzz" / "prove"

# What is wrong; the targets of which one has to find it; file, text and what replaces it.
FAULTS = [
    ("a bracket closes an object", ["parse"], "text/Grammar.h",
     "if (end.Peek(p) != '}') return", "if (end.Peek(p) != '}' && end.Peek(p) != ']') return"),
    ("the byte behind a text is read", ["parse"], "text/Grammar.h",
     "return !bTerminated && p == pEnd ? '\\0' : *p;", "return *p;"),
    ("a comma stays before a closing bracket", ["roundtrip"], "json/TreeSerialize.cpp",
     "    p[-1] = at.pLevel->Close();", "    *p++ = at.pLevel->Close();"),
    ("a text is stored beyond its NUL", ["recordset"], "recordset/RecordSetLoad.cpp",
     "Set(lRow, column, UpToNul(text), CQXRecordSet::QX_TEXT);",
     "Set(lRow, column, text, CQXRecordSet::QX_TEXT);"),
    ("a longer text is written over a shorter one", ["lives"], "recordset/TextStore.cpp",
     "PieceSize(nOldLength) == PieceSize(length);", "PieceSize(nOldLength) <= PieceSize(length);"),
    ("a reset keeps the list of free pieces", ["lives"], "recordset/TextStore.cpp",
     "  pFree_.reset();\n  blocks_.Reset();", "  blocks_.Reset();"),
    ("a released text stays in the list of large ones", ["lives"],
     "recordset/TextStore.cpp",
     "  if (pLarge->pNext != nullptr) pLarge->pNext->pPrevious = pLarge->pPrevious;\n", ""),
    ("a root is used again where the last copy left it", ["lives"], "json/Message.cpp",
     "  ReleaseRoot();\n  if (pArena == nullptr) pArena",
     "  if (pComposite != nullptr && eType == type && Storage::InPool(*pComposite)) {\n"
     "    pComposite->Clear();\n    pArena->Rewind();\n    return *pComposite;\n  }\n"
     "  ReleaseRoot();\n  if (pArena == nullptr) pArena"),
    ("what a lookup gives is not looked through", ["lives"], "json/ArrayValue.cpp",
     "return Items::HandOut(vValues) + ordinal;", "return Items::Data(vValues) + ordinal;"),
    ("names that siblings share are changed in place", ["lives"], "json/Sequence.h",
     "    if (eHome == Home::kShared) Detach();\n", ""),
    ("names behind sorted ones are not found", ["lives"], "json/NameFinder.cpp",
     "LookThrough(pNew, pEnd, name, nLength, bPlain)",
     "LookThrough(pNew, pNew, name, nLength, bPlain)"),
    ("a copied text points into its source", ["lives"], "json/TreeCopy.cpp",
     "Items::Make(pNew++, p->eType, Moved(p->pText),", "Items::Make(pNew++, p->eType, p->pText,"),
    ("a container in a pool gets a second owner", ["lives"], "json/ArrayValue.cpp",
     "if (pOwned != nullptr && Storage::InPool(*pOwned)) pOwned = pOwned->Clone(0);", ""),
    ("a string index reads texts that were released", ["lives"], "json/ArrayValue.cpp",
     'element.eType == jtString ? TextOf(element.pText) : "";',
     'element.eType == jtString ? TextOf(entry.pText) : "";'),
    ("a level beyond the 32nd forgets its objects", ["writer"], "json/Writer.cpp",
     "if (nDepth % kLevelsPerWord == 0) vOuterObjects.push_back(nObjectStack);",
     "if (nDepth % kLevelsPerWord == 0) vOuterObjects.push_back(0);"),
    ("a closed object is not forgotten", ["writer"], "json/Writer.cpp",
     "  nObjectStack >>= 1;\n  if (nDepth == 0) {", "  if (nDepth == 0) {"),
    ("a second header moves the parameters too far", ["params"], "params/CParamsX.cpp",
     "lOffset += lNewLength - headerLength;", "lOffset += lNewLength;"),
    ("a number beyond all integers is converted", ["flat"], "text/ReadDecimal.h",
     "if (value >= static_cast<double>(Limits::max())) return",
     "if (value > 2 * static_cast<double>(Limits::max())) return"),
    ("a real by path has 32 bits", ["flat"], "json/FlatInterface.cpp",
     "return value.AsReal();", "return value.AsDouble();"),
    ("rows behind the last text of a column have none", ["flat"], "recordset/ArrowExport.cpp",
     "  begin(range.lRows);\n", ""),
    ("a batch begins where the one before began", ["flat"], "recordset/ArrowExport.cpp",
     "  holder.lNext += lRows;\n", "  holder.lNext += lRows > 2 ? 2 : lRows;\n"),
    ("a comma asks for its bracket where there is none", ["pretty"], "json/PrettyPrint.cpp",
     "if (vIsArray.empty() || !vIsArray.back()) BreakLine", "if (!vIsArray.back()) BreakLine"),
]


def misplaced():
    """The faults whose text does not stand in its file once."""
    return [what for what, _, name, text, _ in FAULTS
            if (SOURCE / name).read_text().count(text) != 1]


def build(arch, target):
    subprocess.run(["cmake", "--build", "--preset", f"{arch}-fuzz", "--target", f"fuzz_{target}"],
                   cwd=COPY, check=True, stdout=subprocess.DEVNULL)
    return COPY / "build" / f"{arch}-fuzz" / "fuzz" / f"fuzz_{target}"


def copy_sources():
    """Copies what git would take; files that are the same stay, so that little is built again."""
    names = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard"],
                           cwd=SOURCE, check=True, capture_output=True, text=True).stdout
    for name in names.splitlines():
        source, target = SOURCE / name, COPY / name
        if not source.is_file():
            continue
        if not target.is_file() or target.read_bytes() != source.read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)


def find(arch, fault, seconds):
    """Gives the target that found the fault and its input, or None."""
    what, targets, name, text, replacement = fault
    file = COPY / name
    sound = file.read_text()
    targets = [target for target in targets if target in TARGETS]
    inputs = 0
    began = time.monotonic()
    try:
        file.write_text(sound.replace(text, replacement))
        for target in targets:
            program = build(arch, target)
            began = time.monotonic()
            outcome = execute(program, target, seconds, COPY / f"{target}-")
            inputs += outcome.inputs
            if outcome.found:
                how = f"{outcome.inputs:,} inputs" if outcome.inputs else "a seed"
                print(f"found  {what}: {target}, {time.monotonic() - began:.0f} s, {how}",
                      flush=True)
                return target, outcome.found[0]
            if outcome.problem:
                print(f"{target}: {outcome.problem}\n{outcome.output[-2000:]}", flush=True)
    finally:
        file.write_text(sound)
    print(f"MISSED {what}: {', '.join(targets) or 'no target'}, {inputs:,} inputs", flush=True)
    return None


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--seconds", type=int, default=60, help="within which a target finds a fault")
    parser.add_argument("--arch", default="x64")
    parser.add_argument("--faults", help="their numbers, from 0 on")
    parser.add_argument("--check", action="store_true", help="check the table, and end")
    options = parser.parse_args()
    for what in misplaced():
        print(f"MISSED {what}: the source does not hold its text once")
    if options.check or misplaced():
        return 1 if misplaced() else 0
    faults = [FAULTS[int(n)] for n in options.faults.split(",")] if options.faults else FAULTS
    copy_sources()
    subprocess.run(["cmake", "--preset", f"{options.arch}-fuzz"], cwd=COPY, check=True,
                   stdout=subprocess.DEVNULL)
    results = [find(options.arch, fault, options.seconds) for fault in faults]
    missed = results.count(None)
    for fault, result in zip(faults, results):
        if result is None:
            continue
        target, path = result
        if subprocess.run([build(options.arch, target), path], capture_output=True).returncode != 0:
            print(f"MISSED {fault[0]}: {path} fails without the fault, too", flush=True)
            missed += 1
    print(f"fuzz: {len(faults)} faults planted, {missed} missed")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
