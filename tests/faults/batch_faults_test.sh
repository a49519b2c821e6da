#!/usr/bin/env bash
# The batch program on a system where something fails. Whatever it is, the run says so and fails, the input and the old
# output stay as they were, and no other file is left over.
# Usage: batch_faults_test.sh FOLDER_OF_PROGRAMS SAMPLES
set -u
# shellcheck source=tests/support/checks.sh
. "$(dirname "$0")/../support/checks.sh"
bin=$1
samples=$2
batch=$bin/quillmere-batch
same="quillmere-batch: You picked the same file to load and save."

cp "$samples"/cleanup.lst list.lst
"$bin"/make_world --blocks 20000 --seed 3 >in.scp # 1.4 MB: several buffers
filters=(--list list.lst --items equal)
"$batch" "${filters[@]}" --removed gone.scp in.scp out.scp >out.txt || exit 1
sum=$(sha256sum <in.scp)
clean=$(sha256sum <out.scp)
removed=$(sha256sum <gone.scp)

# disk SIZE: mounts an empty disk of that many KiB at the folder disk/.
disk() {
    umount disk 2>/dev/null
    mkdir -p disk && mount -t tmpfs -o "size=$1k" tmpfs disk 2>/dev/null
}
trap 'umount disk other fixed.scp 2>/dev/null; chattr -ia fixed.scp 2>/dev/null; chmod -R u+w "$work"; rm -rf "$work"' EXIT

skip() { echo "SKIPPED: $1: because $2"; }

# run COMMAND...: leaves what was printed in out.txt and err.txt and the exit code in status.
run() {
    "$@" >out.txt 2>err.txt
    status=$?
}

# expect_failure WHAT FILE DESCRIPTION NUMBER: checks that the last run failed like this and changed none of the files.
expect_failure() {
    check "exit code: $1" 1 "$status"
    check "first error line: $1" "quillmere-batch: ${2:+$2: }$3 ($4)" "$(sed -n '1s|)\. .*|)|p' err.txt)"
    check "report: $1" "Oops description: $3"$'\n'"Oops number: $4" "$(grep -m 1 -A 1 '^Oops' out.txt)"
    check "last entry: $1" "Error in filter engine.  Pffft...." "$(tail -n 1 out.txt)"
    expect_untouched "$1"
}

expect_untouched() {
    check "input: $1" "$sum" "$(sha256sum <in.scp)"
    check "old output: $1" "$clean" "$(sha256sum <out.scp)"
    check "old file of removed blocks: $1" "$removed" "$(sha256sum <gone.scp)"
    check "temporary files: $1" "" "$(find . -name 'quillmere-*.tmp')"
}

# A whole run from in.scp to out.scp and gone.scp.
clean_run() { run "$batch" "${filters[@]}" --removed gone.scp in.scp out.scp; }

run "$batch" --facet-in 1 in.scp /dev/full
expect_failure "a full device" /dev/full "Disk full" 61

# The disk is full at the first byte, in the middle, and at the last bytes, which are written by the close.
if disk 64; then
    while read -r size fill what; do
        disk "$size"
        echo old >disk/out.scp
        [ "$fill" = full ] && head -c "${size}K" /dev/zero >disk/filler 2>/dev/null
        run "$batch" --facet-in 9 in.scp disk/out.scp
        expect_failure "disk full $what" disk/out.scp "Disk full" 61
        check "old output, disk full $what" old "$(cat disk/out.scp)"
        run "$batch" restore gone.scp out.scp disk/out.scp
        check "restoration, disk full $what" "1 quillmere-batch: disk/out.scp: Disk full (61) old" \
            "$status $(sed 's|)\. .*|)|' err.txt) $(cat disk/out.scp)"
        rm disk/out.scp
        run "$batch" --facet-not-in 9 --removed disk/gone.scp in.scp out.scp
        expect_failure "disk full $what of the removed blocks" disk/gone.scp "Disk full" 61
    done <<'END'
