#!/usr/bin/env bash
# Checks the Debian packages of all architectures: packaging/check.sh BUILD_FOLDER...
#
# Each folder is the build of a package preset. lintian finds no error; dpkg accepts the packages of
# all architectures beside each other in one scratch system; programs in C++ and C are built against
# what lies there, in the ways the README names, and run, under qemu where the processor is another
# one; where it is not, so is one in Python, with the package and with a wheel, and gdb shows what
# programs hold; the tool runs.
#
# Needs no root: the scratch system is a folder with a package database of its own.
set -euo pipefail
cd "$(dirname "$0")/.."
source=$PWD

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
root=$scratch/root
mkdir -p "$root"/var/lib/dpkg/{info,updates,triggers}
touch "$root/var/lib/dpkg/status"

in_root() {
  dpkg --root="$root" --log="$scratch/dpkg.log" --force-not-root --force-depends \
    --force-script-chrootless --no-triggers "$@"
}

packages=()
for build in "$@"; do
  packages+=("$build"/packages/*.{deb,ddeb})
done

echo "lintian: ${#packages[@]} packages"
# The packages are our own, not Debian's: there is no request to package them that they could close.
lintian --fail-on error --suppress-tags initial-upload-closes-no-bugs "${packages[@]}"

in_root --add-architecture i386
in_root --add-architecture arm64
in_root --unpack "${packages[@]}" > "$scratch/unpack.log" 2>&1 || { cat "$scratch/unpack.log"; exit 1; }
beside=$(dpkg-query --admindir="$root/var/lib/dpkg" --show | wc -l)
if ((beside != ${#packages[@]})); then
  echo "Only $beside packages are there: some replaced others" >&2
  exit 1
fi
echo "dpkg: $beside packages beside each other"

for build in "$@"; do
  build=$(realpath "$build")
  toolchain=
  flags=
  cross=
  prefix=
  emulator=
  case $(dpkg-deb --field "$build"/packages/libqxrecordset1_*.deb Architecture) in
    amd64) multiarch=x86_64-linux-gnu ;;
    i386)
      toolchain=$source/cmake/x86-toolchain.cmake
      flags=-m32
      multiarch=i386-linux-gnu
      ;;
    arm64)
      cross=$source/build/cross/arm64
      toolchain=$cross/toolchain.cmake
      multiarch=aarch64-linux-gnu
      prefix=$cross/bin/$multiarch-
      emulator="qemu-aarch64-static -L $cross/usr/$multiarch"
      ;;
  esac
  ways=(refused find_package pkg_config)
  [[ $multiarch != x86_64-linux-gnu ]] || ways+=(wheel) # for the Python of this machine
  for way in "${ways[@]}"; do
    mkdir -p "$scratch/$multiarch"
    env CMAKE=cmake SOURCE="$source" SCRATCH="$scratch/$multiarch" PREFIX="$root/usr" \
      MULTIARCH="$multiarch" TOOLCHAIN="$toolchain" CC="${prefix}gcc" CXX="${prefix}g++" \
      CFLAGS=$flags CXXFLAGS=$flags EMULATOR="$emulator" \
      tests/consumer/consumer.sh "$way" > "$scratch/consumer.log" 2>&1 \
      || { cat "$scratch/consumer.log"; exit 1; }
    echo "$multiarch, $way: fine, $(grep -c "was born in" "$scratch/consumer.log") programs run"
  done

  if [[ -z $cross ]]; then
    # gdb finds the pretty printers and the debugging symbols. It looks for the printers by the path of
    # the library, which here is the scratch system's.
    mkdir -p "$scratch/auto-load$scratch"
    ln -sfn "$root/usr/share/gdb/auto-load" "$scratch/auto-load$root"
    library=$root/usr/lib/$multiarch
    # shellcheck disable=SC2086  # the flags are words
    c++ $flags -std=c++17 -g -I"$root/usr/include/qxrecordset" tests/gdb/Program.cpp \
      -o "$scratch/$multiarch/program" -L"$library" -lQXRecordSet -Wl,-rpath,"$library"
    env PROGRAM="$scratch/$multiarch/program" AUTO_LOAD="$scratch/auto-load" \
      DEBUG_FILES="$root/usr/lib/debug" python3 -B tests/gdb/gdb_test.py
    echo "$multiarch: gdb shows what the program holds"
  fi

  # A package that such a program goes into depends on ours, by the names that the program uses.
  (
    mkdir -p "$scratch/host/debian"
    cd "$scratch/host"
    printf 'Source: host\n\nPackage: host\nArchitecture: any\n' > debian/control
    dpkg-deb --raw-extract "$build"/packages/libqxrecordset1_*.deb "$multiarch"
    CROSS=$cross "$source/packaging/shlibdeps.sh" --ignore-missing-info -O -S"$multiarch" \
      -l"$multiarch/usr/lib/$multiarch" "$scratch/$multiarch/pkg_config/cpp_shared" \
      > depends 2> /dev/null
  )
  depends=$(cat "$scratch/host/depends")
  echo "$multiarch: $depends"
  version=$(dpkg-deb --field "$build"/packages/libqxrecordset1_*.deb Version)
  [[ $depends == *"libqxrecordset1 (>= ${version%-*})"* ]]
done

# What a newcomer does who has installed the packages: the commands of the pages, the way to the first
# own program among them.
env SOURCE="$source" INSTALLED="$root/usr" LIBDIR=lib/x86_64-linux-gnu TOOLCHAIN= PYTHON_LOADS= \
  QXRS="env LD_LIBRARY_PATH=$root/usr/lib/x86_64-linux-gnu $root/usr/bin/qxrs" \
  CC="$(command -v cc)" CXX="$(command -v c++)" CFLAGS= CXXFLAGS= ONLY=commands \
  python3 -B tests/docs/docs_test.py README.md docs/guide.md docs/scale.md

for program in tests/python/qxrecordset_test.py tests/consumer/project/consumer.py; do
  env PYTHONPATH="$root/usr/lib/python3/dist-packages" \
    LD_LIBRARY_PATH="$root/usr/lib/x86_64-linux-gnu" /usr/bin/python3 -B $program
done
echo "python3-qxrecordset: tested"

if [[ -x $root/usr/bin/qxrs ]]; then
  export LD_LIBRARY_PATH=$root/usr/lib/x86_64-linux-gnu
  "$root/usr/bin/qxrs" --version
  [[ $("$root/usr/bin/qxrs" from-csv -i examples/data/planets.csv | "$root/usr/bin/qxrs" get rows.2.name) == Earth ]]
  man --local-file "$root/usr/share/man/man1/qxrs.1.gz" 2> /dev/null | grep -q from-csv
fi
echo "packages: fine"
