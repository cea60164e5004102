#!/usr/bin/env bash
# Installs the Debian packages that a step of this project needs and the system lacks.
#
#   scripts/install-deps.sh GROUP...
#
# Does nothing, at once, when nothing is missing. Otherwise it needs root or sudo; without them it
# names the packages and gives status 1.
set -euo pipefail

# The packages of a group.
packages_of() {
  case $1 in
    build) echo g++ cmake ninja-build make pkg-config binutils ;;
    # The 32-bit half of the compiler, GoogleTest as library and as source, what runs the tool, and
    # what judges the writer's text and shows what the pretty printers do, what makes a wheel, and
    # what the pages show.
    tests) echo g++-multilib libgtest-dev googletest python3 python3-pandas nlohmann-json3-dev gdb \
      python3-pip python3-setuptools python3-wheel parallel ;;
    tools) echo libcli11-dev libsqlite3-dev libarchive-dev unixodbc-dev libsqliteodbc odbcinst groff-base ;;
    fmt) echo git clang-format-14 ;;
    tidy) echo clang-tidy-14 ;;
    cppcheck) echo cppcheck ;;
    bench) echo libbenchmark-dev libsimdjson-dev rapidjson-dev nlohmann-json3-dev python3 ;;
    bench-tool) echo miller jq sqlite3 python3 ;;
    databases) echo postgresql odbc-postgresql mariadb-server odbc-mariadb util-linux ;;
    report) echo python3-matplotlib ;;
    coverage) echo gcovr ;;
    memcheck) echo valgrind ;;
    docs) echo doxygen doxygen-awesome-css python3 ;;
    packages) echo dpkg-dev file gzip lintian man-db pkg-config ;;
    clang) echo clang-14 libc++-14-dev libc++abi-14-dev ;;
    # What runs programs of other processors; their compilers are unpacked by cross-toolchain.sh.
    cross) echo qemu-user-static apt dpkg ;;
    cluster) echo python3-distributed python3-pandas sqlite3 ;;
    # WebAssembly; node runs its tests, which need npm, too. Where node came with npm, it is no package.
    wasm) echo emscripten cmake ninja-build nodejs ;;
    npm) echo npm ;;
    browser) echo chromium ;;
    # The compiler, and its fuzzer and sanitizers for both architectures.
    fuzz) echo clang-14 libclang-rt-14-dev python3 ;;
    *)
      echo "install-deps.sh: unknown group '$1'" >&2
      return 2
      ;;
  esac
}

is_installed() {
  [[ $(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
}

missing=()
for group in "$@"; do
  packages=$(packages_of "$group")
  for package in $packages; do
    is_installed "$package" || missing+=("$package")
  done
done
if ((${#missing[@]} == 0)); then
  exit 0
fi

sudo=()
if ((EUID != 0)); then
  if ! sudo -n true 2>/dev/null && ! { [[ -t 0 ]] && command -v sudo >/dev/null; }; then
    echo "Missing packages; install them as root: apt-get install ${missing[*]}" >&2
    exit 1
  fi
  sudo=(sudo)
fi

echo "Installing ${missing[*]}"
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
