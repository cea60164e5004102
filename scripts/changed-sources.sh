#!/usr/bin/env bash
# Lists the sources of some folders that changed, or of which a header changed: since origin/main; on
# that commit itself, or without it, in the last commit. What is not committed yet counts as changed.
#
#   changed-sources.sh BUILD FOLDER...   BUILD is a Ninja build of the present sources, which knows
#                                        what each object file was made from
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
shift

base=$(git merge-base HEAD origin/main 2> /dev/null || git rev-parse HEAD)
[ "$base" != "$(git rev-parse HEAD)" ] || base=$(git rev-parse --verify --quiet HEAD~1) || base=HEAD
changed=$({
  git diff --name-only "$base" -- '*.h' '*.cpp'
  git ls-files --others --exclude-standard -- '*.h' '*.cpp'
} | sort -u)

# An entry of `ninja -t deps` is a line for the object file and one, indented, for each file that it
# depends on, the source first.
ninja -C "$build" -t deps | awk -v root="$PWD/" -v changed="$changed" -v folders="$*" '
  BEGIN {
    count = split(changed, names, "\n")
    for (i = 1; i <= count; ++i) is_changed[names[i]] = 1
    count = split(folders, names, " ")
    for (i = 1; i <= count; ++i) is_wanted[names[i]] = 1
  }
  /^[^ ]/ { source = ""; next }
  NF == 1 {
    name = $1
    if (index(name, root) == 1) name = substr(name, length(root) + 1)
    if (source == "") {
      source = name
      split(source, parts, "/")
    }
    if (is_changed[name] && is_wanted[parts[1]]) found[source] = 1
  }
  END { for (source in found) print source }' | sort
