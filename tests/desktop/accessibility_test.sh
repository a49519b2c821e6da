#!/usr/bin/env bash
# The program as assistive technology sees it, used through accessibility actions alone.
# Usage: accessibility_test.sh FOLDER_OF_PROGRAMS SAMPLES
set -u
if [ -z "${DBUS_SESSION_BUS_ADDRESS:-}" ] || [ "${QUILLMERE_OWN_BUS:-}" != yes ]; then
    # A separate message bus, so that the test sees no other program that runs here.
    exec env QUILLMERE_OWN_BUS=yes dbus-run-session -- "$0" "$@"
fi
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=tests/support/x_session.sh
. "$here/../support/x_session.sh"
# shellcheck source=tests/support/checks.sh
. "$here/../support/checks.sh"
bin=$1
samples=$2

cp "$samples"/world.scp world.scp
cp "$samples"/cleanup.lst list.lst
"$bin"/quillmere-batch --quiet --list list.lst --items equal --rectangles not-in --facet-in 0 world.scp expected.scp

start_x_session
export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1
start_program "$bin"
/usr/bin/python3 "$here/accessibility.py" "$work"
check "what assistive technology was told" 0 $?
wait_for_end
check "exit code" 0 "$program_status"
check "output" "$(sha256sum <expected.scp)" "$(sha256sum <spoken.scp)"
finish_checks
