#!/usr/bin/env bash
# Unpacks Debian's cross compiler for another processor into build/cross/ARCHITECTURE, and writes the
# file there by which CMake uses it.
#
#   scripts/cross-toolchain.sh arm64|armhf|s390x|riscv64
#
# Nothing is installed: as Debian packages, cross compilers exclude g++-multilib, which the 32-bit
# builds need. Does nothing, at once, when the folder is there.
#
#   toolchain.cmake   for CMAKE_TOOLCHAIN_FILE; programs of the target run under qemu
#   bin/              the tools, each told where its own libraries are and what is the root
#   usr/              what was unpacked
#   shlibs            which packages of the target have the runtime libraries, for dpkg-shlibdeps
set -euo pipefail
cd "$(dirname "$0")/.."

architecture=${1:-}
flags=
case $architecture in
  arm64) triplet=aarch64-linux-gnu processor=aarch64 ;;
  # NEON is what 32-bit ARM may have; the plain version is tested by test_nosimd.
  armhf) triplet=arm-linux-gnueabihf processor=arm flags=-mfpu=neon ;;
  s390x | riscv64) triplet=$architecture-linux-gnu processor=$architecture ;;
  *)
    echo "usage: cross-toolchain.sh arm64|armhf|s390x|riscv64" >&2
    exit 2
    ;;
esac

root=$PWD/build/cross/$architecture
if [[ -e $root/toolchain.cmake ]]; then
  exit 0
fi
rm -rf "$root"
mkdir -p "$root/bin" "$root/packages"

# The compiler and what only cross compilers need; the rest came with the system's own.
mapfile -t packages < <(apt-cache depends --recurse --no-recommends --no-suggests --no-conflicts \
  --no-breaks --no-replaces --no-enhances "g++-$triplet" \
  | grep -E "^[a-z].*(-cross(-base.*)?|$triplet(-base)?)$")
if ((${#packages[@]} == 0)); then
  echo "apt knows no g++-$triplet: call apt-get update, or it is not for this system" >&2
  exit 1
fi
echo "Unpacking ${#packages[@]} packages of g++-$triplet into ${root#"$PWD/"}"
(cd "$root/packages" && apt-get download -qq -o APT::Sandbox::User=root "${packages[@]}")
for package in "$root"/packages/*.deb; do
  dpkg-deb --extract "$package" "$root"
  # A dependency without a version is one of the version that is linked with here.
  version=$(dpkg-deb --field "$package" Version)
  dpkg-deb --info "$package" shlibs 2> /dev/null \
    | sed -E "s/:$architecture//; /\)$/! s/$/ (>= ${version%-*})/" >> "$root/shlibs" || true
done
rm -r "$root/packages"
ln -s /usr/include/nlohmann "$root/usr/include/" # headers only: the tests', for every processor

for tool in "$root/usr/bin/$triplet"-*; do
  sysroot=
  if [[ $tool =~ -(gcc|g\+\+)$ ]]; then sysroot=" --sysroot='$root'"; fi
  wrapper=$root/bin/${tool##*/}
  printf '#!/bin/sh\nLD_LIBRARY_PATH='\''%s'\'' exec '\''%s'\''%s "$@"\n' \
    "$root/usr/lib/$(gcc -print-multiarch)" "$tool" "$sysroot" > "$wrapper"
  chmod +x "$wrapper"
done

# Programs are the system's; packages of CMake are those that a project names itself.
cat > "$root/toolchain.cmake" << END
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR $processor)
set(CMAKE_LIBRARY_ARCHITECTURE $triplet)
set(CMAKE_C_COMPILER $root/bin/$triplet-gcc)
set(CMAKE_CXX_COMPILER $root/bin/$triplet-g++)
set(CMAKE_C_FLAGS_INIT "$flags")
set(CMAKE_CXX_FLAGS_INIT "$flags")
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-$processor-static -L $root/usr/$triplet)
set(CMAKE_FIND_ROOT_PATH $root)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
END
