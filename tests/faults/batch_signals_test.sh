#!/usr/bin/env bash
# The batch program asked to end, or killed, at any moment: there is the old output or the complete new one, and a block
# that left the output is in the file of removed blocks.
# Usage: batch_signals_test.sh FOLDER_OF_PROGRAMS SAMPLES
set -u
# shellcheck source=tests/support/checks.sh
. "$(dirname "$0")/../support/checks.sh"
bin=$1
samples=$2
batch=$bin/quillmere-batch

cp "$samples"/cleanup.lst list.lst
"$bin"/make_world --blocks 12000 >in.scp # so much that a thread of its own writes it
mkfifo pipe
arguments=(--list list.lst --items equal --removed gone.scp in.scp out.scp)
"$batch" --quiet "${arguments[@]}" || exit 1
new="$(sha256sum <gone.scp) $(sha256sum <out.scp)"
old="$(echo old | sha256sum) $(echo old | sha256sum)"
between="$(sha256sum <gone.scp) $(echo old | sha256sum)" # the removed blocks are put in place first

# What the two files hold, by the names above.
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
strangers() { find . -type f | grep -vcE '/(in.scp|list.lst|out.scp|gone.scp|big.scp|[a-z]+.txt|quillmere-[0-9]+-0.tmp)$'; }

# A pass that stands still, since nobody reads its removed blocks, until resume.
start_waiting_run() {
    make_old
    # A shell starts its background jobs with interrupts ignored, and the program respects that.
    env --default-signal=INT "$batch" --facet-not-in 9 --removed pipe big.scp out.scp >out.txt 2>err.txt &
    pid=$!
    exec 3<pipe
    head -c 1 <&3 >/dev/null # comes with the first full buffer of removed blocks
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

# A second request, of whatever kind, ends it at once. What it leaves is clearly named, and in nobody's way.
start_waiting_run
kill -s INT "$pid"
while ! grep -q $'^ShdPnd:\t0*$' "/proc/$pid/status"; do sleep 0.02; done # until it came
kill -s TERM "$pid"
resume
check "exit code after two requests" 143 "$status"
check "files after two requests" "old ./quillmere-$pid-0.tmp" "$(state) $(find . -name 'quillmere-*.tmp')"
"$batch" --quiet "${arguments[@]}"
check "a run beside what was left" "0 new 1" "$? $(state) $(leftovers)"

if ! command -v strace >/dev/null || ! strace -f --quiet=all -o calls.txt "$batch" "${arguments[@]}" >out.txt 2>&1; then
    echo "SKIPPED: the end of the program at every system call: because strace cannot trace here"
    finish_checks
    exit
fi
# sweep SIGNAL: a run for each system call of a run, with the signal sent as that call is made. Prints what came of
# them: how often which exit code, state of the files, number of files left over.
sweep() {
    sed 's/^[0-9]* *//; s/(.*//' calls.txt | grep '^[a-z]' | sort | uniq -c | while read -r times call; do
        for number in $(seq "$times"); do
            make_old
            strace -f --quiet=all -o trace.txt -e "inject=$call:signal=$1:when=$number" "$batch" "${arguments[@]}" >out.txt 2>err.txt
            echo "$? $(state) $(leftovers)"
        done
    done 2>/dev/null | sort | uniq -c
}
sweep KILL >kill.txt
sed 's/^/SIGKILL: /' kill.txt
# A run may make a call less than the one that was counted, and then comes to its end.
check "ends by SIGKILL" "" "$(grep -vE ' (137 old [0-2]|137 between 1|137 new 0|0 new 0)$' kill.txt)"
for seen in "137 old 0" "137 old 1" "137 old 2" "137 between 1" "137 new 0"; do
    check "a kill that ended with $seen" 1 "$(grep -c " $seen\$" kill.txt)"
done
check "names left behind" 0 "$(strangers)"
sweep TERM >term.txt
sed 's/^/SIGTERM: /' term.txt
# The calls of each thread are counted by themselves, so that a signal may come twice.
check "ends by SIGTERM" "" "$(grep -vE ' (143 old [0-2]|130 old 0|0 new 0)$' term.txt)"
for seen in "143 old 0" "130 old 0" "0 new 0"; do
    check "a SIGTERM that ended with $seen" 1 "$(grep -c " $seen\$" term.txt)"
done
finish_checks
