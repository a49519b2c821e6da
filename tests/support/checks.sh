# shellcheck shell=bash
# For script tests, to be sourced: enters a new folder, which is removed at the end, and counts failed checks.
work=$(mktemp -d) || exit 1 # or the test would run in the current folder
trap 'chmod -R u+w "$work"; rm -rf "$work"' EXIT
cd "$work" || exit 1
failures=0

# check WHAT EXPECTED ACTUAL
check() {
    [ "$2" = "$3" ] && return
    printf 'FAILED: %s\n  expected: %s\n  actual:   %s\n' "$1" "$2" "$3"
    failures=$((failures + 1))
}

# wait_for COMMAND...: runs the command again and again until it succeeds, for at most a minute.
wait_for() {
    local end=$((SECONDS + 60))
    until "$@" >/dev/null 2>&1; do
        [ "$SECONDS" -lt "$end" ] || { check "waited for" "$*" "in vain"; return 1; }
        sleep 0.02
    done
}
ended() { ! kill -0 "$1"; }

# To be called last: fails if a check has failed.
finish_checks() {
    [ "$failures" -eq 0 ] || exit 1
    echo "all checks passed"
}
