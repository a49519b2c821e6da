#!/usr/bin/env bash
# The batch program is asked to end, or killed, at any moment. There is the whole old output or the whole new one, and a
# block that is no longer in the output is in the file of removed blocks.
# Usage: batch_signals_test.sh FOLDER_OF_PROGRAMS SAMPLES
set -u
# shellcheck source=tests/support/checks.sh
. "$(dirname "$0")/../support/checks.sh"
bin=$1
samples=$2
batch=$bin/quillmere-batch

cp "$samples"/cleanup.lst list.lst
"$bin"/make_world --blocks 12000 >in.scp # enough for the output to be written on a thread of its own
mkfifo pipe
arguments=(--list list.lst --items equal --removed gone.scp in.scp out.scp)
"$batch" --quiet "${arguments[@]}" || exit 1
new="$(sha256sum <gone.scp) $(sha256sum <out.scp)"
old="$(echo old | sha256sum) $(echo old | sha256sum)"
between="$(sha256sum <gone.scp) $(echo old | sha256sum)" # gone.scp is put in place first

# Prints which of these states the two files are in.
state() {
    case "$(sha256sum <gone.scp) $(sha256sum <out.scp)" in
        "$old") echo old ;;
        "$between") echo between ;;
        "$new") echo new ;;
        *) echo broken ;;
    esac
}
make_old() {
    rm -f quillmere-*.tmp
    echo old >gone.scp
    echo old >out.scp
}
leftovers() { find . -name 'quillmere-*.tmp' | wc -l; }
strangers() { find . -type f | grep -vcE '/(in.scp|list.lst|out.scp|gone.scp|big.scp|small.scp|[a-z]+.txt|quillmere-[0-9a-f]+.tmp)$'; }

# Starts a pass that waits until resume, since nobody reads its removed blocks. "$@" is put before the command.
start_waiting_run() {
    make_old
    # A script's background jobs start with interrupts ignored, and the program leaves them ignored.
    "$@" env --default-signal=INT,QUIT "$batch" --facet-not-in 9 --removed pipe big.scp out.scp >out.txt 2>err.txt &
    pid=$!
    exec 3<pipe
    head -c 1 <&3 >/dev/null # comes when the first buffer of removed blocks is full
}
resume() {
    cat <&3 >/dev/null
    exec 3<&-
    wait "$pid"
    status=$?
}

"$bin"/make_world --blocks 20000 >big.scp
for signal in INT TERM HUP; do
    start_waiting_run
    kill -s "$signal" "$pid"
    resume
    check "exit code after SIG$signal" 130 "$status"
    check "log after SIG$signal" "Halt command issued." "$(tail -n 1 out.txt)"
    check "files after SIG$signal" "old 0" "$(state) $(leftovers)"
done

# One request ends a run that waits for the other side of a pipe: while it is opened, read or written, for a list, for
# blocks, and for the log. Only --quiet leaves standard output to the blocks.
"$bin"/make_world --blocks 100 >small.scp
mkfifo lonely full
exec 4<>full
head -c 65536 /dev/zero >&4
/usr/bin/python3 -c 'import os, pty, time
for name in "terminal", "screen":
    os.symlink(os.ttyname(pty.openpty()[1]), name)
time.sleep(600)' &
terminal=$!
until [ -L screen ]; do sleep 0.02; done
while read -r stdout words; do
    make_old
    # shellcheck disable=SC2086  # several words
    timeout --foreground --preserve-status -k 20 1 "$batch" --facet-not-in 9 $words >"$stdout" 2>err.txt
    check "exit code of a waiting run with $words to $stdout" 130 $?
    [ "$stdout" != out.txt ] || check "log with $words" "Halt command issued." "$(tail -n 1 "$stdout")"
    [ "$stdout" != out.txt ] || check "errors with $words" "" "$(cat err.txt)"
    check "files with $words to $stdout" "old 0" "$(state) $(leftovers)"
done <<END
out.txt --list lonely small.scp out.scp
out.txt small.scp lonely
out.txt small.scp full
out.txt big.scp full
out.txt --removed lonely big.scp out.scp
out.txt --page lonely --dry-run small.scp
out.txt --page full --dry-run small.scp
out.txt --removed full big.scp out.scp
full small.scp out.scp
full --quiet small.scp /dev/stdout
full --quiet big.scp /dev/stdout
out.txt --removed terminal big.scp out.scp
screen --quiet --removed /dev/stdout big.scp out.scp
END
for words in "restore big.scp small.scp full" "list make list.lst" "--facet-in 9 - out.scp" \
    "restore big.scp - out.scp"; do
    # shellcheck disable=SC2086  # several words
    sleep 2 | TMPDIR=. timeout --foreground --preserve-status -k 20 1 "$batch" $words >out.txt 2>err.txt
    check "a waiting run of $words" "130 Halt command issued. 0" "$? $(tail -qn 1 out.txt err.txt) $(leftovers)"
