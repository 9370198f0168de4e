#!/usr/bin/env bash
# From a bare Debian 12 to a first result: installs the compiler, builds the program, analyses one
# of the projects of examples/ and says where the results are. Everything stays below build/.
#
#   tools/analyse_example.sh [name]    name of the example (default: dna)
set -euo pipefail
cd "$(dirname "$0")/.."

example="${1:-dna}"
if [ ! -f "examples/$example.mnp" ]; then
  echo "There is no examples/$example.mnp; the examples are:" >&2
  ls examples/*.mnp >&2
  exit 1
fi

if ! command -v g++ >/dev/null || ! command -v cmake >/dev/null || ! command -v ninja >/dev/null; then
  as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    as_root=(sudo)
  fi
  "${as_root[@]}" apt-get update
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y --no-install-recommends g++ cmake ninja-build
fi

cmake --preset release
cmake --build --preset release

# The program writes its control files where it is started, and the result pages look there for
# the files of share/.
mkdir -p build/example
cp examples/* share/* build/example/
cd build/example
rm -rf mnd_pro.txt "$example.res"
../release/mendcore "$example.mnp" "$example.mns"

results="$PWD/$example.res"
if ! grep -q "^Successful run of " "$results/Mendrake_log.txt"; then
  echo "The analysis failed, see $results/Mendrake_log.txt" >&2
  exit 1
fi
document="$results/$example.htm"
if [ -f "$results/$example.xml" ]; then
  document="$results/$example.xml"
fi
echo
echo "Results of $example.mnp:"
echo "  $document"
echo "  ${document%.*}_main.htm   (the same with a tree of its contents, for a browser)"
echo "  $results/Mendrake_log.txt"
