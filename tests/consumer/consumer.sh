#!/usr/bin/env bash
# One way of using the library from outside, or the installation they start from:
#
#   consumer.sh install|headers|refused|find_package|pkg_config|add_subdirectory|wheel
#
# The environment says with what (see CMakeLists.txt): CMAKE, SOURCE, BUILD, SCRATCH, TOOLCHAIN, CC,
# CXX, CFLAGS, CXXFLAGS, and PREFIX and MULTIARCH where unpacked packages are used instead of an
# installation made here, and EMULATOR where the programs are another processor's.
set -euo pipefail

prefix=${PREFIX:-$SCRATCH/installed}
project=$SOURCE/tests/consumer/project

# What all programs print when all they read back is right.
expected='Ada was born in 1815'

# run COMMAND...: it succeeds and says what it should.
run() {
  local said status=0
  said=$(${EMULATOR:-} "$@") || status=$?
  if [[ $status != 0 || $said != "$expected" ]]; then
    echo "$*: status $status, said '$said' instead of '$expected'" >&2
    exit 1
  fi
  echo "$*: $said"
}

# Configures, builds and runs the consumers' own CMake project; further arguments go to CMake.
build_project() {
  local build=$SCRATCH/$1
  shift
  rm -rf "$build"
  "$CMAKE" -S "$project" -B "$build" -DCMAKE_BUILD_TYPE=Release \
    ${TOOLCHAIN:+"-DCMAKE_TOOLCHAIN_FILE=$TOOLCHAIN"} \
    -DCMAKE_C_COMPILER="$CC" -DCMAKE_CXX_COMPILER="$CXX" "$@"
  "$CMAKE" --build "$build" --parallel 2
  for program in cpp_shared cpp_static c_shared c_static; do
    run "$build/$program"
  done
}

use_install() {
  rm -rf "$prefix"
  "$CMAKE" --install "$BUILD" --prefix "$prefix"
}

# Statements that would store something else than they say do not compile against the installed
# headers; `constant` is a record set, too.
use_refused() {
  local compile=("$CXX" -std=c++17 -I"$prefix/include/qxrecordset" -fsyntax-only "$project/consumer.cpp")
  local statement said
  while read -r statement; do
    # shellcheck disable=SC2086  # the flags are words
    if said=$("${compile[@]}" $CXXFLAGS "-DREFUSED=$statement" 2>&1) || [[ $said != *deleted* ]]; then
      echo "'$statement' is not refused: $said" >&2
      exit 1
    fi
  done << 'STATEMENTS'
refusing.SetValue("c", 1.5)
refusing.SetValue("c", 'x')
refusing.SetValue("c", L"wide")
refusing.SetValue("c", static_cast<const unsigned char*>(nullptr))
refusing.SetValue("c", &constant)
CBeforeAfterRecord().SetFieldValues("c", "before", "after")
for (const CQXCell& cell : constant.Rows()[1]) static_cast<void>(cell)
STATEMENTS
  # shellcheck disable=SC2086
  "${compile[@]}" $CXXFLAGS '-DREFUSED=refusing.SetValue("c", constant.Rows().Count())'
  echo "what must not compile does not"
}