64 full at the start
400 empty in the middle
1368 empty at the end
END
    umount disk
else
    skip "full disks" "tmpfs cannot be mounted here"
fi
(ulimit -f 100 && run "$batch" --facet-in 9 in.scp out.scp && exit "$status")
status=$?
expect_failure "files may not grow" out.scp "Device I/O error" 57

# faulty WHICH FAULT: a run with a system call on the input, the output, its folder or any file made to fail. The new
# output has no name yet. The system calls it by its number, and tmpfs numbers its files in turn.
faulty() {
    touch disk/probe
    case $1 in
        input) files=(-P "$work/in.scp" -P in.scp) ;;
        output) files=(-P "$work/disk/#$(($(stat -c %i disk/probe) + 1))") ;;
        folder) files=(-P "$work/disk") ;;
        *) files=() ;;
    esac
    rm disk/probe
    run strace -D -f --quiet=all -o trace.txt "${files[@]}" -e "inject=$2" \
        "$batch" "${filters[@]}" --removed gone.scp in.scp out.scp
    for _ in $(seq 50); do
        grep -q INJECTED trace.txt && return
        sleep 0.02
    done
    check "a fault injected: $*" INJECTED "none"
}

if command -v strace >/dev/null && strace -D --quiet=all -o trace.txt true 2>/dev/null && disk 8000; then
    mv out.scp gone.scp disk
    ln -s disk/out.scp disk/gone.scp .
    writes="write,writev"
    while IFS='|' read -r which fault file description number; do
        faulty "$which" "$fault"
        expect_failure "$which $fault" "$file" "$description" "$number"
    done <<END
output|$writes:error=ENOSPC:when=1|out.scp|Disk full|61
output|$writes:error=EIO:when=2|out.scp|Device I/O error|57
output|$writes:retval=0:when=2|out.scp|Device I/O error|57
output|close:error=EIO:when=1|out.scp|Device I/O error|57
output|fsync:error=EIO:when=1|out.scp|Device I/O error|57
any|fsync:error=EIO:when=2|gone.scp|Device I/O error|57
any|fsync:error=EIO:when=4|gone.scp|Device I/O error|57
output|fchmod:error=EPERM:when=1|out.scp|Path/File access error|75
folder|openat:error=ENOSPC:when=4+|out.scp|Disk full|61
any|linkat:error=ENOSPC:when=1|gone.scp|Disk full|61
any|/^rename:error=EACCES:when=1|gone.scp|Path/File access error|75
any|/^rename:error=ENOSPC:when=1|gone.scp|Disk full|61
input|read:error=EIO:when=1|in.scp|Device I/O error|57
input|read:error=EIO:when=8+|in.scp|Device I/O error|57
input|openat:error=EMFILE:when=3|in.scp|Too many files|67
input|openat:error=ENOENT:when=4|in.scp|File not found|53
END
    # Interrupted calls are made again. The run also survives that there is nothing to sync, that the owner cannot be
    # kept and that no file without a name can be made.
    for fault in "output $writes:error=EINTR:when=2" "input read:error=EINTR:when=3" \
        "output fsync:error=EINTR:when=1" "output close:error=EINTR:when=1" "output fsync:error=EINVAL:when=1" \
        "output fchown:error=EPERM:when=1" "folder openat:error=EOPNOTSUPP:when=4"; do
        # shellcheck disable=SC2086  # two words
        faulty $fault
        check "exit code: $fault" 0 "$status"
        expect_untouched "$fault"
    done
    # The file of removed blocks is in place by then, so every block is still in one of the files.
    faulty any /^rename:error=EIO:when=2
    expect_failure "the second rename" out.scp "Device I/O error" 57
    filters+=(--backup)
    faulty any linkat:error=EPERM:when=1
    expect_failure "no hard links" "out.scp~ (the old file cannot be kept: no hard link to it can be made)" \
        "Path/File access error" 75
    faulty any /^rename:error=EPERM:when=1
    expect_failure "the older file may not be replaced" out.scp~ "Path/File access error" 75
    unset 'filters[-1]'
    rm out.scp gone.scp
    mv disk/out.scp disk/gone.scp .
    umount disk
