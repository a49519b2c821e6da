#!/usr/bin/env bash
# What a power cut at any moment may leave of the files of a run.
# Usage: power_cut_test.sh FOLDER_OF_PROGRAMS SAMPLES
set -u
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=tests/support/checks.sh
. "$here/../support/checks.sh"

if strace -f --quiet=all -o trace.txt true 2>/dev/null; then
    /usr/bin/python3 "$here/power_cut.py" "$@"
    check "the states that power cuts may leave" 0 $?
else
    echo "SKIPPED: power cuts: because strace cannot trace here"
fi
finish_checks
