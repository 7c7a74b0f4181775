#!/usr/bin/env bash
# Builds Marigold and shows it working in a throwaway home folder: a new document is written,
# read back, and the preferences that start-up made are printed.
set -euo pipefail

repo="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cd "$repo"

bash scripts/install-deps.sh

cmake -S . -B build-release -DCMAKE_BUILD_TYPE=Release -DMARIGOLD_TESTS=OFF
cmake --build build-release -j "${MARIGOLD_JOBS:-2}" --target marigold
marigold="$repo/build-release/src/marigold"

demo_home="$(mktemp -d)"
trap 'rm -rf "$demo_home"' EXIT
export HOME="$demo_home" XDG_CONFIG_HOME="$demo_home/.config" XDG_DATA_HOME="$demo_home/.local/share"

echo "== marigold doc new $demo_home/Demo.mgy"
"$marigold" doc new "$demo_home/Demo.mgy"

echo "== marigold doc show $demo_home/Demo.mgy (first lines)"
"$marigold" doc show "$demo_home/Demo.mgy" > "$demo_home/shown.xml"
head -n 20 "$demo_home/shown.xml"
echo "... ($(wc -l < "$demo_home/shown.xml") lines)"

echo "== marigold prefs show"
"$marigold" prefs show

echo "== files start-up made"
find "$demo_home" -path "$demo_home/shown.xml" -prune -o -print | sed "s|$demo_home|~|"
