#!/usr/bin/env bash
# The real batch program on real files. What it does when something fails stands in tests/faults.
# Usage: batch_program_test.sh FOLDER_OF_PROGRAMS SAMPLES
set -u
# shellcheck source=tests/support/checks.sh
. "$(dirname "$0")/../support/checks.sh"
batch=$1/quillmere-batch
samples=$2

# run ARGUMENT...: leaves what was printed in out.txt.
run() {
    "$batch" "$@" >out.txt
    check "exit code of: $*" 0 $?
}

cp "$samples"/world.scp in.scp
cp "$samples"/cleanup.lst list.lst

run --list list.lst --items equal in.scp out.scp
check "blocks kept and removed" "$(grep -c '^\[WORLD' in.scp)" \
    "$(($(grep -c '^\[WORLD' out.scp) + $(sed -n 's/^Removed \(.*\) items.$/\1/p' out.txt)))"
check "no torch is left" 0 "$(grep -c i_torch out.scp)"
clean=$(sha256sum <out.scp)

# Devices and pipes are written directly.
run --quiet --list list.lst --items equal in.scp /dev/null
mkfifo pipe
sha256sum <pipe >sum.txt &
run --quiet --list list.lst --items equal in.scp pipe
wait $!
check "output to a pipe" "$clean" "$(cat sum.txt)"
finish_checks
