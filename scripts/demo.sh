#!/usr/bin/env bash
# Builds Marigold and shows it working in a throwaway home folder: two built-in sample folders
# are synchronised both ways (and a change is carried across on a second run), then a new
# document is written, read back, and the preferences that start-up made are printed.
set -euo pipefail

repo="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cd "$repo"

bash scripts/install-deps.sh

# A compiler cache (when installed) may serve objects built in another checkout of the project.
export CCACHE_BASEDIR="$repo" CCACHE_NOHASHDIR=1

cmake -S . -B build-release -DCMAKE_BUILD_TYPE=Release -DMARIGOLD_TESTS=OFF
cmake --build build-release -j "${MARIGOLD_JOBS:-2}" --target marigold
marigold="$repo/build-release/src/marigold"

demo_home="$(mktemp -d)"
trap 'rm -rf "$demo_home"' EXIT
export HOME="$demo_home" XDG_CONFIG_HOME="$demo_home/.config" XDG_DATA_HOME="$demo_home/.local/share"

side_a="$demo_home/Side A" side_b="$demo_home/Side B"
mkdir -p "$side_a/Letters/2026" "$side_a/Photos" "$side_b/Notes"
printf 'Dear reader,\n' > "$side_a/Letters/2026/hello.txt"
printf 'scratch\n' > "$side_a/Letters/draft.tmp"
head -c 300000 /dev/zero | tr '\0' 'p' > "$side_a/Photos/beach.raw"
printf 'only on side B\n' > "$side_b/Notes/todo.txt"
doc="$demo_home/Demo.mgy"

echo "== marigold doc new Demo.mgy, then doc set: its first session synchronises the two sides"
echo "   exactly (deletions too) and leaves out every item whose name ends in .tmp"
"$marigold" doc new "$doc"
"$marigold" doc set "$doc" "consoleDict.topFolder=$side_a" "consoleDict.bottomFolder=$side_b" \
  settingsDict.settExact=1 filterDict.filterOn=1 filterDict.filterArray.0.filterFileNameOn=1 \
  filterDict.filterArray.0.filterFileNamePop=2 filterDict.filterArray.0.filterFileNameField=.tmp
echo "   settingsDict.settExact = $("$marigold" doc get "$doc" settingsDict.settExact)," \
  "filter row 0 name ends with: $("$marigold" doc get "$doc" filterDict.filterArray.0.filterFileNameField)"

echo "== marigold run Demo.mgy (first run: each side gets what the other has, but no .tmp file)"
"$marigold" run "$doc"
echo "== a line added on side B and the to-do list deleted on side A, then marigold run again"
sleep 1
printf 'a newer line\n' >> "$side_b/Letters/2026/hello.txt"
rm "$side_a/Notes/todo.txt"
"$marigold" run "$doc"
echo "== side A now holds"
(cd "$side_a" && find . -type f | sort)
echo "== side B now holds"
(cd "$side_b" && find . -type f | sort)

echo "== marigold doc show Demo.mgy (first lines)"
"$marigold" doc show "$doc" > "$demo_home/shown.xml"
head -n 20 "$demo_home/shown.xml"
echo "... ($(wc -l < "$demo_home/shown.xml") lines)"

echo "== marigold prefs show"
"$marigold" prefs show

echo "== files start-up made"
find "$demo_home" -path "$demo_home/shown.xml" -prune -o -print | sed "s|$demo_home|~|"