# Every installed header compiles on its own, all of them in newer C++, and exactly the public ones are
# installed.
use_headers() {
  cd "$prefix/include/qxrecordset"
  diff <(find . -name '*.h' | LC_ALL=C sort) - << 'LIST'
./json/JSON.h
./json/JSONMessage.h
./json/JSONSerialize.h
./json/JSONValue.h
./json/ParseError.h
./json/Sequence.h
./params/CParamsX.h
./portable/CPortable.h
./qxrecordset_export.h
./recordset/LoadResult.h
./recordset/QXRecordSet.h
./recordset/QXRows.h
./recordset/RS.h
LIST
  local warnings=(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
  local header
  while read -r header; do
    # shellcheck disable=SC2086  # the flags are words
    "$CXX" $CXXFLAGS -std=c++17 "${warnings[@]}" -I. -fsyntax-only -x c++ - <<< "#include \"$header\""
  done < <(find . -name '*.h')
  local standard
  for standard in c++20 c++23; do
    # shellcheck disable=SC2086  # the flags are words
    find . -name '*.h' -printf '#include "%P"\n' \
      | "$CXX" $CXXFLAGS -std=$standard "${warnings[@]}" -I. -fsyntax-only -x c++ -
  done
  for header in json/JSON.h recordset/RS.h; do
    # shellcheck disable=SC2086  # the flags are words
    "$CC" $CFLAGS -std=c99 "${warnings[@]}" -I. -fsyntax-only -x c - <<< "#include \"$header\""
  done
  echo "all headers compile on their own"
}

use_find_package() {
  build_project find_package -DCMAKE_PREFIX_PATH="$prefix"
}

# A parent project gets the two libraries and none of our tests, tools or install rules.
use_add_subdirectory() {
  build_project add_subdirectory -DQXRECORDSET_SOURCE="$SOURCE"
  if "$CMAKE" --build "$SCRATCH/add_subdirectory" --target help | grep -E 'test_|gtest|qxrs'; then
    echo "a parent project must not see these targets" >&2
    exit 1
  fi
}

# shellcheck disable=SC2046,SC2086  # the flags are words
use_pkg_config() {
  local out=$SCRATCH/pkg_config
  rm -rf "$out"
  mkdir "$out"
  PKG_CONFIG_PATH=$(dirname "$(find "$prefix/lib/${MULTIARCH:-}" -name qxrecordset.pc)")
  export PKG_CONFIG_PATH
  local libdir
  libdir=$(pkg-config --variable=libdir qxrecordset)

  $CXX $CXXFLAGS -std=c++17 "$project/consumer.cpp" -o "$out/cpp_shared" \
    $(pkg-config --cflags --libs qxrecordset) -Wl,-rpath,"$libdir"
  $CC $CFLAGS -std=c99 -pedantic -Wall -Wextra -Werror "$project/consumer.c" -o "$out/c_shared" \
    $(pkg-config --cflags --libs qxrecordset) -Wl,-rpath,"$libdir"
  $CXX $CXXFLAGS -std=c++17 "$project/consumer.cpp" -o "$out/cpp_static" \
    $(pkg-config --static --cflags --libs qxrecordset) -static
  $CC $CFLAGS -std=c99 "$project/consumer.c" -o "$out/c_static" \
    $(pkg-config --static --cflags --libs qxrecordset) -static

  for program in cpp_shared cpp_static c_shared c_static; do
    run "$out/$program"
  done
}

# The wheel of the Python package, made and installed by Debian's tools without a network, in an
# environment of its own beside Debian's pandas.
use_wheel() {
  local out=$SCRATCH/wheel
  rm -rf "$out"
  mkdir "$out"
  cp -r "$SOURCE/python" "$out/source" # the build writes into it
  cd "$out"
  /usr/bin/python3 -B -m pip wheel --quiet --no-index --no-build-isolation --no-deps --no-cache-dir \
    --wheel-dir . ./source
  /usr/bin/python3 -m venv --without-pip --system-site-packages venv
  venv/bin/python -B -m pip install --quiet --no-index --no-deps --no-cache-dir ./*.whl
  local libdir
  libdir=$(dirname "$(find "$prefix/lib/${MULTIARCH:-}" -name libQXRecordSet.so.1)")
  export LD_LIBRARY_PATH=$libdir
  run venv/bin/python -B "$project/consumer.py"
  venv/bin/python -c 'import importlib.metadata, qxrecordset
assert importlib.metadata.version("qxrecordset") == qxrecordset.__version__
assert "/venv/" in qxrecordset.__file__, qxrecordset.__file__'
  venv/bin/python -B "$SOURCE/tests/python/qxrecordset_test.py"
}

"use_$1"
