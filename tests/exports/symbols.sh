#!/usr/bin/env bash
# Compares the names a shared library exports with a checked-in list, or writes that list.
#
#   symbols.sh compare LIBRARY LIST   status 1 and the difference when they are not the same
#   symbols.sh write LIBRARY LIST
set -euo pipefail

# The exported names, one a line, in byte order whatever the locale. The names of symbol versions,
# of which the library has none, would be the lines of type A.
exported_names() {
  nm -D --defined-only -P "$1" | awk '$2 != "A" { print $1 }' | LC_ALL=C sort -u
}

if (($# != 3)); then
  echo "usage: symbols.sh compare|write LIBRARY LIST" >&2
  exit 2
fi
library=$2
list=$3

case $1 in
  write)
    exported_names "$library" > "$list"
    echo "$list: $(wc -l < "$list") names"
    ;;
  compare)
    if [[ ! -s $list ]]; then
      echo "$list is missing or empty: write it with 'make symbols'" >&2
      exit 1
    fi
    if ! difference=$(diff --label "$list" --label "$library" -U0 "$list" <(exported_names "$library")); then
      echo "The exported symbols changed (- gone, + new). If that is wanted, run 'make symbols':" >&2
      grep -E '^[-+][^-+]' <<< "$difference" | c++filt >&2
      exit 1
    fi
    echo "$(wc -l < "$list") exported names, as listed"
    ;;
  *)
    echo "usage: symbols.sh compare|write LIBRARY LIST" >&2
    exit 2
    ;;
esac
