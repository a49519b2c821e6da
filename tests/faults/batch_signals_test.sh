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
"$bin"/make_world --blocks 100 >small.scp
"$bin"/make_world --blocks 12000 >in.scp # enough for the output to be written on a thread of its own
"$bin"/make_world --blocks 20000 >big.scp
mkfifo pipe lonely full silent
arguments=(--list list.lst --items equal --removed gone.scp in.scp out.scp)
make_old() {
    rm -f quillmere-*.tmp
    echo old >gone.scp
    echo old >out.scp
}
hashes() { sha256sum gone.scp out.scp; }
declare -A states
make_old
states[$(hashes)]=old
"$batch" --quiet "${arguments[@]}" || exit 1
states[$(hashes)]=new
echo old >out.scp
states[$(hashes)]=between # gone.scp is put in place first
# Prints which of these states the two files are in, and how many temporary files there are.
state() { echo "${states[$(hashes)]-broken} $(find . -name 'quillmere-*.tmp' | wc -l)"; }

# start COMMAND...: starts it with the two files old.
start() {
    make_old
    "$@" 2>err.txt <silent &
    pid=$!
}
# Waits for its end and leaves the exit code in status.
end() {
    wait_for ended "$pid" || kill -s KILL "$pid"
    wait "$pid"
    status=$?
}

# Starts a pass that waits until resume, since nobody reads its removed blocks. "$@" is put before the command.
start_waiting_run() {
    exec 4<>pipe
    # A script's background jobs start with interrupts ignored, and the program leaves them ignored.
    start "$@" env --default-signal=INT,QUIT "$batch" --facet-not-in 9 --removed pipe big.scp out.scp >out.txt 4>&-
    timeout 60 head -c 1 <&4 >/dev/null # comes when the first buffer of removed blocks is full
    exec 3<pipe 4>&-
}
resume() {
    timeout 60 cat <&3 >/dev/null
    exec 3<&-
    end
}

# One request ends a run that waits for the other side of a pipe: while it is opened, read or written, for a list, for
# blocks, and for the log. Only --quiet leaves standard output to the blocks.
exec 5<>silent 6<>full
head -c 65536 /dev/zero >&6
/usr/bin/python3 -c 'import os, pty, time
for name in "terminal", "screen":
    os.symlink(os.ttyname(pty.openpty()[1]), name)
time.sleep(600)' &
terminal=$!
wait_for test -L screen
# waits PID: whether it has its handlers for signals, SIGTERM among them, and all its threads sleep.
waits() { grep -q '^SigCgt:.*[4-7c-f]...$' "/proc/$1/status" && ! grep -q '^State:.[RD]' "/proc/$1/task/"*/status; }
cleaning="--facet-not-in 9"
while read -r stdout words; do
    # shellcheck disable=SC2086  # several words
    TMPDIR=. start "$batch" $words >"$stdout"
    wait_for waits "$pid"
    kill "$pid"
    end
    check "a waiting run of $words to $stdout" "130 old 0" "$status $(state)"
done <<END
out.txt $cleaning --list lonely small.scp out.scp
out.txt $cleaning small.scp lonely
out.txt $cleaning small.scp full
out.txt $cleaning big.scp full
out.txt $cleaning --removed lonely big.scp out.scp
out.txt $cleaning --removed full big.scp out.scp
out.txt $cleaning --removed terminal big.scp out.scp
out.txt $cleaning --page lonely --dry-run small.scp
out.txt --facet-in 9 - out.scp
out.txt restore big.scp - out.scp
out.txt restore big.scp small.scp full
out.txt list make list.lst
full $cleaning small.scp out.scp
full $cleaning --quiet big.scp /dev/stdout
screen $cleaning --quiet --removed /dev/stdout big.scp out.scp
END
kill "$terminal"
check "the old list" "$(sha256sum <"$samples"/cleanup.lst)" "$(sha256sum <list.lst)"

# One request halts a pass between two blocks, a second one ends it at once, as other signals do. No file stays, not even
# where it needs a name from the start because there is no /proc.
without_proc=(unshare -m sh -c 'umount -l /proc && exec "$@"' sh)
if ! "${without_proc[@]}" true 2>/dev/null; then
    echo "SKIPPED: temporary files with names: because nothing can be unmounted here"
    without_proc=()
fi
named=$((${#without_proc[@]} > 0))
for signals in INT TERM HUP "TERM HUP" QUIT XCPU USR1 USR2 ALRM VTALRM PROF KILL; do
    start_waiting_run "${without_proc[@]}"
    check "files before $signals" "old $named" "$(state)"
    for signal in STOP $signals CONT; do # two requests at once, or the first one would end it
        kill -s "$signal" "$pid"
    done
    resume
    [ "$signals $status" != "TERM HUP 143" ] || status=129 # which comes second is up to the system
    case $signals in INT | TERM | HUP) code=130 ;; *) code=$((128 + $(kill -l "${signals#* }"))) ;; esac
    check "$signals" "$code old $([ "$signals" = KILL ] && echo "$named" || echo 0)" "$status $(state)"
done 2>/dev/null
"$batch" --quiet "${arguments[@]}"
check "a run beside what was left" "0 new $named" "$? $(state)"

# No signal of its own ends the first process of a container.
if unshare --pid --fork true 2>/dev/null; then
    start_waiting_run unshare --pid --fork
    kill -s USR1 "$(cat "/proc/$pid/task/$pid/children")"
    resume
    check "SIGUSR1 in a container" "138 old 0" "$status $(state)"
else
    echo "SKIPPED: a signal in a container: because no process identifiers can be separated here"
fi

if ! strace -f --quiet=all -o calls.txt "$batch" "${arguments[@]}" >out.txt 2>&1; then
    echo "SKIPPED: the end of the program at every system call: because strace cannot trace here"
    finish_checks
    exit
fi
# sweep SIGNAL: a run for each system call, from the first one that names the list on, with the signal sent as that call
# is made. Prints how often each outcome occurred: exit code, state of the files, number of temporary files.
sweep() {
    sed 's/^[0-9]* *//' calls.txt |
        awk -F '(' '/^[a-z]/ { ++made[$1] } /^[a-z].*list.lst/ && !/^exec/, 0 { if (/^[a-z]/) print $1, made[$1] }' |
        while read -r call number; do
            make_old
            strace -f --quiet=all -o trace.txt -e "trace=$call,fsync" -e "inject=$call:signal=$1:when=$number" \
                "$batch" "${arguments[@]}" >out.txt 2>err.txt
            ended=$?
            echo "SIG$1: $ended $(state)"
            [ "$ended" -ne 130 ] || grep -o fsync trace.txt # a halted run does not wait for the disk
        done 2>/dev/null | sort | uniq -c
}
# A run may make fewer calls than the one in calls.txt. Then no signal is sent, and it succeeds. strace counts the calls
# of each thread separately, so a signal may be sent twice.
{ sweep KILL && sweep TERM; } | tee ends.txt
check "all ends but SIGKILL: 0 new 0" "KILL: 137 between 0, KILL: 137 between 1, KILL: 137 new 0, KILL: 137 old 0, \
KILL: 137 old 1, TERM: 0 new 0, TERM: 130 old 0, TERM: 143 old 0, " \
    "$(sed 's/.*SIG//; s/$/, /; /^KILL: 0 new 0/d' ends.txt | tr -d '\n')"
check "files" "big calls ends err gone in list out out small trace" \
    "$(find . -type f ! -name 'quillmere-*.tmp' -printf '%P\n' | sort | sed 's/\..*//' | xargs)"
finish_checks