else
    skip "system calls that fail" "strace cannot trace or tmpfs cannot be mounted here"
fi

# The input is cut short, removed or written to while a pass waits for the reader of its removed blocks.
mkfifo pipe
for change in "truncate -s 400000 cut.scp" "truncate -s 0 cut.scp" "rm cut.scp" "truncate -s +1 cut.scp"; do
    cp in.scp cut.scp
    "$batch" --facet-not-in 9 --removed pipe cut.scp cut_out.scp >out.txt 2>err.txt &
    exec 3<pipe
    head -c 1 <&3 >/dev/null # comes when the first buffer of removed blocks is full
    $change
    cat <&3 >/dev/null
    exec 3<&-
    wait $!
    status=$?
    if [ "$change" = "rm cut.scp" ]; then
        check "exit code: $change" 0 "$status"
        check "blocks read: $change" "Processed 20001 items." "$(tail -n 1 out.txt)"
    elif [ "$change" = "truncate -s +1 cut.scp" ]; then
        expect_failure "$change" "cut.scp (changed while it was read)" "File changed while it was read" 77
    else
        expect_failure "$change" "cut.scp (cut short while it was read)" "Input past end of file" 62
        check "output: $change" "" "$(ls cut_out.scp 2>/dev/null)"
    fi
done

