# shellcheck shell=bash
# For script tests of the window program, to be sourced before checks.sh: an X server without a screen, a small window
# manager, and functions that act as a user with a keyboard and a mouse.

servers="" program="" program_status="" window="" path_root="" log=""
root=$(realpath "$(dirname "${BASH_SOURCE[0]}")/../..")

end_x_session() {
    # shellcheck disable=SC2086  # process numbers; some may be empty
    kill $program $servers 2>/dev/null
    wait 2>/dev/null
}

# wait_until COMMAND...: waits until the command succeeds. Without that the rest of the test makes no sense.
wait_until() { wait_for "$@" || { cat program.txt && exit 1; }; }

# start_x_session FOLDER_OF_PROGRAMS: also copies the window program to program/, which then has an options file of its
# own.
start_x_session() {
    # shellcheck disable=SC2154  # checks.sh sets it
    trap 'end_x_session; chmod -R u+w "$work"; rm -rf "$work"' EXIT
    export HOME=$work XDG_CONFIG_HOME=$work/config XDG_RUNTIME_DIR=$work QT_QPA_PLATFORM=xcb
    mkdir -p "$XDG_CONFIG_HOME" program
    cp "$1"/quillmere program/ 2>/dev/null || cp "$1"/quillmere.exe program/
    Xvfb -displayfd 3 -screen 0 1280x960x24 -nolisten tcp 3>display.txt 2>xvfb.txt &
    servers=$!
    wait_until test -s display.txt
    DISPLAY=:$(cat display.txt)
    export DISPLAY
    # It forgets windows that are to be shown before it has started.
    openbox --startup "touch $work/openbox.started" >openbox.txt 2>&1 &
    servers="$! $servers"
    wait_until test -e openbox.started
}

# remember_files INPUT OUTPUT: makes the options file, as if an earlier run of the program had chosen these files.
remember_files() { printf 'False\r\n%s\r\n%s\r\n' "$1" "$2" >program/DSCPOPTS.INI; }

# start_program: starts the window program, under Wine if it is for Windows, and waits for its main window.
start_program() {
    if [ -f program/quillmere.exe ]; then
        path_root=Z:
        "$root"/scripts/wine program/quillmere.exe >program.txt 2>&1 &
    else
        program/quillmere >program.txt 2>&1 &
    fi
    program=$!
    wait_for_window 'Quillmere$'
    window=$found
    # The menu bar is above the client area, which is 289 pixels high.
    menu_height=$(($(xdotool getwindowgeometry --shell "$window" | sed -n 's/^HEIGHT=//p') - 289))
}

# is_active WINDOW: whether the window is active. If it is not, asks the window manager to activate it, which is lost when
# it does not know the window yet.
is_active() { [ "$(xdotool getactivewindow)" = "$1" ] || ! xdotool windowactivate "$1"; }

# wait_for_window NAME: waits until a window with that title is active and sets found to its number.
wait_for_window() {
    wait_until xdotool search --onlyvisible --name "^$1"
    found=$(xdotool search --onlyvisible --name "^$1" | tail -n 1)
    wait_until is_active "$found"
}

# click X Y: clicks at that pixel of the main window's client area. Not with --sync, which waits long if the mouse is
# there already.
click() { xdotool mousemove --window "$window" "$1" "$(($2 + menu_height))" click 1; }

# opens_dialog KEY: whether that key of the File menu opens a file dialog. Keys may be lost while a window becomes active,
# so it gives up and leaves the menu after some seconds.
opens_dialog() {
    xdotool key alt+f "$1"
    timeout 3 xdotool search --sync --onlyvisible --name '^Select ' && return
    xdotool key Escape Escape && false
}

# choose_file KEY PATH: opens a file dialog with a key of the main window's File menu and enters a path, a Linux one
# also under Wine.
choose_file() {
    local path=$2
    wait_until opens_dialog "$1"
    wait_for_window 'Select '
    [ -z "$path_root" ] || path=$path_root${path//\//\\}
    xdotool key ctrl+a type --delay 3 "$path"
    xdotool key Return
    wait_until eval "! xdotool getwindowname $found"
    wait_until is_active "$window"
}

# log_has TEXT: copies the Status log to the clipboard and to the variable log, and looks for the text.
log_has() {
    click 380 100
    xdotool key ctrl+a ctrl+c
    log=$(timeout 5 xclip -selection clipboard -o | tr -d '\r')
    [[ $log == *"$1"* ]]
}

wait_for_end() {
    wait_until ended "$program"
    wait "$program"
    # shellcheck disable=SC2034  # for the caller
    program_status=$?
    program=""
}
