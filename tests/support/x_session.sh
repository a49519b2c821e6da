# shellcheck shell=bash
# For script tests of the window program, to be sourced before checks.sh: an X server without a screen, a small window
# manager, and functions that act as a user with a keyboard and a mouse.

x_server="" x_manager="" program="" program_status="" window="" path_root=""
root=$(realpath "$(dirname "${BASH_SOURCE[0]}")/../..")

end_x_session() {
    # shellcheck disable=SC2086  # process numbers; some may be empty
    kill $program $x_manager $x_server 2>/dev/null
    wait 2>/dev/null
}

start_x_session() {
    # shellcheck disable=SC2154  # checks.sh sets it
    trap 'end_x_session; chmod -R u+w "$work"; rm -rf "$work"' EXIT
    export HOME=$work XDG_CONFIG_HOME=$work/config XDG_RUNTIME_DIR=$work QT_QPA_PLATFORM=xcb
    mkdir -p "$XDG_CONFIG_HOME"
    Xvfb -displayfd 3 -screen 0 1280x960x24 -nolisten tcp 3>display.txt 2>xvfb.txt &
    x_server=$!
    until [ -s display.txt ]; do sleep 0.05; done
    DISPLAY=:$(cat display.txt)
    export DISPLAY
    openbox >openbox.txt 2>&1 &
    x_manager=$!
    until xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 0x; do sleep 0.05; done
}

# start_program FOLDER: starts the window program in that folder, under Wine if it is for Windows, and waits for its
# main window.
start_program() {
    if [ -f "$1"/quillmere.exe ]; then
        path_root=Z:
        "$root"/scripts/wine "$1"/quillmere.exe >program.txt 2>&1 &
    else
        path_root=""
        "$1"/quillmere >program.txt 2>&1 &
    fi
    program=$!
    window=$(timeout 40 xdotool search --sync --onlyvisible --name '^Quillmere$' | head -n 1)
    [ -n "$window" ] || { echo "FAILED: no main window: $(cat program.txt)" && exit 1; }
    xdotool windowactivate --sync "$window"
    # The menu bar is above the client area, which is 289 pixels high.
    menu_height=$(($(xdotool getwindowgeometry --shell "$window" | sed -n 's/^HEIGHT=//p') - 289))
}

# press KEY...: presses one key after another, with time to handle each.
press() {
    for key in "$@"; do
        xdotool key --clearmodifiers "$key"
        sleep 0.1
    done
}

# click X Y: clicks at that pixel of the main window's client area. Not with --sync, which waits long if the mouse is
# there already.
click() {
    xdotool mousemove --window "$window" "$1" "$(($2 + menu_height))" click 1
    sleep 0.1
}

# menu_command MENU KEY: opens the menu with its access key, and chooses an item with KEY.
menu_command() {
    press "alt+$(printf '%s' "${1:0:1}" | tr '[:upper:]' '[:lower:]')" "$2"
    sleep 0.2
}

# type_path FOLDER/NAME: enters a path, a Linux one also under Wine, in the file dialog that has just opened.
type_path() {
    wait_for_window 'Select ' >/dev/null
    xdotool key --clearmodifiers ctrl+a
    local path=$1
    [ -z "$path_root" ] || path=$path_root${path//\//\\}
    xdotool type --delay 3 "$path"
    press Return
    sleep 0.3
}

# wait_for_window NAME: waits until a window with that title is shown, activates it and prints its number.
wait_for_window() {
    local found
    found=$(timeout 40 xdotool search --sync --onlyvisible --name "^$1" | head -n 1)
    xdotool windowactivate --sync "$found"
    echo "$found"
}

# wait_until_gone WINDOW: waits until that window is closed, and activates the main window.
wait_until_gone() {
    for _ in $(seq 100); do
        xdotool getwindowname "$1" >/dev/null 2>&1 || break
        sleep 0.05
    done
    xdotool windowactivate --sync "$window"
}

# type_fields TEXT...: types one text after another, with Tab after each.
type_fields() {
    for text in "$@"; do
        xdotool type --delay 3 "$text"
        press Tab
    done
}

# Prints the text of the Status log, which it copies to the clipboard.
copy_log() {
    click 380 100
    press ctrl+a ctrl+c
    xclip -selection clipboard -o 2>/dev/null
}

# wait_for_log TEXT: waits until the Status log contains it.
wait_for_log() {
    for _ in $(seq 100); do
        copy_log | grep -qF "$1" && return
        sleep 0.1
    done
    check "Status log" "...$1..." "$(copy_log)"
}

wait_for_end() {
    for _ in $(seq 100); do
        if ! kill -0 "$program" 2>/dev/null; then
            wait "$program"
            # shellcheck disable=SC2034  # for the caller
            program_status=$?
            program=""
            return
        fi
        sleep 0.1
    done
    check "end of the program" ended "still running"
}
