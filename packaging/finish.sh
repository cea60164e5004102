#!/usr/bin/env bash
# Puts right what cpack gets wrong in Debian packages: finish.sh PACKAGE...
#
#   libraries           cpack adds two scripts that call ldconfig; the trigger that ours have does the
#                       same, once for everything that is being installed
#   debugging symbols   cpack lists their check sums under the names the files had while it worked,
#                       and forgets the folder of documentation and that both architectures may be
#                       installed
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# build OUT: packs what is in the folder.
build() {
  dpkg-deb --root-owner-group -Zxz --build "$folder/package" "$1" > /dev/null
}

for package in "$@"; do
  name=$(dpkg-deb --field "$package" Package)
  case $name in
    *-dbgsym)
      dpkg-deb --raw-extract "$package" "$folder/package"
      mkdir -p "$folder/package/usr/share/doc"
      ln -s "${name%-dbgsym}" "$folder/package/usr/share/doc/$name"
      (cd "$folder/package" && find usr -type f -exec md5sum {} + > DEBIAN/md5sums)
      sed -i 's/^Section:.*/&\nMulti-Arch: same/' "$folder/package/DEBIAN/control"
      build "$package"
      ;;
    libqxrecordset[0-9]*)
      dpkg-deb --raw-extract "$package" "$folder/package"
      rm "$folder/package/DEBIAN/postinst" "$folder/package/DEBIAN/postrm"
      build "$package"
      ;;
  esac
  rm -rf "$folder/package"
done
