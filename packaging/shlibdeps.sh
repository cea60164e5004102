#!/usr/bin/env bash
# dpkg-shlibdeps for a 64-bit system that builds for i386, too. Such a system has the 32-bit runtime
# libraries in packages of its own architecture. An i386 system has the same libraries, by the same
# versions, in the packages whose names are put in their place here.
#
# With CROSS, the folder of a cross compiler for another processor, the runtime libraries are that
# compiler's, and their packages are those that it names.
set -euo pipefail
cross=()
if [[ -n ${CROSS:-} ]]; then
  libraries=("$CROSS"/usr/*-linux-*/lib)
  cross=(-L"$CROSS/shlibs" -l"${libraries[0]}")
  export DEB_HOST_ARCH=${CROSS##*/} PATH=$CROSS/bin:$PATH
fi
dpkg-shlibdeps "${cross[@]}" "$@" | sed -E '/^shlibs:/ {
  s/\blibc6-i386\b/libc6/g
  s/\blib32(gcc-s1|stdc\+\+6)/lib\1/g
}'
