#!/usr/bin/env bash
# What a power cut at any moment may leave of the files of a run.
# Usage: power_cut_test.sh FOLDER_OF_PROGRAMS SAMPLES
set -u
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=tests/support/checks.sh
. "$here/../support/checks.sh"
bin=$1
samples=$2

if ! command -v strace >/dev/null || ! strace -f --quiet=all -o trace.txt true 2>/dev/null; then
    echo "SKIPPED: power cuts: because strace cannot trace here"
    exit
fi
cp "$samples"/cleanup.lst list.lst
"$bin"/make_world --blocks 100 >small.scp
"$bin"/make_world --blocks 12000 >big.scp # enough for the output to be written on a thread of its own
/usr/bin/python3 "$here/power_cut.py" "$bin"/quillmere-batch small.scp big.scp list.lst
check "the states that power cuts may leave" 0 $?
finish_checks
