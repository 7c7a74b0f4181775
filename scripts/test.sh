#!/usr/bin/env bash
# Builds everything with AddressSanitizer and UndefinedBehaviorSanitizer, runs every test, then
# builds the fuzzers with clang and runs the document reader's for 30 seconds and the exact-sync
# index reader's for 20. Exits non-zero on any failure.
set -euo pipefail

repo="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cd "$repo"

bash scripts/install-deps.sh

# A compiler cache (when installed) may serve objects built in another checkout of the project.
export CCACHE_BASEDIR="$repo" CCACHE_NOHASHDIR=1

jobs="${MARIGOLD_JOBS:-2}"

cmake -S . -B build-asan -DMARIGOLD_SANITIZE=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build-asan -j "$jobs"
(cd build-asan && ctest --output-on-failure -j "$jobs")

cmake -S . -B build-fuzz -DMARIGOLD_FUZZ=ON -DMARIGOLD_TESTS=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++
cmake --build build-fuzz -j "$jobs" --target marigold_document_reader_fuzz marigold_exact_index_reader_fuzz

# The fuzzer adds what it finds to its corpus: work on a copy so the committed seeds stay as they are.
corpus="$(mktemp -d)"
index_corpus="$(mktemp -d)"
trap 'rm -rf "$corpus" "$index_corpus"' EXIT
cp -a tests/fuzz/corpus/. "$corpus/"
mkdir -p build-fuzz/artifacts
build-fuzz/tests/fuzz/marigold_document_reader_fuzz -seed=1 -max_total_time=30 -timeout=10 -rss_limit_mb=2048 \
  -artifact_prefix=build-fuzz/artifacts/ "$corpus"

cp -a tests/fuzz/index_corpus/. "$index_corpus/"
build-fuzz/tests/fuzz/marigold_exact_index_reader_fuzz -seed=1 -max_total_time=20 -timeout=10 -rss_limit_mb=2048 \
  -artifact_prefix=build-fuzz/artifacts/ "$index_corpus"

echo "test.sh: all tests and the fuzzers passed"
