#!/usr/bin/env bash
# scripts/run from a checkout whose path holds a hyphen, which the file dialog refuses: the
# sample plan is made elsewhere, the terminal says where, and a plan script played there
# loads the sample terrain.
set -u
source_dir=$1
build_dir=$2
work=$(mktemp -d /tmp/celvane-run-XXXXXX)
sample=/tmp/celvane_run_sample_$$
trap 'rm -rf "$work" "$sample"' EXIT
ln -s "$source_dir" "$work/celvane-checkout"
printf 'menu File/Load terrain\nfile terrain.map\nmenu Exit\n' > "$work/load.script"
out=$(CELVANE_SAMPLE_DIR=$sample BUILD_DIR=$build_dir "$work/celvane-checkout/scripts/run" --batch "$work/load.script" 2>&1)
status=$?
fail() { echo "$1"; echo "$out"; exit 1; }
[ $status -eq 0 ] || fail "exit status $status"
grep -qx "The file dialog refuses the path $work/celvane-checkout/data; the sample plan is in $sample." <<<"$out" ||
  fail "no line saying where the sample plan is"
grep -q "Directory name is not valid." <<<"$out" && fail "the dialog refused the folder"
grep -qx "status:  Reading terrain file C:$sample/terrain.map" <<<"$out" || fail "the terrain was not read there"
grep -q "^message:" <<<"$out" && fail "a message came up"
echo "sample plan made and loaded in $sample"
