# shellcheck shell=bash
# For script tests, to be sourced: enters a new folder, which is removed at the end, and counts failed checks.
work=$(mktemp -d)
trap 'chmod -R u+w "$work"; rm -rf "$work"' EXIT
cd "$work" || exit 1
failures=0

# check WHAT EXPECTED ACTUAL
check() {
    [ "$2" = "$3" ] && return
    printf 'FAILED: %s\n  expected: %s\n  actual:   %s\n' "$1" "$2" "$3"
    failures=$((failures + 1))
}

# To be called last: fails if a check has failed.
finish_checks() {
    [ "$failures" -eq 0 ] || exit 1
    echo "all checks passed"
}
