#!/usr/bin/env bash
# The real batch program on real files: what only an operating system can show.
# Usage: batch_program_test.sh FOLDER_OF_PROGRAMS SAMPLES
set -u
# shellcheck source=tests/support/checks.sh
. "$(dirname "$0")/../support/checks.sh"
bin=$1
samples=$2
batch=$bin/quillmere-batch

# run EXPECTED_EXIT_CODE ARGUMENT...: leaves what was printed in out.txt and err.txt.
run() {
    local expected=$1
    shift
    "$batch" "$@" >out.txt 2>err.txt
    check "exit code of: $*" "$expected" $?
}

no_leftovers() { check "temporary files after $1" "" "$(find . -name 'quillmere-*.tmp')"; }

# The pass's report of one failure, as it is printed.
report() { printf 'Oops description: %s\nOops number: %s\nError in filter engine.  Pffft....' "$1" "$2"; }

cp "$samples"/world.scp in.scp
cp "$samples"/cleanup.lst list.lst
sum=$(sha256sum <in.scp)

run 0 --list list.lst --items equal in.scp out.scp
check "blocks kept and removed" "$(grep -c '^\[WORLD' in.scp)" \
    "$(($(grep -c '^\[WORLD' out.scp) + $(sed -n 's/^Removed \(.*\) items.$/\1/p' out.txt)))"
check "no torch is left" 0 "$(grep -c i_torch out.scp)"
clean=$(sha256sum <out.scp)

# An output that cannot be written, in its several ways. The old output stays.
for case in "missing/out.scp|Path not found|76" ".|Path/File access error|75" "/dev/full|Disk full|61"; do
    IFS='|' read -r output description number <<<"$case"
    run 1 --facet-in 1 in.scp "$output"
    check "report for $output" "$(report "$description" "$number")" "$(tail -n 3 out.txt)"
    check "error line for $output" "quillmere-batch: $output: $description ($number)" "$(cat err.txt)"
done
run 1 --facet-in 1 absent.scp out.scp
check "missing input" "$(report "File not found" 53)" "$(tail -n 3 out.txt)"
run 1 --facet-in 1 . out.scp
check "folder as input" "$(report "Path/File access error" 75)" "$(tail -n 3 out.txt)"
(ulimit -f 8 && "$batch" --facet-in 9 in.scp out.scp >out.txt 2>err.txt)
check "exit code when files may not grow" 1 $?
check "old output" "$clean" "$(sha256sum <out.scp)"
no_leftovers "failed runs"

# Without permission; the superuser has every permission, so the program runs as nobody.
if [ "$(id -u)" -eq 0 ] && command -v setpriv >/dev/null; then
    unprivileged() {
        setpriv --reuid=65534 --regid=65534 --clear-groups "$batch" "$@" >out.txt 2>err.txt
    }
    chmod 755 . && chmod 000 out.scp && mkdir open && chmod 777 open
    cp in.scp unreadable.scp && chmod 000 unreadable.scp
    cp in.scp open/readonly.scp && chmod 444 open/readonly.scp
    unprivileged --facet-in 1 unreadable.scp open/out.scp
    check "unreadable input" "$(report "Permission denied" 70)" "$(tail -n 3 out.txt)"
    unprivileged --facet-in 1 in.scp open/readonly.scp
    check "read-only output" "$(report "Path/File access error" 75)" "$(tail -n 3 out.txt)"
    unprivileged --facet-in 1 in.scp new.scp
    check "output folder without permission" "$(report "Permission denied" 70)" "$(tail -n 3 out.txt)"
    no_leftovers "runs without permission"
    chmod 644 out.scp
else
    echo "SKIPPED: permissions: needs the superuser and setpriv to run as nobody"
fi

# The input under other names.
ln in.scp hard.scp && ln -s in.scp symbolic.scp
for same in hard.scp symbolic.scp ./in.scp "$work/in.scp"; do
    run 2 --facet-in 1 in.scp "$same"
    check "refusal of $same" "quillmere-batch: You picked the same file to load and save." "$(cat err.txt)"
done

# Devices and pipes are written directly; an input that can be read only once is refused.
run 0 --quiet --list list.lst --items equal in.scp /dev/null
mkfifo pipe
sha256sum <pipe >sum.txt &
run 0 --quiet --list list.lst --items equal in.scp pipe
wait $!
check "output to a pipe" "$clean" "$(cat sum.txt)"
run 1 --facet-in 1 <(cat in.scp) out.scp
check "a pipe as input" "$(report "Path/File access error" 75)" "$(tail -n 3 out.txt)"
check "old output" "$clean" "$(sha256sum <out.scp)"

# A report that cannot be printed is no success, but the output is whole.
"$batch" --list list.lst --items equal in.scp full.scp >/dev/full 2>err.txt
check "exit code with standard output full" 1 $?
check "output with standard output full" "$clean" "$(sha256sum <full.scp)"

# Signals act as Halt.
"$bin"/make_world --blocks 3000000 >big.scp
for signal in INT TERM HUP; do
    # A shell starts its background jobs with interrupts ignored, and the program respects that.
    env --default-signal=INT "$batch" --facet-in 9 big.scp out.scp >out.txt 2>err.txt &
    pid=$!
    until grep -q Processing out.txt; do sleep 0.01; done
    kill -s "$signal" "$pid"
    wait "$pid"
    check "exit code after SIG$signal" 130 $?
    check "log after SIG$signal" "Halt command issued." "$(tail -n 1 out.txt)"
    check "old output after SIG$signal" "$clean" "$(sha256sum <out.scp)"
done
no_leftovers "signals"

no_leftovers "all runs"
check "the input is never touched" "$sum" "$(sha256sum <in.scp)"
finish_checks
