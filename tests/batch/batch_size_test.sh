#!/usr/bin/env bash
# The batch program on very large files: its memory does not grow with the file, only with the longest line.
# Usage: batch_size_test.sh FOLDER_OF_PROGRAMS SAMPLES
set -u
# shellcheck source=tests/support/checks.sh
. "$(dirname "$0")/../support/checks.sh"
bin=$1
batch=$bin/quillmere-batch

"$bin"/make_world --blocks 2000000 >big.scp
/usr/bin/time -f %M -o memory.txt "$batch" --quiet --facet-in 9 big.scp /dev/null
check "exit code on 140 MB" 0 $?
check "peak memory in KiB below 20 MiB: $(cat memory.txt)" 1 "$(($(tail -n 1 memory.txt) < 20480))"

head -c 1000000000 /dev/zero | tr '\0' x >line.scp
(ulimit -v 3000000 && "$batch" --quiet --force --facet-in 9 line.scp long.scp)
check "exit code on a line of 1 GB" 0 $?
check "size of the output of a line of 1 GB" 1000000004 "$(stat -c %s long.scp)"
finish_checks
