#!/usr/bin/env bash
# Writes the symbols file of a library's package: symbols.sh LIBRARY PACKAGE VERSION
#
# The environment names the tools for the library's processor: OBJDUMP, NM.
set -euo pipefail
soname=$("$OBJDUMP" -p "$1" | awk '$1 == "SONAME" { print $2 }')
echo "$soname $2 #MINVER#"
"$NM" -D --defined-only -P "$1" | awk -v version="$3" '{ print " " $1 "@Base " version }' | LC_ALL=C sort -u
