#!/usr/bin/env bash
# The real program without a display, which it reports, and then under X and with a Wayland compositor alone, where it is
# used through accessibility actions alone.
# Usage: display_test.sh FOLDER_OF_PROGRAMS SAMPLES
set -u
if [ "${QUILLMERE_OWN_BUS:-}" != yes ]; then
    # A separate message bus, so that the test sees no other program that runs here.
    exec env -u WAYLAND_DISPLAY -u XDG_SESSION_TYPE QUILLMERE_OWN_BUS=yes dbus-run-session -- "$0" "$@"
fi
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=tests/support/x_session.sh
. "$here/../support/x_session.sh"
# shellcheck source=tests/support/checks.sh
. "$here/../support/checks.sh"
world=$2/world.scp
"$1"/quillmere-batch --quiet --facet-not-in 0 "$world" expected.scp

# use_program DISPLAY: runs a pass in the program that was just started, visits all windows and ends it.
use_program() {
    rm -f spoken.scp
    local told=133 # when the library of assistive technology has not reached its bus, before it does anything
    for ((i = 0; i < 3 && told == 133; i++)); do
        /usr/bin/python3 "$here/accessibility.py" && told=0 || told=$?
    done
    check "what assistive technology was told under $1" 0 "$told"
    wait_for_end
    check "exit code under $1" 0 "$program_status"
    check "output under $1" "$(sha256sum <expected.scp)" "$(sha256sum <spoken.scp)"
}

export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
start_x_session "$1"
remember_files "$world" "$work/spoken.scp"
start_program
use_program X

unset DISPLAY QT_QPA_PLATFORM
while read -r setting reason; do
    env "$setting" timeout 20 program/quillmere 2>err.txt && status=0 || status=$?
    check "exit code with $setting" 1 "$status"
    check "report with $setting" \
        "quillmere: no window can be opened ($reason); quillmere-batch needs no display" "$(cat err.txt)"
done <<'END'
-uDISPLAY could not connect to display
DISPLAY=:9797 could not connect to display :9797
WAYLAND_DISPLAY=missing Failed to create wl_display (No such file or directory)
QT_QPA_PLATFORM=missing Could not find the Qt platform plugin "missing" in ""
QT_QPA_PLATFORM=linuxfb:fb=missing Failed to open framebuffer missing (No such file or directory)
END

# Without a keyboard Qt's own input method for Wayland crashes in every program; QT_IM_MODULE chooses another.
weston --backend=headless-backend.so --socket=test --idle-time=0 >weston.txt 2>&1 &
servers+=" $!"
wait_until test -S test
WAYLAND_DISPLAY=test WAYLAND_DEBUG=1 QT_IM_MODULE=compose program/quillmere >program.txt 2>&1 &
program=$!
use_program Wayland
check "windows that the compositor was given" 1 "$(grep -c 'set_title("Quillmere")' program.txt)"
finish_checks
