#!/usr/bin/env bash
# Writes the symbols file of a library's package: symbols.sh LIBRARY PACKAGE VERSION
set -euo pipefail
soname=$(objdump -p "$1" | awk '$1 == "SONAME" { print $2 }')
echo "$soname $2 #MINVER#"
nm -D --defined-only -P "$1" | awk -v version="$3" '{ print " " $1 "@Base " version }' | LC_ALL=C sort -u
