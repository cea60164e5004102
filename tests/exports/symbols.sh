#!/usr/bin/env bash
# Compares what a shared library exports with the checked-in list, or writes that list. A name that
# only one architecture has (std::ptrdiff_t is spelt differently there) stands behind "x86: " or
# "x64: ".
#
#   symbols.sh compare x86|x64 LIBRARY LIST   status 1 and the difference when they are not the same
#   symbols.sh write X86-LIBRARY X64-LIBRARY LIST
set -euo pipefail
export LC_ALL=C # one order everywhere

# The exported names as C++ writes them, one a line; variants of one constructor or destructor have
# the same, and what comes with a vtable is not listed. The names of symbol versions, of which the library has none, would be those of type A.
exported_names() {
  "${NM:-nm}" -D --defined-only -P "$1" | awk '$2 != "A" && !/^_ZT[IS]/ { print $1 }' | c++filt |
    sed -E 's/std::__cxx11::basic_string<(w?)char(_t)?, [^>]*> *, [^>]*> *>/std::\1string/g' | sort -u
}

case $1 in
  write)
    {
      comm -12 <(exported_names "$2") <(exported_names "$3")
      comm -23 <(exported_names "$2") <(exported_names "$3") | sed 's/^/x86: /'
      comm -13 <(exported_names "$2") <(exported_names "$3") | sed 's/^/x64: /'
    } > "$4"
    echo "$4: $(wc -l < "$4") names"
    ;;
  compare)
    listed=$(sed -E "s/^$2: //; /^x[0-9]+: /d" "$4" | sort)
    if ! difference=$(diff -U0 --label "$4" --label "$3" - <(exported_names "$3") <<< "$listed"); then
      echo "The exported symbols changed (- gone, + new). If that is wanted, run 'make symbols':" >&2
      grep -E '^[-+][^-+]' <<< "$difference" >&2
      exit 1
    fi
    echo "$(wc -l <<< "$listed") exported names, as listed"
    ;;
esac
