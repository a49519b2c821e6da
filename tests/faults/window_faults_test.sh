#!/usr/bin/env bash
# The window program on a system where something fails. The Status log says what, and the program goes on. The test uses
# it with keyboard and mouse.
# Usage: window_faults_test.sh FOLDER_OF_PROGRAMS SAMPLES
set -u
# shellcheck source=tests/support/x_session.sh
. "$(dirname "$0")/../support/x_session.sh"
# shellcheck source=tests/support/checks.sh
. "$(dirname "$0")/../support/checks.sh"
bin=$1

# The program remembers in.scp and out.scp. They are links, and each case has them lead to other files.
mkdir program
cp "$bin"/quillmere program/
"$bin"/make_world --blocks 20000 --seed 3 >world.scp # 1.4 MB: several buffers
"$bin"/quillmere-batch --quiet --facet-in 9 world.scp expected.scp
sum=$(sha256sum <world.scp)
lead() {
    rm -rf in.scp out.scp
    ln -s "$1" in.scp
    ln -s "$2" out.scp
}

start_with_facet_filter() {
    rm -f program/DSCPOPTS.INI
    printf 'False\r\n%s\r\n%s\r\n' "$work/in.scp" "$work/out.scp" >program/DSCPOPTS.INI
    start_program program
    click 20 216 # Filter Faucets
    click 140 266
    xdotool type 9
}

# after_run NUMBER DESCRIPTION WHAT: runs a pass and expects this failure at the top of the log.
after_run() {
    press alt+r
    expect_report "$@" "filter engine"
}
expect_report() {
    wait_for_log "Oops number: $1"
    check "report: $3" "Error in $4.  Pffft....|Oops number: $1|Oops description: $2" \
        "$(copy_log | tr -d '\r' | grep -m 3 . | paste -sd '|')"
}

# prefix FILE: prints the size of FILE when it holds the first bytes of a whole run's output.
prefix() { head -c "$(stat -Lc %s "$1")" expected.scp | cmp -s - "$1" && stat -Lc %s "$1"; }


start_x_session

trap 'end_x_session; umount disk 2>/dev/null; chattr -i fixed.scp 2>/dev/null; rm -rf "$work"' EXIT
start_with_facet_filter

while IFS='|' read -r input output number description; do
    lead "$input" "$output"
    after_run "$number" "$description" "from $input to $output"
done <<'END'
absent.scp|new.scp|53|File not found
world.scp|/dev/full|61|Disk full
world.scp|program|75|Path/File access error
END

mkdir disk
if mount -t tmpfs -o size=400k tmpfs disk 2>/dev/null; then
    lead world.scp disk/out.scp
    after_run 61 "Disk full" "disk full in the middle"
    check "what fitted on the full disk" 409600 "$(prefix out.scp)"
    umount disk
else
    echo "SKIPPED: a disk that fills up: because tmpfs cannot be mounted here"
fi

echo old >fixed.scp
if chattr +i fixed.scp 2>/dev/null; then
    lead world.scp fixed.scp
    after_run 75 "Path/File access error" "immutable output"
    chattr -i fixed.scp
    check "immutable output" old "$(cat fixed.scp)"
else
    echo "SKIPPED: immutable output: because chattr +i does not work here"
fi

# A reader that goes away and a file that may not grow: by default the signals for them end the program.
mkfifo pipe
lead world.scp pipe
head -c 1000 pipe >/dev/null &
after_run 57 "Device I/O error" "a reader that goes away"
lead absent.scp new.scp
after_run 53 "File not found" "absent input"
prlimit --pid "$program" --fsize=300000:unlimited
lead world.scp limited.scp
after_run 57 "Device I/O error" "files may not grow"
check "what fitted into the limit" 300000 "$(prefix limited.scp)"
prlimit --pid "$program" --fsize=unlimited --nofile=3:
lead world.scp limited.scp
after_run 67 "Too many files" "no descriptor left"
prlimit --pid "$program" --nofile=1024: --as=$((1024 * $(awk '/^VmSize/ { print $2 }' "/proc/$program/status") + 200000000)):
truncate -s 3G long.scp
lead long.scp limited.scp
after_run 7 "Out of memory" "a line of 3 GB"
prlimit --pid "$program" --as=unlimited

# The input is cut short while the pass waits for a reader.
cp world.scp cut.scp
lead cut.scp pipe
exec 3<>pipe
press alt+r
head -c 1 <&3 >/dev/null # comes when the first buffer is full
truncate -s 400000 cut.scp
cat <&3 >/dev/null &
reader=$!
wait_for_log "Oops number: 62"
check "reports of the reader and of the pass" "52 62" "$(copy_log | grep -o 'number: [0-9]*' | cut -c9- | xargs)"
kill "$reader"
exec 3<&-

# Lists and options.
ln -s /dev/full full.LST
press alt+t
editor=$(wait_for_window 'Rectangle and Item List Editor')
press alt+f s && type_path "$work/full.LST" && press y
press alt+f c
wait_until_gone "$editor"
expect_report 61 "Disk full" "list saved to a full disk" "list saving module"
lead absent.scp new.scp
after_run 53 "File not found" "absent input"
ln -sf /dev/full program/DSCPOPTS.INI
press alt+f Right Return # Misc, Translucency
expect_report 61 "Disk full" "options saved to a full disk" "options saving module"

lead world.scp out2.scp
press alt+r
wait_for_log "Processed 20001 items."
check "the output when nothing fails any more" "$(sha256sum <expected.scp)" "$(sha256sum <out2.scp)"
check "the input is never touched" "$sum" "$(sha256sum <world.scp)"

# A read that fails makes the pass fail. Killed at a write in mid-pass, the program leaves the blocks written so far.
if strace -f --quiet=all -o trace.txt true 2>/dev/null; then
    # fault FILE FAULT: makes system calls on FILE fail in the running program.
    fault() {
        strace -f --quiet=all -p "$program" -o trace.txt -P "$work/$1" -e "inject=$2" &
        tracer=$!
        until grep -q '^TracerPid:.[1-9]' "/proc/$program/status"; do sleep 0.05; done
    }
    fault world.scp read:error=EIO:when=2
    after_run 57 "Device I/O error" "a read that fails"
    kill "$tracer"
    wait "$tracer"
    for signal in TERM KILL; do
        : >killed.scp
        lead world.scp killed.scp
        fault killed.scp "write,writev:signal=$signal:when=2"
        press alt+r
        wait_for_end
        check "blocks written before SIG$signal: $(stat -c %s killed.scp)" 1 "$(($(prefix killed.scp) > 500000))"
        start_with_facet_filter
    done
else
    echo "SKIPPED: kills and reads that fail in mid-pass: because strace cannot trace here"
fi
press alt+x
wait_for_end
check "exit code" 0 "$program_status"
finish_checks