# A file takes the place of a pipe that the run waits for, and a name stands for a file of the run itself.
mkfifo lonely
"$batch" "${filters[@]}" in.scp lonely >out.txt 2>err.txt &
until readlink /proc/$!/fd/* | grep -q lonely; do sleep 0.1; done 2>/dev/null
ln in.scp link && sleep 0.1 && mv -f link lonely
wait $!
status=$?
expect_failure "a file in the place of a pipe" "lonely (another program put a file there meanwhile)" \
    "Path/File access error" 75
for number in 3 4 5 6 7 8 9; do
    run "$batch" "${filters[@]}" --removed "/dev/fd/$number" in.scp out.scp {number}>&-
    expect_failure "removed blocks to descriptor $number" "/dev/fd/$number" "Path/File access error" 75
done

# An output that nobody may change or replace, not even the superuser.
echo old >fixed.scp
for attribute in "i|" "a| (may only grow)"; do
    if chattr "+${attribute%%|*}" fixed.scp 2>/dev/null; then
        run "$batch" --facet-not-in 1 --removed none.scp in.scp fixed.scp
        expect_failure "output with attribute $attribute" "fixed.scp${attribute#*|}" "Path/File access error" 75
        chattr "-${attribute%%|*}" fixed.scp
    else
        skip "an output with attribute $attribute" "chattr does not work here"
    fi
done
if mount --bind fixed.scp fixed.scp 2>/dev/null; then
    run "$batch" --facet-in 1 in.scp fixed.scp
    expect_failure "mounted output" "fixed.scp (mounted by itself)" "Path/File access error" 75
    umount fixed.scp
else
    skip "a mounted output" "no file can be mounted here"
fi
# The superuser has every permission, so the program runs as nobody.
if [ "$(id -u)" -eq 0 ] && command -v setpriv >/dev/null; then
    chmod 755 . && mkdir -m 777 open && mkdir -m 755 closed
    install -m 000 in.scp open/unreadable.scp
    install -m 444 in.scp open/readonly.scp
    install -m 666 -D in.scp sticky/all.scp && chmod 1777 sticky
    mkdir -m 700 private
    while IFS='|' read -r input output culprit description number; do
        run setpriv --reuid=65534 --regid=65534 --clear-groups "$batch" --facet-in 1 "$input" "$output"
        expect_failure "as nobody from $input to $output" "$culprit" "$description" "$number"
    done <<'END'
open/unreadable.scp|open/out.scp|open/unreadable.scp|Permission denied|70
in.scp|open/readonly.scp|open/readonly.scp|Path/File access error|75
in.scp|closed/new.scp|closed/new.scp|Permission denied|70
in.scp|out.scp|out.scp|Path/File access error|75
in.scp|sticky/all.scp|sticky/all.scp (only its owner may replace it)|Path/File access error|75
private/save.scp|private/clean.scp|private/save.scp|Permission denied|70
END
    # The output's group is kept when the user belongs to it. Otherwise the new group gets the permissions of everyone.
    while read -r groups mode expected; do
        install -m "$mode" -o 1 -g 50 out.scp open/group.scp
        run setpriv --reuid=65534 --regid=65534 "$groups" "$batch" --facet-in 1 in.scp open/group.scp
        check "permissions and group after $groups" "0 $expected" "$status $(stat -c '%a %g' open/group.scp)"
    done <<'END'
--groups=50 660 660 50
--clear-groups 676 666 65534
--clear-groups 606 600 65534
END
    # A link in a folder that all users share is followed only when it belongs to the user or to the folder's owner.
    install -o 1 -m 600 in.scp open/save.scp
    ln -s ../open/save.scp sticky/link.scp
    for user in 0 1; do
        chown -h 65534 sticky/link.scp
        for files in "--removed open/new.scp in.scp sticky/link.scp" "--removed sticky/link.scp in.scp open/new.scp"; do
            # shellcheck disable=SC2086  # several words
            run setpriv --reuid="$user" --clear-groups "$batch" "${filters[@]}" $files
            expect_failure "user $user, $files" "sticky/link.scp (a link that somebody else put into a shared folder)" \
                "Permission denied" 70
            check "where the link leads: user $user, $files" "$sum" "$(sha256sum <open/save.scp)"
        done
        chown -h "$user" sticky/link.scp
        run setpriv --reuid="$user" --clear-groups "$batch" --facet-not-in 9 in.scp sticky/link.scp
        check "exit code with a link of user $user" 0 "$status"
        install -o 1 -m 600 in.scp open/save.scp
    done
else
    skip "permissions" "only the superuser can run the program as nobody, with setpriv"
fi

# The owner and the permissions stay, also where the file cannot be made without a name because there is no /proc.
install -m 640 out.scp owned.scp
[ "$(id -u)" -ne 0 ] || chown 65534:65534 owned.scp
before=$(stat -c '%a %u %g' owned.scp)
run "$batch" --quiet "${filters[@]}" in.scp owned.scp
check "owner and permissions" "0 $before" "$status $(stat -c '%a %u %g' owned.scp)"
if unshare -m true 2>/dev/null; then
    rm gone.scp
    # shellcheck disable=SC2016  # for the other shell
    run unshare -m sh -c 'umount -l /proc && exec "$@"' sh "$batch" "${filters[@]}" --removed gone.scp in.scp owned.scp
    check "owner and permissions without /proc" "0 $before" "$status $(stat -c '%a %u %g' owned.scp)"
    expect_untouched "no /proc"
else
    skip "a run without /proc" "nothing can be mounted here"
fi

# One file under two names is refused before anything is opened.
mkdir one other
if mount --bind one other 2>/dev/null; then
    run "$batch" "${filters[@]}" --removed one/new.scp in.scp other/new.scp
    check "refusal of one place in a folder mounted twice" "2 $same" "$status $(sed 's|\. .*|.|' err.txt)"
    umount other
else
    skip "a folder mounted twice" "no folder can be mounted here"
fi

# No descriptors left. Three are the standard streams; then come the input, and four each for the output and the removed
# blocks: the folder, the old file, the new one, and the new one for writing.
for descriptors in $(seq 4 9); do
    (ulimit -n "$descriptors" && clean_run && exit "$status")
    status=$?
    case $descriptors in 4) culprit=in.scp ;; [5-7]) culprit=out.scp ;; *) culprit=gone.scp ;; esac
    expect_failure "$descriptors descriptors" "$culprit" "Too many files" 67
done
(ulimit -n 20 && clean_run && exit "$status")
check "exit code with enough descriptors" 0 $?

# A line of 3 GB that memory cannot hold: a header, in a body, before the first block.
for start in '[A' '[A b]\r\n' '// comment\r\n'; do
    # shellcheck disable=SC2059  # the line ends are in the variable
    printf "$start" >long.scp
    truncate -s 3G long.scp
    (ulimit -v 400000 && run "$batch" --facet-in 9 long.scp out.scp && exit "$status")
    status=$?
    culprit=$(sed -n '1s/^quillmere-batch: \(long.scp[^:]*\):.*/\1/p' err.txt)
    expect_failure "3 GB after $start" "$culprit" "Out of memory" 7
