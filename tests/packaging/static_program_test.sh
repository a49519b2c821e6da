#!/usr/bin/env bash
# Tests the batch program that runs on any Linux, in a read-only folder that is its whole system: no /proc, no /dev, no
# libraries. Its outputs have to be those of the native program. A program for another machine runs under qemu-user.
# Usage: static_program_test.sh FOLDER_OF_THE_PACKAGE FOLDER_OF_NATIVE_PROGRAMS MACHINE
set -u
package=$(realpath "$1")
native=$(realpath "$2")
# shellcheck source=tests/support/checks.sh
. "$(dirname "$0")/../support/checks.sh"

mkdir -p root/world world native/world
cp -r "$package"/quillmere-batch "$package"/samples root
cp -r "$package"/samples native
start=(/quillmere-batch)
if [ "$3" != "$(uname -m)" ]; then
    cp "$(command -v "qemu-$3-static")" root/emulator
    start=(/emulator /quillmere-batch)
fi

# alone ARGUMENT...: runs the program in the empty system, where only /world can be written.
alone() {
    bwrap --unshare-all --ro-bind root / --bind world /world --chdir / --setenv TMPDIR /world "${start[@]}" "$@"
}
beside_it() {
    (cd native && "$native"/quillmere-batch "$@")
}

"$native"/make_world --blocks 20000 --seed 7 >native/world/world.scp
cp native/world/world.scp world
filters=(--list samples/cleanup.lst --items equal --rectangles not-in --keep-unplaced)
for run in alone beside_it; do
    folder=world
    [ $run = alone ] || folder=native/world
    echo old >$folder/cleaned.scp
    $run --json --backup --removed world/gone.scp --page world/page.html "${filters[@]}" world/world.scp \
        world/cleaned.scp >$folder/report.json
    $run --dry-run "${filters[@]}" world/world.scp >$folder/dry-run.txt
    $run restore world/gone.scp world/cleaned.scp world/restored.scp >$folder/restored.txt
    $run survey world/world.scp >$folder/survey.txt
    $run list show samples/cleanup.lst >$folder/list.txt
    $run --quiet "${filters[@]}" - - <world/world.scp >$folder/piped.scp
done 2>errors.txt
check "errors" "" "$(cat errors.txt)"
sed -Ei 's/"(started|seconds)": ?("[^"]*"|[0-9.e-]+)//g; /^Completed in [0-9]+ seconds/d' \
    {native/,}world/{report.json,page.html,*.txt}
check "files that differ from those of the native program" "" "$(diff -qr native/world world)"
check "blocks removed, at least 1000" 1 "$(($(grep -c '^\[WORLDITEM' world/gone.scp) >= 1000))"

# fails CODE TEXT ARGUMENT...: expects a run to end with CODE and an error line that begins with TEXT.
fails() {
    local expected=$1 text=$2 status=0
    shift 2
    alone "$@" >out.txt 2>err.txt || status=$?
    check "exit code of: $*" "$expected" "$status"
    check "error of: $*" "quillmere-batch: $text" "$(head -c $((17 + ${#text})) err.txt)"
}
fails 1 "world/missing.scp: File not found (53)" --facet-in 1 world/missing.scp world/out.scp
fails 1 "/out.scp: " --facet-in 1 world/world.scp /out.scp
fails 2 "You picked the same file to load and save." --facet-in 1 world/world.scp world/./world.scp
check "files after the failures" "$(ls -A native/world)" "$(ls -A world)"

# As README.txt says: others can link it with a C library of their own.
"$3-linux-gnu-g++" -static-pie -o root/linked-again "$package"/relink/quillmere-batch.o
start[-1]=/linked-again
check "version of the program linked again" "$("$native"/quillmere-batch --version)" "$(alone --version)"

# Calls that old kernels and strict containers do not have. Each has something to fall back to.
if [ "$3" = "$(uname -m)" ]; then
    newer=statx,renameat2,getrandom,sync_file_range,rseq,copy_file_range,prlimit64
    strace -f -qq -o calls.txt -e "inject=$newer:error=ENOSYS" root/quillmere-batch --quiet --backup \
        "${filters[@]/#samples/root/samples}" world/world.scp native/world/cleaned.scp 2>errors.txt
    check "errors on an old kernel" "" "$(cat errors.txt)"
    check "output on an old kernel" "$(cksum <world/cleaned.scp)" "$(cksum <native/world/cleaned.scp)"
fi
finish_checks
