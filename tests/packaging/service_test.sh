#!/usr/bin/env bash
# The example service works under the restrictions that it asks for. bwrap makes them of what the file says.
# Usage: service_test.sh FOLDER_OF_PROGRAMS SAMPLES
set -u
# shellcheck source=tests/support/checks.sh
. "$(dirname "$0")/../support/checks.sh"
bin=$1
samples=$2

# setting NAME: prints what the service sets it to.
setting() { sed -e ':a; /\\$/ { N; s/\\\n *//; ta }' quillmere-clean.service | sed -n "s/^$1=//p"; }
# system_calls NAME...: prints the system calls that SystemCallFilter= means by these names.
system_calls() {
    local name
    for name; do
        # shellcheck disable=SC2046  # several words
        case $name in
            @*) system_calls $(systemd-analyze syscall-filter "$name" | sed 1,2d) ;;
            *) echo "$name" ;;
        esac
    done
}

cp "$samples"/../packaging/service/* .
sed -i "s|/usr/bin/quillmere-batch|$bin/quillmere-batch|" quillmere-clean.service
check "what systemd says of the files" "" "$(systemd-analyze verify --man=no ./quillmere-clean.{service,timer} 2>&1)"
systemd-analyze security --offline=yes --threshold=10 ./quillmere-clean.service >exposure.txt
check "exposure of at most 1.0 of 10" 0 $?

mkdir world
"$bin"/make_world --blocks 12000 >world/save.scp # enough for the output to be written on a thread of its own
cp "$samples"/cleanup.lst world
touch calls.txt
folder=$(setting ReadWritePaths)
sandbox=(bwrap --unshare-all --uid 1000 --gid 1000 --cap-drop ALL --ro-bind / / --dev /dev --proc /proc)
if ! "${sandbox[@]}" strace -f -o /dev/null true 2>err.txt; then
    echo "SKIPPED: a run of the service: because of $(tail -n 1 err.txt)"
    finish_checks
    exit
fi
sandbox+=(--tmpfs /proc/sys --tmpfs /home --tmpfs /root --tmpfs /tmp --tmpfs /var/tmp --tmpfs /srv
    --ro-bind "$bin" /srv/bin --bind calls.txt /srv/calls.txt --bind world "$folder")
for path in $(setting ReadOnlyPaths); do
    path=${path#-}
    sandbox+=(--ro-bind "${path/#"$folder"/world}" "$path")
done
sandbox+=(--remount-ro /srv --chdir "$(setting WorkingDirectory)" strace -f --quiet=all -o /srv/calls.txt)
command=$(setting ExecStart | sed "s|$bin|/srv/bin|; s/%%/%/g")
# shellcheck disable=SC2046  # several words
system_calls @default $(setting SystemCallFilter) | sort -u >allowed.txt

# run EXIT_CODE WORD...: runs the words in the sandbox, and checks what they ask of the system.
run() {
    local expected=$1
    shift
    "${sandbox[@]}" "$@" >out.txt 2>err.txt
    check "exit code of: $*" "$expected" $?
    check "system calls that are not allowed" "" \
        "$(sed -nE 's/^[0-9]* *([a-z0-9_]+)\(.*/\1/p' calls.txt | sort -u | comm -23 - allowed.txt)"
    check "forbidden uses" "" "$(grep -E 'PROT_WRITE\|PROT_EXEC|CLONE_NEW|"/proc/[^s]' calls.txt)"
}
cp world/save.scp old.scp
"$bin"/quillmere-batch --quiet --list world/cleanup.lst --items equal old.scp expected.scp
# shellcheck disable=SC2086  # several words
{
    run 0 $command
    run 0 $command # with old files to be kept and replaced
    run "$(setting SuccessExitStatus)" -e inject=write:signal=TERM:when=1 $command
    check "log of a halted run" "Halt command issued." "$(tail -n 1 out.txt)"
}
for file in save.scp cleanup.lst /srv/x /var/x /run/x /dev/shm/x; do
    "${sandbox[@]}" sh -c "echo >>$file" 2>err.txt && check "writing to $file" refused written
done
check "files in the folder" "clean.scp clean.scp~ cleanup.lst removed.scp report.html save.scp" "$(cd world && echo *)"
cmp old.scp world/save.scp && cmp expected.scp world/clean.scp && cmp expected.scp world/clean.scp~
check "the files" 0 $?
finish_checks
