#!/usr/bin/env bash
# Proves from the file itself that a built library or program carries its defences.
#
#   hardening.sh FILE
#
# The environment names the tools for the file's processor: READELF, OBJDUMP, NM.
set -euo pipefail

file=$1
failures=0

# claim TEXT PATTERN READELF-OPTION...: some line of what readelf says about the file matches.
claim() {
  local text=$1 pattern=$2
  shift 2
  # Not grep -q: readelf has to be read to its end, or its early death counts.
  if "$READELF" --wide "$@" "$file" | grep -E -- "$pattern" > /dev/null; then
    echo "yes  $text"
  else
    echo "NO   $text"
    failures=$((failures + 1))
  fi
}

claim "relocations become read-only (RELRO)" 'GNU_RELRO' --program-headers
claim "all symbols are bound at start (NOW)" 'BIND_NOW|FLAGS_1.*NOW' --dynamic
claim "the stack is not executable" 'GNU_STACK .* RW +0x' --program-headers
claim "position independent" 'Type: +DYN' --file-header
claim "stack frames are guarded" '__stack_chk_fail' --symbols
claim "checked variants of the C functions (FORTIFY)" '__[a-z]+_chk(@|$)' --symbols

# Control flow protection shows in the code: every function that can be reached from outside begins
# with ENDBR. (The note that would say so is dropped by the linker, because the system's start-up
# objects do not carry it.) Other processors than x86 have no such instruction.
if ! "$READELF" --file-header "$file" | grep -E 'Machine: .*(X86-64|80386)' > /dev/null; then
  exit $((failures != 0))
fi
unprotected=$("$OBJDUMP" --disassemble --no-show-raw-insn "$file" | awk -v file="$file" -v nm="$NM" '
  BEGIN {
    command = nm " --defined-only --extern-only -P " file
    while ((command | getline) > 0) if ($2 ~ /[TW]/ && $1 !~ /^_(init|fini|start)/) reachable[$1]
  }
  /^[0-9a-f]+ <.*>:$/ { name = substr($2, 2, length($2) - 3); begins = name in reachable; next }
  begins { begins = 0; seen++; if ($2 !~ /^endbr(32|64)$/) print name }
  END { if (!seen) print "(no function found)" }')
if [[ -z $unprotected ]]; then
  echo "yes  indirect jumps land on ENDBR only"
else
  echo "NO   indirect jumps land on ENDBR only: ${unprotected//$'\n'/ }"
  failures=$((failures + 1))
fi

exit $((failures != 0))
