#!/usr/bin/env bash
# Runs the real batch program on real files. tests/faults covers what it does when something fails.
# Usage: batch_program_test.sh FOLDER_OF_PROGRAMS SAMPLES
set -u
# shellcheck source=tests/support/checks.sh
. "$(dirname "$0")/../support/checks.sh"
batch=$1/quillmere-batch
samples=$2

# run ARGUMENT...: expects exit code 0, and leaves what was printed to standard output in out.txt.
run() {
    "$batch" "$@" >out.txt
    check "exit code of: $*" 0 $?
}

cp "$samples"/world.scp in.scp
cp "$samples"/cleanup.lst list.lst
chmod 600 in.scp

cleaning=(--list list.lst --items equal)
run "${cleaning[@]}" in.scp out.scp
check "permissions of a new output" 600 "$(stat -c %a out.scp)"
check "blocks kept and removed" "$(grep -c '^\[WORLD' in.scp)" \
    "$(($(grep -c '^\[WORLD' out.scp) + $(sed -n 's/^Removed \(.*\) items.$/\1/p' out.txt)))"
check "no torch is left" 0 "$(grep -c i_torch out.scp)"
clean=$(sha256sum <out.scp)

# Standard output as OUTPUT: blocks are added after what the file already holds, and never mixed with the log.
{ echo before && "$batch" --quiet "${cleaning[@]}" in.scp /dev/stdout && echo after; } >all.scp
check "output within another file" "$(echo before && cat out.scp && echo after)" "$(cat all.scp)"
refusal=$("$batch" --facet-in 1 in.scp /dev/fd/1 2>&1 >>all.scp)
check "refusal to mix" \
    "2 quillmere-batch: standard output is where the log goes; --quiet keeps blocks and log apart" "$? $refusal"
refusal=$("$batch" survey --json --page /dev/stdout in.scp 2>/dev/null)
check "refusal to mix page and object" "2 quillmere-batch: standard output is where the JSON object goes; write nothing else there" \
    "$? quillmere-batch: $(sed -n 's/.*"error": "\(.*\)",/\1/p' <<<"$refusal")"
refusal=$("$batch" --quiet --facet-in 1 in.scp /dev/stdout 2>&1)
check "refusal to mix warnings and blocks" \
    "2 quillmere-batch: errors and warnings would go into OUTPUT or the removed file; send them elsewhere" "$? $refusal"
"$batch" survey --page /dev/stdout in.scp >page.html 2>err.txt
check "refusal to mix page and log" "2 0" "$? $(stat -c %s page.html)"

# A log or errors that would change what the run reads are refused, on the stream that does not.
refusal="quillmere-batch: the log or the errors would go into INPUT or the list; send them to another file"
for read in in.scp list.lst; do
    arguments=(--quiet "${cleaning[@]}" in.scp new.scp)
    before=$(sha256sum <"$read")
    said="$("$batch" "${arguments[@]:1}" 2>&1 >>"$read") $? $("$batch" "${arguments[@]}" 2>>"$read") $?"
    "$batch" "${arguments[@]}" >>"$read" 2>&1
    check "refusals to print into $read" "$refusal 2 $refusal 2 2 $before" "$said $? $(sha256sum <"$read")"
done

"$batch" restore ./in.scp out.scp new.scp >>in.scp 2>err.txt
check "refusal to print into REMOVED" 2 $?

# Devices and pipes are written directly.
run --quiet "${cleaning[@]}" in.scp /dev/null
mkfifo pipe
sha256sum <pipe >sum.txt &
run --quiet "${cleaning[@]}" in.scp pipe
wait $!
check "output to a pipe" "$clean" "$(cat sum.txt)"

# Standard input is INPUT, and standard output OUTPUT, with the log on standard error.
check "clean a compressed save" "$clean" "$(gzip -c in.scp | zcat | "$batch" "${cleaning[@]}" - - 2>log.txt | sha256sum)"
check "log beside blocks" 1 "$(grep -c ^Removed log.txt)"
refusal=$("$batch" --facet-in 1 in.scp - 2>&1)
check "refusal to mix log and blocks" 2 $?

# Every shell completes every option and word that the help lists. fish says what it would offer.
completion=$samples/../packaging/completion
command -v zsh >/dev/null && zsh -n "$completion"/quillmere-batch.zsh
check "completion as zsh reads it" 0 $?
for word in "" survey restore list; do
    # shellcheck disable=SC2086  # no word is no argument
    options=$("$batch" $word --help | grep -oE -- '^  (-.,)?--[a-z-]+' | grep -oE '[a-z][a-z-]+$')
    for option in $word $options; do
        check "completions of $word $option" 3 "$(grep -lE -- "(^|[ (]|--)$option([^a-z-]|\$)" "$completion"/* | wc -l)"
    done
    check "what fish offers after $word" "$(sort <<<"$options")" "$(fish --no-config -c "
        source $completion/quillmere-batch.fish; complete -C 'quillmere-batch $word --'" | sed 's/^--//; s/\t.*//' | sort)"
done
finish_checks
