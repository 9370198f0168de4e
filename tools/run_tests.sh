#!/usr/bin/env bash
# Everything that a change must pass: the format, both compilers with warnings as errors, all
# tests plain and under the sanitizers, a brief run of each fuzz target, the optimised build.
# Stops at the first failure; the summary of the plain tests comes last.
#
#   FUZZ_SECONDS=n   seconds for each fuzz target (default 20)
set -euo pipefail
cd "$(dirname "$0")/.."

fuzz_seconds="${FUZZ_SECONDS:-20}"
if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi

step() {
  printf '\n=== %s (%d s)\n' "$1" "$SECONDS"
}

build() {
  step "Build: $1"
  cmake --preset "$1" >/dev/null
  cmake --build --preset "$1"
}

# Seeds of a fuzz target: the files of the examples and the tests with the extension it reads.
collect_seeds() {
  local extension="$1" folder="$2" number=0 file
  mkdir -p "$folder"
  while IFS= read -r -d '' file; do
    number=$((number + 1))
    cp "$file" "$folder/seed_$number"
  done < <(find examples tests/data -type f -name "*.$extension" -size -64k -print0 | sort -z)
}

# Runs a target on seeds of an extension, with the words of a dictionary, which by default has its name.
# What a target finds is left in build/fuzz/findings; start the target with the file to repeat it.
fuzz() {
  local target="$1" extension="$2" dictionary="tests/fuzz/${3:-$1}.dict"
  local corpus="build/fuzz/corpus/$target"
  step "Fuzz: $target"
  local options=()
  if [ -f "$dictionary" ]; then
    options+=("-dict=$dictionary")
  fi
  rm -rf "$corpus" build/fuzz/scratch
  collect_seeds "$extension" "$corpus"
  mkdir -p build/fuzz/findings build/fuzz/scratch
  options+=(-max_total_time="$fuzz_seconds" -timeout=10 -rss_limit_mb=2048 -max_len=16384)
  options+=(-artifact_prefix="build/fuzz/findings/$target-" -print_final_stats=1 -verbosity=0)
  TMPDIR="$PWD/build/fuzz/scratch" "build/fuzz/tests/fuzz/$target" "${options[@]}" "$corpus"
}

step "Format"
find src tests bench \( -name '*.h' -o -name '*.cpp' \) -print0 | xargs -0 clang-format --dry-run -Werror

build debug

# The sanitizers run on what clang builds, so that both compilers see every file.
build asan-ubsan
step "Tests under the sanitizers"
ctest --preset asan-ubsan --no-tests=error

build fuzz
fuzz settings_reader_fuzz mns
fuzz project_reader_fuzz mnp
fuzz free_form_fuzz mnp project_reader_fuzz

build bench

step "Tests"
ctest --preset debug --no-tests=error
