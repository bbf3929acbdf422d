#!/usr/bin/env bash
# Installs the Debian packages that the build, the tests and the fonts of old pictures need. Does nothing,
# and asks nobody, when all of them are there.
set -euo pipefail

packages=(g++ cmake ninja-build pkg-config
    libfreetype-dev libfontconfig-dev libpixman-1-dev libcli11-dev libgtest-dev
    libpng-dev libjpeg62-turbo-dev libtiff-dev libgraphicsmagick-q16-3
    fontconfig fonts-liberation fonts-urw-base35 fonts-dejavu-core)
[ "${1:-}" = sanitize ] || [ "${1:-}" = fuzz ] && packages+=(clang libclang-rt-14-dev llvm)
[ "${1:-}" = bench ] && packages+=(libbenchmark-dev libgif-dev libpolyclipping-dev libboost-dev libgeos-dev)

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    as_root=(sudo)
fi
echo "Installing ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update -qq >&2
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2