done
# One that memory holds takes its length once in the buffer, and once more in its block.
printf '[A b]\r\n' >long.scp
truncate -s 200M long.scp
(ulimit -v 550000 && run "$batch" --force --facet-in 9 long.scp /dev/null && exit "$status")
check "exit code with a line of 200 MB" 0 $?
rm long.scp
# A report that takes more memory than the run.
seq -f '[A code_%.0f]' 100000 | sed G >codes.scp
(ulimit -v 60000 && run "$batch" survey --force --json codes.scp && exit "$status")
check "a report without memory" '1 1 quillmere-batch: Out of memory (7)' \
    "$? $(grep -c '"outcome": "failed"' out.txt) $(sed 's|)\. .*|)|' err.txt)"

# Standard streams that are full or closed. A run whose report is lost fails, and no printed word gets into a file.
for streams in '>/dev/full' '>&-' '>&- 2>&-' '<&- >&- 2>&-' '>/dev/full 2>/dev/full'; do
    rm out.scp
    eval '"$batch" "${filters[@]}" --removed gone.scp in.scp out.scp' "2>err.txt $streams"
    check "exit code with $streams" 1 $?
    expect_untouched "$streams"
done
"$batch" --quiet "${filters[@]}" --removed gone.scp in.scp out.scp >&- 2>&-
check "exit code of a quiet run with closed streams" 0 $?
expect_untouched "a quiet run with closed streams"

# A hundred runs at once in one folder, ten for each output. A run fails when another one was faster.
pids=()
for i in $(seq 100); do
    "$batch" --quiet "${filters[@]}" in.scp "many$((i % 10)).scp" 2>"many$i.txt" &
    pids+=($!)
done
for i in $(seq 100); do
    wait "${pids[i - 1]}"
    echo "$? $(cut -d ' ' -f 3- "many$i.txt")"
done >ends.txt
check "ends of a hundred runs" "" \
    "$(grep -vxE '0 |1 \(another program put a file there meanwhile\): Path/File access error \(75\)\. .*' ends.txt)"
check "outputs of a hundred runs" "$clean" "$(for i in $(seq 0 9); do sha256sum <"many$i.scp"; done | sort -u)"
expect_untouched "a hundred runs"

# No uninitialised memory is read, no memory leaks, no descriptor stays open.
if command -v valgrind >/dev/null; then
    cp "$samples"/world.scp small.scp
    run valgrind --quiet --error-exitcode=9 --leak-check=full --show-leak-kinds=all --track-fds=yes \
        "$batch" "${filters[@]}" --rectangles in --facet-in 1 --removed small_gone.scp small.scp small_out.scp
    check "exit code under valgrind" 0 "$status"
    check "complaints of valgrind" "" "$(grep -v 'Open file descriptor\|inherited\|FILE DESCRIPTORS\|== *$' err.txt)"
else
    skip "memory errors" "valgrind is not installed"
fi
finish_checks
