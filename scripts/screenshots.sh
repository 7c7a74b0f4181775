#!/usr/bin/env bash
# Renders every window of the desktop program to PNG files, on a sample document, for people to
# look at. Usage: scripts/screenshots.sh [OUTPUT_FOLDER] (default: screenshots/)
set -euo pipefail
cd "$(dirname "$0")/.."
output="${1:-screenshots}"
build="${BUILD_DIR:-build-asan}"
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
[ -d "$build" ] || cmake -S . -B "$build" -DMARIGOLD_SANITIZE=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$build" -j2 --target marigold-screenshots
rm -rf "$output"
QT_QPA_PLATFORM=offscreen ASAN_OPTIONS=detect_leaks=0 "$build/src/marigold-screenshots" "$output"
