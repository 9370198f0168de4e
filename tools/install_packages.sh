#!/usr/bin/env bash
# Installs what building and testing need, from the packages of Debian 12.
set -euo pipefail

packages=(
  g++ clang libclang-rt-14-dev   # both compilers; the runtime has the fuzzer and the sanitizers
  cmake ninja-build
  libgtest-dev libbenchmark-dev
  libxml2-utils                  # xmllint: the tests check that result documents are well-formed
  clang-format
)

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
if [ "${#missing[@]}" -eq 0 ]; then
  exit 0
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  as_root=(sudo)
fi
"${as_root[@]}" apt-get update
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get install -y --no-install-recommends "${missing[@]}"
