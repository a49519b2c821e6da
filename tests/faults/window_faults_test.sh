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

"$bin"/make_world --blocks 20000 --seed 3 >world.scp # 1.4 MB: several buffers
"$bin"/quillmere-batch --quiet --facet-in 9 world.scp expected.scp
mkfifo pipe
truncate -s 3G long.scp # one line

# run INPUT OUTPUT: starts a pass. The program remembers in.scp and out.scp, which are links.
run() {
    ln -sfn "$1" in.scp
    ln -sfn "$2" out.scp
    xdotool key alt+r
}

# expect_report NUMBER DESCRIPTION PART: expects this failure of a part of the program at the top of the log.
expect_report() {
    wait_until log_has "Oops number: $1"
    check "report of $1" "Error in $3.  Pffft....|Oops number: $1|Oops description: $2" \
        "$(grep -m 3 . <<<"$log" | paste -sd '|')"
}

# limit LIMIT...: changes limits of the running program.
limit() { prlimit --pid "$program" "$@"; }
limit_memory() { limit --as=$((1024 * $(awk '/^VmSize/ { print $2 }' "/proc/$program/status") + 200000000)):; }

start_x_session "$bin"
remember_files "$work/in.scp" "$work/out.scp"
start_program
click 20 216 # Filter Faucets
click 140 266
xdotool type 9

# By default the signals for a reader that goes away and for a file that may not grow end the program.
while IFS='|' read -r input output number description setting; do
    eval "$setting"
    run "$input" "$output"
    expect_report "$number" "$description" "filter engine"
done <<'END'
world.scp|/dev/full|61|Disk full|
world.scp|pipe|57|Device I/O error|head -c 1000 pipe >/dev/null &
world.scp|limited.scp|57|Device I/O error|limit --fsize=300000:unlimited
world.scp|new.scp|67|Too many files|limit --fsize=unlimited --nofile=3:
long.scp|new.scp|7|Out of memory|limit --nofile=1024: && limit_memory
END
limit --as=unlimited
check "what fitted into the limit" "$(head -c 300000 expected.scp | sha256sum)" "$(sha256sum <limited.scp)"

ln -sf /dev/full program/DSCPOPTS.INI
xdotool key alt+f Right Return # Misc, Translucency
expect_report 61 "Disk full" "options saving module"

run world.scp whole.scp
wait_until log_has "Processed 20001 items."
check "the output when nothing fails any more" "$(sha256sum <expected.scp)" "$(sha256sum <whole.scp)"
finish_checks
