#!/usr/bin/env bash
# Counts the instructions that the library executes for each cell, by valgrind: figures that do not
# depend on what else the machine does.
#
#   bench/instructions.sh [SOURCE [CXXFLAGS]]
#
# SOURCE is the project's folder, or a copy in which something was changed to see what it brings.
set -euo pipefail
source=$(realpath "${1:-$(dirname "$0")/..}")
flags=${2:-}

for arch in x64 x86; do
  build=$source/build/instructions-$arch
  (cd "$source" && cmake --preset $arch -B "$build" -DQXRECORDSET_BUILD_BENCH=ON \
    -DQXRECORDSET_BUILD_TESTS=OFF -DQXRECORDSET_BUILD_TOOLS=OFF -DQXRECORDSET_BUILD_EXAMPLES=OFF \
    "-DCMAKE_CXX_FLAGS_RELEASE=-O2 -DNDEBUG $flags" > /dev/null
    cmake --build "$build" --target bench_instructions --parallel "${JOBS:-$(nproc)}" > /dev/null)
  printf '%s:' $arch
  for work in "parse 1000" "load 1000" "read 1000" "write 1000" "fill 1000" "cycle 1" "cycle 10" \
    "cycle 100" "cycle 1000"; do
    # shellcheck disable=SC2086 # a work and its rows are two arguments
    said=$(valgrind --tool=callgrind --callgrind-out-file=/dev/null --toggle-collect='Measured*' \
      "$build/bench/bench_instructions" $work 2>&1)
    cells=$(grep -E '^[0-9]+$' <<< "$said")
    total=$(sed -nE 's/.*Collected : ([0-9]+).*/\1/p' <<< "$said")
    awk -v work="$work" -v n="$total" -v c="$cells" 'BEGIN { printf "  %s %.1f", work, n / c }'
  done
  echo
done
