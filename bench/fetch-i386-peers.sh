#!/usr/bin/env bash
# Unpacks Google Benchmark's and simdjson's 32-bit runtime libraries into a folder, from Debian's i386
# packages. Nothing is installed and the system's package lists are left alone.
#
#   bench/fetch-i386-peers.sh FOLDER
#
# Does nothing when they are there already, in FOLDER or installed. When they cannot be had it says so
# and is content: the benchmarks then leave x86, or simdjson on x86, out.
set -euo pipefail

folder=${1:?usage: fetch-i386-peers.sh FOLDER}
packages=(libbenchmark1debian libsimdjson14)
libraries=(libbenchmark.so.1debian libsimdjson.so.14)

all_there() {
  local library
  for library in "${libraries[@]}"; do
    [[ -e $1/usr/lib/i386-linux-gnu/$library ]] || return 1
  done
}

if all_there "$folder" || all_there ""; then
  exit 0
fi

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
chmod 755 "$scratch"
mkdir -p "$scratch"/lists/partial "$scratch"/cache/archives/partial "$scratch"/packages

# Package lists of both architectures, in a folder of their own.
apt=(apt-get -qq
  -o APT::Architectures::=amd64 -o APT::Architectures::=i386
  -o Dir::State::lists="$scratch/lists" -o Dir::Cache="$scratch/cache"
  -o APT::Sandbox::User="$(id -un)")
"${apt[@]}" update 2>/dev/null || true # a list that is not needed may be out of reach

cd "$scratch/packages"
if ! "${apt[@]}" download "${packages[@]/%/:i386}"; then
  echo "The i386 packages ${packages[*]} cannot be downloaded: no benchmarks for x86" >&2
  exit 0
fi
cd - >/dev/null
mkdir -p "$folder"
for package in "$scratch"/packages/*.deb; do
  dpkg-deb -x "$package" "$folder"
done