done
cmp "$samples"/cleanup.lst list.lst || check "the old list" same other
kill "$terminal"
timeout -k 1 20 "$batch" --facet-in 9 lonely out.scp >out.txt 2>err.txt
check "a pipe as input that nobody writes to" "1 quillmere-batch: lonely (a pipe cannot be read twice): Path/File access error (75)" \
    "$? $(sed 's|)\. .*|)|' err.txt)"
exec 5<>lonely
exec 6<lonely
printf 'Torches\r\n' >&5
exec 5>&-
timeout -k 1 20 "$batch" --items equal --list /dev/stdin small.scp out.scp <&6 >out.txt 2>err.txt
check "a pipe as list whose writer is gone" "1 quillmere-batch: /dev/stdin, line 1: Input past end of file (62)" \
    "$? $(sed 's|)\. .*|)|' err.txt)"

# A second request ends it at once, as other signals do. No file stays, not even where it needs a name from the start
# because there is no /proc.
without_proc=(unshare -m sh -c 'umount -l /proc && exec "$@"' sh)
if ! "${without_proc[@]}" true 2>/dev/null; then
    echo "SKIPPED: temporary files with names: because nothing can be unmounted here"
    without_proc=()
fi
for signal in HUP QUIT XCPU USR1 USR2 ALRM VTALRM PROF; do
    start_waiting_run "${without_proc[@]}"
    check "temporary files before SIG$signal" "$((${#without_proc[@]} > 0))" "$(leftovers)"
    if [ "$signal" = HUP ]; then # two requests at once, or the first one would end it
        kill -s STOP "$pid"
        kill -s TERM "$pid"
    fi
    kill -s "$signal" "$pid"
    kill -s CONT "$pid"
    resume
    [ "$signal $status" != "HUP 143" ] || status=129 # which comes second is up to the system
    check "exit code after SIG$signal at once" "$((128 + $(kill -l "$signal")))" "$status"
    check "files after SIG$signal at once" "old 0" "$(state) $(leftovers)"
done 2>/dev/null
start_waiting_run "${without_proc[@]}"
kill -s KILL "$pid"
resume 2>/dev/null
"$batch" --quiet "${arguments[@]}"
check "a run beside what was left" "0 new" "$? $(state)"

if ! command -v strace >/dev/null || ! strace -f --quiet=all -o calls.txt "$batch" "${arguments[@]}" >out.txt 2>&1; then
    echo "SKIPPED: the end of the program at every system call: because strace cannot trace here"
    finish_checks
    exit
fi
# sweep SIGNAL: a run for each system call in calls.txt, with the signal sent as that call is made. Prints how often
# each outcome occurred: exit code, state of the files, number of temporary files left.
sweep() {
    sed 's/^[0-9]* *//; s/(.*//' calls.txt | grep '^[a-z]' | sort | uniq -c | while read -r times call; do
        for number in $(seq "$times"); do
            make_old
            strace -f --quiet=all -o trace.txt -e "inject=$call:signal=$1:when=$number" "$batch" "${arguments[@]}" >out.txt 2>err.txt
            ended=$?
            echo "$ended $(state) $(leftovers)"
            [ "$ended" -ne 130 ] || grep -o 'fsync' trace.txt # a halted run does not wait for the disk
        done
    done 2>/dev/null | sort | uniq -c
}
sweep KILL >kill.txt
sed 's/^/SIGKILL: /' kill.txt
# A run may make fewer calls than the one in calls.txt. Then no signal is sent, and it succeeds.
check "ends by SIGKILL" "" "$(grep -vE ' (137 old [01]|137 between [01]|137 new 0|0 new 0)$' kill.txt)"
for seen in "137 old 0" "137 old 1" "137 between 0" "137 between 1" "137 new 0"; do
    check "a kill that ended with $seen" 1 "$(grep -c " $seen\$" kill.txt)"
done
check "files with other names" 0 "$(strangers)"
sweep TERM >term.txt
sed 's/^/SIGTERM: /' term.txt
# strace counts the calls of each thread separately, so a signal may be sent twice.
check "ends by SIGTERM" "" "$(grep -vE ' (143 old 0|130 old 0|0 new 0)$' term.txt)"
for seen in "143 old 0" "130 old 0" "0 new 0"; do
    check "a SIGTERM that ended with $seen" 1 "$(grep -c " $seen\$" term.txt)"
done
finish_checks
