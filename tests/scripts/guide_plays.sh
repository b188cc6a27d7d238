#!/usr/bin/env bash
# The plan script of the guide still plays to its end, and makes every picture the guide
# shows (the pictures themselves are not compared).
set -u
source_dir=$1
build_dir=$2
out=$(mktemp -d /tmp/celvane_guide_XXXXXX)
trap 'rm -rf "$out"' EXIT
BUILD_DIR=$build_dir "$source_dir/scripts/docs" "$out" > "$out/log" 2>&1 || { cat "$out/log"; exit 1; }
missing=0
for picture in $(grep -o 'guide/pictures/[a-z0-9_]*\.png' "$source_dir/docs/guide.md" | sort -u); do
  name=$(basename "$picture")
  if [ ! -s "$out/$name" ]; then echo "no picture $name"; missing=1; fi
  [ -f "$source_dir/docs/$picture" ] || { echo "docs/$picture is not checked in"; missing=1; }
done
exit $missing
