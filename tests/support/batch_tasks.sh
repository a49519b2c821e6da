# shellcheck shell=bash
# For script tests, to be sourced: compares a batch program that is built in another way with the native one. All that
# both print and write has to be the same, byte for byte, except times.
# shellcheck source=tests/support/checks.sh
. "$(dirname "${BASH_SOURCE[0]}")/checks.sh"

# same CODE ARGUMENT...: runs the program of the folder $native in the folder native, and the command ${other[@]} in the
# folder other. Both have to end with exit code CODE and to leave the same files. Standard input is the file input.
# shellcheck disable=SC2154  # the test sets native and other
same() {
    local code=$1
    shift
    (cd native && "$native"/quillmere-batch "$@" <../input >out.txt 2>err.txt)
    check "exit code of the native program: $*" "$code" $?
    (cd other && "${other[@]}" "$@" <../input >out.txt 2>err.txt)
    check "exit code of the other program: $*" "$code" $?
    sed -Ei 's/"(started|seconds)": ?("[^"]*"|[0-9.e-]+)//g; /^Completed in [0-9]+ seconds/d' \
        {native,other}/{out.txt,err.txt,page.html}
    check "files that differ after: $*" "" "$(diff -qr native other)"
}

# run_tasks SAMPLES: runs every task of both programs.
run_tasks() {
    local lines odd
    # Codes, names and positions at the borders of what the types of the program hold.
    odd='[WORLDITEM i_\xe9\x80\xff]|NAME=\x8a\xfe|P=-7,65535,3,1||[WORLDITEM i_lamp]|P=2147483647,-2147483648||[EOF]|'
    mkdir native other
    {
        "$native"/make_world --blocks 40000 --seed 3 | grep -v '^\[EOF\]'
        printf %b "${odd//|/\\r\\n}"
    } | tee native/crlf.scp | tr -d '\r' >native/lf.scp
    cp "$1"/cleanup.lst native/list.lst
    touch native/page.html
    cp native/* other
    for lines in crlf lf; do
        cp native/$lines.scp input
        same 0 --list list.lst --items equal --removed gone.scp --json --page page.html $lines.scp cleaned.scp
        same 1 --list list.lst --items equal --max-removed 4% $lines.scp rejected.scp
        same 0 restore gone.scp cleaned.scp back.scp
        same 0 --list list.lst --items not-equal --rectangles in --facet-not-in 1 --backup $lines.scp cleaned.scp
        same 0 --list list.lst --rectangles not-in --facet-in 0 --keep-unplaced --$lines - -
        same 0 --list list.lst --items equal --rectangles in --dry-run $lines.scp
        same 1 --facet-in 1 missing.scp rejected.scp
        same 1 --facet-in 1 $lines.scp no_folder/rejected.scp
        same 2 --facet-in 1 $lines.scp ./$lines.scp
        same 0 survey --json --page page.html $lines.scp
        same 0 survey $lines.scp
        grep -a '^item' native/out.txt | head -n 400 >input
        same 0 list make new.lst
        same 0 list show new.lst
    done
}
