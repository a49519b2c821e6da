#!/usr/bin/env bash
# The real program on a real X server, used with nothing but keyboard and mouse. Loads a list, picks both files, ticks
# two filters, runs, and compares the output with that of the batch program. Then halts a second run, edits the list,
# and ends the program during a run.
# Usage: main_window_test.sh FOLDER_OF_PROGRAMS SAMPLES [FOLDER_OF_NATIVE_PROGRAMS]
set -u
# shellcheck source=tests/support/x_session.sh
. "$(dirname "$0")/../support/x_session.sh"
# shellcheck source=tests/support/checks.sh
. "$(dirname "$0")/../support/checks.sh"
bin=$1
samples=$2
native=${3:-$bin}

cp "$samples"/world.scp world.scp
cp "$samples"/cleanup.lst list.lst
"$native"/quillmere-batch --quiet --list list.lst --items equal --rectangles not-in world.scp expected.scp
"$native"/make_world --blocks 10000000 --seed 5 >big.scp

start_x_session
start_program "$bin"

menu_command File o && type_path "$work/list.lst"
menu_command File f && type_path "$work/world.scp"
menu_command File s && type_path "$work/cleaned" # gets the default extension

click 20 136 # Filter Items
click 20 64  # Filter Rectangles
press Tab Down # from the check box to its option buttons: Not In Rectangle
press alt+r
wait_for_log "Processed 241 items."
check "output of the window and of the batch program" "$(sha256sum <expected.scp)" "$(sha256sum <cleaned.SCP)"

menu_command File f && type_path "$work/big.scp"
menu_command File s && type_path "$work/halted.scp"
press alt+r
sleep 0.1
press alt+f
sleep 0.2
size=$(stat -c %s halted.scp)
sleep 0.3
check "what a run has written while a menu is open" "$size" "$(stat -c %s halted.scp)"
press Escape Escape # the menu, then the menu bar
click 376 260 # Halt
wait_for_log "Halt command issued."
check "blocks of the halted run are whole" "" "$(tail -c 4 halted.scp | tr -d '\r\n')"
check "the halted output is shorter" 1 "$(($(stat -c %s halted.scp) < $(stat -c %s big.scp)))"
check "no report after a halt" 0 "$(copy_log | grep -c 'Removed')"

# The editor: adds to the loaded list, saves it as another file, and hands it to the next pass.
press alt+t
editor=$(wait_for_window 'Rectangle and Item List Editor')
press Tab # from the list to the first box of a new rectangle
type_fields Everywhere 0 0 6200 4100
press space # Add
press Tab Tab # Edit and Delete are disabled, so Tab goes to the list of items, then to its first box
type_fields Chairs i_chair
press Return
press alt+f s && type_path "$work/edited"
press alt+f c
wait_until_gone "$editor"
check "items in the saved list" "Chairs i_chair" "$(tr -d '\r' <edited.LST | grep -A1 Chairs | xargs)"
check "rectangles in the saved list" "Everywhere 0 6200 0 4100" \
    "$(tr -d '\r' <edited.LST | grep -A4 Everywhere | xargs)"
"$native"/quillmere-batch --quiet --list edited.LST --items equal --rectangles in world.scp expected.scp
menu_command File f && type_path "$work/world.scp"
menu_command File s && type_path "$work/edited.scp"
click 20 88 # In Rectangle
press alt+r
wait_for_log "Processed 241 items."
check "output with the edited list" "$(sha256sum <expected.scp)" "$(sha256sum <edited.scp)"

# Exit and the close box keep the blocks that a running pass has written. Before saving over a file the program asks.
for end in alt+x alt+F4; do
    menu_command File f && type_path "$work/big.scp"
    menu_command File s && type_path "$work/halted.scp" && press y
    before=$(stat -c %Y%s halted.scp)
    press alt+r
    for ((i = 0; i < 1000; i++)); do # until the pass has written a megabyte
        [ "$(stat -c %Y%s halted.scp)" = "$before" ] || [ "$(stat -c %s halted.scp)" -le 1000000 ] || break
        sleep 0.01
    done
    press "$end"
    wait_for_end
    check "exit code after $end" 0 "$program_status"
    check "blocks written before $end are on disk" 1 "$(($(stat -c %s halted.scp) > 1000000))"
    check "blocks of the run ended by $end are whole" "" "$(tail -c 4 halted.scp | tr -d '\r\n')"
    check "the run ended by $end is not complete" 1 "$(($(stat -c %s halted.scp) < $(stat -c %s big.scp)))"
    start_program "$bin"
    click 20 216 # Filter Faucets
    click 140 266
    xdotool type 9
done
press alt+F4
wait_for_end
check "exit code of an idle program" 0 "$program_status"
finish_checks
