#!/usr/bin/env bash
# Runs the batch program for another processor, and the one for this machine on the same files. All that they print and
# write has to be the same, byte for byte, except times.
# Usage: other_processor_test.sh FOLDER_OF_PROGRAMS SAMPLES FOLDER_OF_NATIVE_PROGRAMS EMULATOR [ARGUMENT...]
set -u
# shellcheck source=tests/support/checks.sh
. "$(dirname "$0")/../support/checks.sh"
native=$3/quillmere-batch
other=("${@:4}" "$1"/quillmere-batch)

# same CODE ARGUMENT...: expects both programs to end with exit code CODE and to leave the same files. Standard input is
# the file input.
same() {
    local code=$1
    shift
    (cd native && "$native" "$@" <../input >out.txt 2>err.txt)
    check "exit code here of: $*" "$code" $?
    (cd other && "${other[@]}" "$@" <../input >out.txt 2>err.txt)
    check "exit code there of: $*" "$code" $?
    sed -Ei 's/"(started|seconds)": ?("[^"]*"|[0-9.e-]+)//g; /^Completed in [0-9]+ seconds/d' \
        {native,other}/{out.txt,err.txt,page.html}
    check "files that differ after: $*" "" "$(diff -qr native other)"
}

# Codes, names and positions at the borders of what the types of the program hold.
odd='[WORLDITEM i_\xe9\x80\xff]|NAME=\x8a\xfe|P=-7,65535,3,1||[WORLDITEM i_lamp]|P=2147483647,-2147483648||[EOF]|'
mkdir native other
{
    "$3"/make_world --blocks 40000 --seed 3 | grep -v '^\[EOF\]'
    printf %b "${odd//|/\\r\\n}"
} >crlf.scp
tr -d '\r' <crlf.scp >lf.scp
cp "$2"/cleanup.lst list.lst
touch native/page.html other/page.html

for lines in crlf lf; do
    world=../$lines.scp
    cp $lines.scp input
    same 0 --list ../list.lst --items equal --removed gone.scp --json --page page.html "$world" cleaned.scp
    same 0 restore gone.scp cleaned.scp back.scp
    same 0 --list ../list.lst --items not-equal --rectangles in --facet-not-in 1 --backup "$world" cleaned.scp
    same 0 --list ../list.lst --rectangles not-in --facet-in 0 --keep-unplaced --$lines - -
    same 1 --list ../list.lst --items not-equal --max-removed 5% "$world" rejected.scp
    same 0 --list ../list.lst --items equal --rectangles in --dry-run "$world"
    same 0 survey --json --page page.html "$world"
    same 0 survey "$world"
    grep -a '^item' native/out.txt | head -n 400 >input
    same 0 list make new.lst
    same 0 list show new.lst
done
finish_checks
