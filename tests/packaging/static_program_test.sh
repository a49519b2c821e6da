#!/usr/bin/env bash
# Tests the batch program that runs on any Linux, in a read-only folder that is its whole system: no /proc, no /dev, no
# libraries. A program for another machine runs under qemu-user.
# Usage: static_program_test.sh FOLDER_OF_THE_PACKAGE FOLDER_OF_NATIVE_PROGRAMS MACHINE
set -u
package=$(realpath "$1")
native=$(realpath "$2")
# shellcheck source=tests/support/batch_tasks.sh
. "$(dirname "$0")/../support/batch_tasks.sh"

mkdir -p root/world
cp "$package"/quillmere-batch root
alone=(bwrap --unshare-all --ro-bind "$work/root" / --bind . /world --chdir /world --setenv TMPDIR /world)
if [ "$3" != "$(uname -m)" ]; then
    cp "$(command -v "qemu-$3-static")" root/emulator
    alone+=(/emulator)
fi
other=("${alone[@]}" /quillmere-batch)
run_tasks "$package"/samples

# As README.txt says: others can link it with a C library of their own.
"$3-linux-gnu-g++" -static-pie -o root/linked-again "$package"/relink/quillmere-batch.o
other=("${alone[@]}" /linked-again)
same 0 --version

# Calls that old kernels do not have, and one that strict containers refuse. Each has something to fall back to.
if [ "$3" = "$(uname -m)" ]; then
    newer=statx,renameat2,getrandom,sync_file_range,rseq,copy_file_range,prlimit64
    other=(strace -f -qq -o ../calls.txt -e "inject=$newer:error=ENOSYS" -e inject=faccessat2:error=EPERM
        "$package"/quillmere-batch)
    same 0 --facet-in 1 --backup --removed new.scp crlf.scp cleaned.scp
fi
finish_checks
