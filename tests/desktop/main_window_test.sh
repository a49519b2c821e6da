#!/usr/bin/env bash
# The real program on a real X server, used with nothing but keyboard and mouse. Loads a list, picks both files, ticks
# a filter, runs, and compares the output with that of the batch program. Then halts a second run, and ends the
# program during others.
# Usage: main_window_test.sh FOLDER_OF_PROGRAMS SAMPLES [FOLDER_OF_NATIVE_PROGRAMS]
set -u
# shellcheck source=tests/support/x_session.sh
. "$(dirname "$0")/../support/x_session.sh"
# shellcheck source=tests/support/checks.sh
. "$(dirname "$0")/../support/checks.sh"
samples=$2
native=${3:-$1}
"$native"/make_world --blocks 500000 --seed 5 >part.scp
"$native"/quillmere-batch --quiet --list "$samples"/cleanup.lst --items equal "$samples"/world.scp expected.scp
"$native"/quillmere-batch --quiet --facet-in 9 part.scp /dev/stdout | head -c -9 >start.scp # without [EOF] and the empty line after it
for ((i = 0; i < 20; i++)); do head -c -7 part.scp; done >big.scp # 700 MB: a pass of a second or more

# stands_still: whether there is output, and no more of it after a moment.
stands_still() {
    local size
    size=$(stat -c %s cleaned.SCP) && sleep 0.3 && ((size > 0 && size == $(stat -c %s cleaned.SCP)))
}

# Returns in the middle of a pass.
start_long_pass() {
    rm cleaned.SCP
    ln -f big.scp in.scp
    xdotool key alt+r
    wait_until test -s cleaned.SCP
}

start_x_session "$1"
start_program
cp "$samples"/world.scp in.scp
choose_file o "$samples/cleanup.lst"
choose_file f "$work/in.scp"
choose_file s "$work/cleaned" # gets the default extension
click 20 136                  # Filter Items
xdotool key alt+r
wait_until log_has "Processed 241 items."
check "output of the window and of the batch program" "$(sha256sum <expected.scp)" "$(sha256sum <cleaned.SCP)"

start_long_pass
xdotool key alt+f
wait_until stands_still   # since the pass waits while a menu is open
xdotool key Escape Escape # the menu, then the menu bar
click 376 260             # Halt
wait_until log_has "Halt command issued."
xdotool key alt+f Right Return # Misc, Translucency
wait_until grep -a cleaned.SCP program/DSCPOPTS.INI
xdotool key alt+x
wait_for_end

# The close box, Exit and a signal keep the blocks that a running pass has written. Another run finds the files chosen.
while read -r status end; do
    start_program
    click 20 216 # Filter Faucets
    click 140 266
    xdotool type 9
    start_long_pass
    eval "$end"
    wait_for_end
    check "exit code after $end" "$status" "$program_status"
    check "whether $end came in mid-pass" 1 "$(($(stat -c %s cleaned.SCP) < $(stat -c %s big.scp) * 9 / 10))"
    [ "$status" -ne 0 ] || check "the end of the last block" "" "$(tail -c 4 cleaned.SCP | tr -d '\r\n')"
    check "blocks after $end" "" "$(cmp start.scp cleaned.SCP 2>&1 | grep -v EOF)"
done <<'END'
0 xdotool key alt+F4
0 xdotool key alt+x
143 kill $program
END
finish_checks
