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

cp "$samples"/cleanup.lst list.lst
"$bin"/make_world --blocks 20000 --seed 3 >in.scp # 1.4 MB: several buffers
cleaning=("$batch" --list list.lst --items equal)
whole=("${cleaning[@]}" --removed gone.scp in.scp out.scp)
"${whole[@]}" >out.txt || exit 1
files() { sha256sum in.scp out.scp gone.scp && find . -name 'quillmere-*.tmp'; }
before=$(files)

# disk SIZE: mounts an empty disk of that many KiB at the folder disk/.
disk() {
    umount disk 2>/dev/null
    mkdir -p disk && mount -t tmpfs -o "size=$1k" tmpfs disk 2>/dev/null
}
trap 'umount disk fixed.scp 2>/dev/null; chattr -ia fixed.scp 2>/dev/null; rm -rf "$work"' EXIT

# can WHAT COMMAND...: whether the command works, which a part of the test needs.
can() { "${@:2}" 2>/dev/null || { echo "SKIPPED: $1: because this does not work here: ${*:2}"; return 1; }; }

# run COMMAND...: leaves what was printed in out.txt and err.txt and the exit code in status.
run() {
    "$@" >out.txt 2>err.txt
    status=$?
}
first_error() { sed -n '1s/quillmere-batch: \(.*: \|\)[A-Z].* (\([0-9]*\))\. .*/\1\2/p' err.txt; }

# failed CULPRIT NUMBER WHAT: checks that the last run failed like this and changed none of the files.
failed() {
    check "$3" "1 ${1:+$1: }$2 $2 Error in filter engine.  Pffft...." \
        "$status $(first_error) $(sed -n 's/^Oops number: //p' out.txt | head -n 1) $(tail -n 1 out.txt)"
    untouched "$3"
}
untouched() { check "files: $1" "$before" "$(files)"; }
# completed WHAT: checks that the last run completed and wrote the same files once more.
completed() {
    check "exit code: $1" 0 "$status"
    untouched "$1"
}

# fails CULPRIT NUMBER COMMAND...
fails() {
    run "${@:3}"
    failed "$1" "$2" "${*:3}"
}
# limit WHAT NUMBER COMMAND...: runs it with a limit of ulimit.
limit() { (ulimit "$1" "$2" && shift 2 && "$@"); }
without_proc() { unshare -m sh -c 'umount -l /proc && exec "$@"' sh "$@"; }

# Only the standard streams are open, whatever was inherited; 255 is the shell's own.
for inherited in "/proc/$$/fd/"*; do
    case ${inherited##*/} in [012] | 255) ;; *) eval "exec ${inherited##*/}>&-" ;; esac
done

fails /dev/full 61 "$batch" --facet-in 1 in.scp /dev/full
fails out.scp 57 limit -f 100 "$batch" --facet-in 9 in.scp out.scp
for number in {3..9}; do
    fails "/dev/fd/$number" 75 "${cleaning[@]}" --removed "/dev/fd/$number" in.scp out.scp
done
# Three descriptors are the standard streams. Then come the input, and four each for the output and the removed blocks:
# the folder, the old file, the new one, and the new one for writing.
descriptors=3
for culprit in in.scp out.scp out.scp out.scp gone.scp gone.scp; do
    fails "$culprit" 67 limit -n $((++descriptors)) "${whole[@]}"
done

# The disk is full at the first byte, in the middle, and at the last bytes, which are written by the close.
if can "full disks" disk 4; then
    for size in 4 400 1368; do
        disk "$size"
        echo old >disk/out.scp
        fails disk/out.scp 61 "$batch" --facet-in 9 in.scp disk/out.scp
        fails disk/gone.scp 61 "$batch" --facet-not-in 9 --removed disk/gone.scp in.scp out.scp
        check "files on a disk of $size KiB" "disk/out.scp old" "$(echo disk/*) $(cat disk/out.scp)"
    done
fi

# faulty PATH FAULT: a run with a system call on a file or folder made to fail. The file disk/new is the new output, which
# has no name yet. The system calls it by its number, and tmpfs numbers its files in turn.
faulty() {
    touch disk/probe
    local path=${1/new/"#$(($(stat -c %i disk/probe) + 1))"}
    rm disk/probe
    run strace -f --quiet=all -o trace.txt -P "$work/$path" -P "$path" -e "inject=$2" "${whole[@]}" --backup
    check "a fault injected: $*" 0 "$(grep -q INJECTED trace.txt; echo $?)"
}

if can "system calls that fail" strace --quiet=all -o trace.txt true && can "system calls that fail" disk 8000; then
    mv out.scp gone.scp disk
    ln -s disk/out.scp disk/gone.scp .
    writes="write,writev"
    # Where no number is named, the run completes: interrupted calls are made again, and it does not matter that there
    # is nothing to sync, that the owner cannot be kept and that no file without a name can be made. At the failure of
    # the last rename the removed blocks are in place already, so every block is still in one of the files.
    while IFS='|' read -r path fault number culprit; do
        faulty "$path" "$fault"
        if [ -n "$number" ]; then failed "$culprit" "$number" "$path $fault"; else completed "$path $fault"; fi
    done <<END
disk/new|$writes:error=EIO:when=2|57|out.scp
disk/new|$writes:retval=0:when=2|57|out.scp
disk/new|$writes:error=EINTR:when=2
disk/new|close:error=EIO:when=1|57|out.scp
disk/new|close:error=EINTR:when=1
disk/new|fsync:error=EIO:when=1|57|out.scp
disk/new|fsync:error=EINTR:when=1
disk/new|fsync:error=EINVAL:when=1
disk|fsync:error=EIO:when=2|57|gone.scp
disk/new|fchmod:error=EPERM:when=1|75|out.scp
disk/new|fchown:error=EPERM:when=1
disk|openat:error=ENOSPC:when=4+|61|out.scp
disk|openat:error=EOPNOTSUPP:when=4
in.scp|read:error=EIO:when=1|57|in.scp
in.scp|read:error=EIO:when=8+|57|in.scp
in.scp|read:error=EINTR:when=3
in.scp|openat:error=ENOENT:when=4|53|in.scp
disk|linkat:error=EPERM:when=1|75|out.scp~ (the old file cannot be kept: no hard link to it can be made)
disk|/^rename:error=EPERM:when=1|75|out.scp~
disk|linkat:error=ENOSPC:when=2|61|gone.scp
disk|/^rename:error=EACCES:when=2|75|gone.scp
disk|/^rename:error=EIO:when=3|57|out.scp
END
    rm out.scp gone.scp
    mv disk/out.scp disk/gone.scp .
fi

# Pipes: one that nobody writes to, one whose writer is gone, and one that a file takes the place of.
mkfifo lonely
fails "lonely (a pipe cannot be read twice)" 75 timeout 60 "$batch" --facet-in 9 lonely out.scp
printf 'Torches\r\n' >lonely &
run timeout 60 "$batch" --items equal --list /dev/stdin in.scp out.scp <lonely
check "a list cut short" "1 /dev/stdin, line 1: 62" "$status $(first_error)"
"${cleaning[@]}" in.scp lonely >out.txt 2>err.txt &
wait_for eval "readlink /proc/$!/fd/* | grep -q lonely"
ln in.scp link && mv -f link lonely
wait $!
status=$?
failed "lonely (another program put a file there meanwhile)" 75 "a file in the place of a pipe"

# An output that nobody may change or replace, not even the superuser.
echo old >fixed.scp
for attribute in "i" "a (may only grow)"; do
    if can "an output with attribute $attribute" chattr "+${attribute:0:1}" fixed.scp; then
        fails "fixed.scp${attribute:1}" 75 "$batch" --facet-not-in 1 --removed none.scp in.scp fixed.scp
        chattr "-${attribute:0:1}" fixed.scp
    fi
done
if can "mounted files" mount --bind fixed.scp fixed.scp; then
    fails "fixed.scp (mounted by itself)" 75 "$batch" --facet-in 1 in.scp fixed.scp
fi
# The superuser has every permission, so the program runs as nobody.
if can permissions setpriv --reuid=65534 --clear-groups true; then
    chmod 755 . && mkdir -m 777 open && mkdir -m 755 closed && mkdir -m 700 private
    install -m 000 in.scp open/unreadable.scp
    install -m 444 in.scp open/readonly.scp
    install -m 666 -D in.scp sticky/all.scp && chmod 1777 sticky
    # as_nobody GROUPS INPUT OUTPUT
    as_nobody() { setpriv --reuid=65534 --regid=65534 "$1" "$batch" --facet-in 1 "$2" "$3"; }
    fails open/unreadable.scp 70 as_nobody --clear-groups open/unreadable.scp open/out.scp
    fails open/readonly.scp 75 as_nobody --clear-groups in.scp open/readonly.scp
    fails closed/new.scp 70 as_nobody --clear-groups in.scp closed/new.scp
    fails "sticky/all.scp (only its owner may replace it)" 75 as_nobody --clear-groups in.scp sticky/all.scp
    fails private/save.scp 70 as_nobody --clear-groups private/save.scp private/clean.scp
    # The output's group is kept when the user belongs to it. Otherwise the new group gets the permissions of everyone.
    while read -r groups mode expected; do
        install -m "$mode" -o 1 -g 50 out.scp open/group.scp
        run as_nobody "$groups" in.scp open/group.scp
        check "permissions and group after $groups" "0 $expected" "$status $(stat -c '%a %g' open/group.scp)"
    done <<'END'
--groups=50 660 660 50
--clear-groups 676 666 65534
--clear-groups 606 600 65534
END
    # A link in a folder that all users share is followed only when it belongs to the user or to the folder's owner.
    ln -s ../open/save.scp sticky/link.scp
    for user in 0 1; do
        install -o 1 -m 600 in.scp open/save.scp
        chown -h 65534 sticky/link.scp
        for files in "open/new.scp in.scp sticky/link.scp" "sticky/link.scp in.scp open/new.scp"; do
            # shellcheck disable=SC2086  # several words
            fails "sticky/link.scp (a link that somebody else put into a shared folder)" 70 \
                setpriv --reuid="$user" --clear-groups "${cleaning[@]}" --removed $files
        done
        check "where the link leads" "$(sha256sum <in.scp)" "$(sha256sum <open/save.scp)"
        chown -h "$user" sticky/link.scp
        run setpriv --reuid="$user" --clear-groups "$batch" --facet-not-in 9 in.scp sticky/link.scp
        check "exit code with a link of user $user" 0 "$status"
    done
fi

# The owner and the permissions stay, also where the file cannot be made without a name because there is no /proc.
install -m 640 out.scp owned.scp
[ "$(id -u)" -ne 0 ] || chown 65534:65534 owned.scp
access=$(stat -c '%a %u %g' owned.scp)
for start in env without_proc; do
    if can "owners, $start" "$start" true; then
        rm gone.scp
        run "$start" "${cleaning[@]}" --removed gone.scp in.scp owned.scp
        completed "$start"
        check "owner and permissions, $start" "$access" "$(stat -c '%a %u %g' owned.scp)"
    fi
done

# A line of 3 GB that memory cannot hold: before the first block, and in it.
while IFS='|' read -r culprit start; do
    # shellcheck disable=SC2059  # the line ends are in the variable
    printf "$start" >long.scp
    truncate -s 3G long.scp
    fails "$culprit" 7 limit -v 400000 "$batch" --facet-in 9 long.scp out.scp
done <<'END'
|// comment\r\n
long.scp, line 1|[A b]\r\n
END
# One that memory holds takes its length once in the buffer, and once more in its block.
truncate -s 200M long.scp
run limit -v 550000 "$batch" --force --facet-in 9 long.scp /dev/null
check "exit code with a line of 200 MB" 0 "$status"
rm long.scp
# A report that takes more memory than the run.
seq -f '[A code_%.0f]' 100000 | sed G >codes.scp
run limit -v 60000 "$batch" survey --force --json codes.scp
check "a report without memory" "1 1 7" "$status $(grep -c '"outcome": "failed"' out.txt) $(first_error)"

# Standard streams that are full or closed. A run whose report is lost fails, and no printed word gets into a file.
while read -r code streams; do
    rm out.scp
    eval '"${whole[@]}"' "2>err.txt $streams"
    check "exit code with $streams" "$code" $?
    untouched "$streams"
done <<END
1 >/dev/full
1 >/dev/full 2>/dev/full
1 >&-
1 <&- >&- 2>&-
0 >&- 2>&- --quiet
END

# A hundred runs at once in one folder, ten for each output. A run fails when another one was faster.
# shellcheck disable=SC2016  # for the other shell
seq 0 99 | xargs -P 100 -I{} bash -c '"$@" --quiet in.scp many$(({} % 10)).scp 2>many{}.txt
    echo "$? $(cut -d " " -f 3- many{}.txt)"' bash "${cleaning[@]}" >ends.txt
check "ends of a hundred runs" 100 \
    "$(grep -cxE '0 |1 \(another program put a file there meanwhile\): Path/File access error \(75\)\. .*' ends.txt)"
check "outputs of a hundred runs" "$(sha256sum <out.scp)" "$(sha256sum many?.scp | cut -c1-66 | sort -u)-"
untouched "a hundred runs"

# No uninitialised memory is read, no memory leaks, no descriptor stays open.
if can "memory errors" valgrind --quiet true; then
    cp "$samples"/world.scp small.scp
    run valgrind --quiet --error-exitcode=9 --leak-check=full --show-leak-kinds=all --track-fds=yes \
        "${cleaning[@]}" --rectangles in --facet-in 1 --removed small_gone.scp small.scp small_out.scp
    check "exit code and complaints of valgrind" 0 \
        "$status$(grep -v 'Open file descriptor\|inherited\|FILE DESCRIPTORS\|== *$' err.txt)"
fi
finish_checks
