#!/usr/bin/env bash
# Tests what a user on Windows gets: makes the zip file, unpacks it, and runs the batch program from there under Wine.
# Usage: portable_zip_test.sh FOLDER_OF_PROGRAMS SAMPLES FOLDER_OF_NATIVE_PROGRAMS
set -u
# shellcheck source=tests/support/checks.sh
. "$(dirname "$0")/../support/checks.sh"
samples=$2
native=$3
root=$(realpath "$(dirname "$0")/../..")
wine=$root/scripts/wine

"$root"/scripts/package windows-x64 >package.txt || cat package.txt
cp "$root"/build/packages/quillmere-*-windows-x64.zip .
check "files in the zip" "README.txt licences/cli11.txt licences/gcc.txt licences/gpl-3.txt licences/json.txt \
licences/leaflet.txt licences/mingw-w64.txt licences/quillmere.txt quillmere-batch.exe quillmere.exe samples/cleanup.lst samples/world.scp" \
    "$(unzip -Z1 quillmere-*.zip | sed -n 's|^[^/]*/\(.*[^/]\)$|\1|p' | LC_ALL=C sort | xargs)"
unzip -q quillmere-*.zip && mv quillmere-*/ "Spielstände & Welten" && cd "$_" || exit 1
for text in README.txt licences/*; do
    check "line ends of $text" "$(wc -l <"$text")" "$(grep -c $'\r$' "$text")"
done
for licence in cli11=doc/libcli11-dev/copyright mingw-w64=doc/mingw-w64-x86-64-dev/copyright \
    gcc=doc/gcc-mingw-w64-x86-64-posix-runtime/copyright gpl-3=common-licenses/GPL-3 \
    json=doc/nlohmann-json3-dev/copyright leaflet=doc/libjs-leaflet/copyright; do
    check "licence of ${licence%=*}" "" "$(tr -d '\r' <licences/"${licence%=*}".txt | diff - "/usr/share/${licence#*=}")"
done
check "line ends of the sample" "$(sha256sum <"$samples"/world.scp)" "$(sha256sum <samples/world.scp)"

read -r _ version _ build _ < <("$native"/quillmere-batch --version | tr -d ,)
# The programs need only libraries that every Windows has. Their addresses are random, data cannot be executed, and
# overflows of the stack and of library calls are noticed: these texts are printed then. Older systems are refused.
for program in quillmere.exe quillmere-batch.exe; do
    x86_64-w64-mingw32-objdump -p "$program" >headers.txt
    check "other libraries that $program needs" "" "$(sed -n 's/^\tDLL Name: //p' headers.txt | grep -viE \
        '^(advapi32|comctl32|comdlg32|gdi32|gdiplus|kernel32|msvcrt|ole32|oleaut32|shell32|user32|uxtheme)\.dll$')"
    check "guards of $program" "DYNAMIC_BASE HIGH_ENTROPY_VA NX_COMPAT" \
        "$(grep -oE 'DYNAMIC_BASE|HIGH_ENTROPY_VA|NX_COMPAT' headers.txt | sort -u | xargs)"
    check "checks in $program" "buffer overflow stack smashing" \
        "$(strings "$program" | sed -n 's/^\*\*\* \(.*\) detected \*\*\*.*/\1/p' | sort | xargs)"
    check "version of Windows for $program" "10 0" \
        "$(sed -nE 's/^M(aj|in)orSubsystemVersion\s+//p' headers.txt | xargs)"
    # Icons of six sizes, their group, the record of the version, and the manifest.
    check "resources of $program" "3: 1 2 3 4 5 6 e: 1 10: 1 18: 1" "$(sed -nE headers.txt \
        -e 's/^\w+ {3}Entry: ID: 0x0*(\w+),.*/\1:/p' -e 's/^\w+ {5}Entry: ID: 0x0*(\w+),.*/\1/p' | xargs)"
    check "names in $program" "OriginalFilename $program ProductName Quillmere ProductVersion $version" \
        "$(strings -el "$program" | grep -A1 -E '^(OriginalFilename|Product(Name|Version))$' | xargs)"
    for setting in "name=\"Quillmere\" version=\"${version%[a-z]}.0.$build\"" \
        'name="Microsoft.Windows.Common-Controls" version="6.0.0.0"' '>PerMonitorV2, PerMonitor</dpiAwareness>' \
        '>UTF-8</activeCodePage>' '>true</longPathAware>' 'level="asInvoker"'; do
        check "$setting in $program" 1 "$(grep -acF "$setting" "$program")"
    done
    check "size of $program in bytes, below 4 MiB" 1 "$(($(stat -c %s "$program") < 4194304))"
done

# run EXPECTED_EXIT_CODE ARGUMENT...: leaves what was printed in out.txt and err.txt, without carriage returns.
run() {
    local expected=$1 status=0
    shift
    "$wine" quillmere-batch.exe "$@" >out.raw 2>err.raw || status=$?
    for stream in out err; do tr -d '\r' <$stream.raw >$stream.txt; done
    check "exit code of: $*" "$expected" "$status"
}

cp samples/world.scp in.scp
filters=(--list samples/cleanup.lst --items equal --rectangles not-in)
run 0 "${filters[@]}" --removed gone.scp "$PWD/in.scp" "Жизнь 漢字 😀.scp"
"$native"/quillmere-batch "${filters[@]}" --removed expected-gone.scp in.scp expected.scp >expected.txt
check "report" "$(cat expected.txt)" "$(cat out.txt)"
check "output and removed blocks" "$(sha256sum <expected.scp; sha256sum <expected-gone.scp)" \
    "$(sha256sum <"Жизнь 漢字 😀.scp"; sha256sum <gone.scp)"

# fails FAILURE INPUT OUTPUT: expects a run to fail with an error line that begins so.
fails() {
    run 1 --facet-in 1 "$2" "$3"
    check "error line of: $*" "quillmere-batch: $1" "$(sed 's|)\. .*|)|' err.txt)"
}
echo old >out.scp
fails "fehlt ä.scp: File not found (53)" "fehlt ä.scp" out.scp
fails "NUL (a pipe cannot be read twice): Path/File access error (75)" NUL out.scp
run 0 --quiet --facet-in 1 in.scp NUL
check "old output" old "$(cat out.scp)"

mkdir small
if mount -t tmpfs -o size=4k tmpfs small 2>/dev/null; then
    fails 'small\out.scp: Disk full (61)' in.scp 'small\out.scp'
    check "files on the full disk" "" "$(ls small)"
    umount small
else
    echo "SKIPPED: a full disk: needs the right to mount one"
fi

# Ctrl-C in a console halts the pass, and OUTPUT keeps its old content.
"$native"/make_world --blocks 3000000 >big.scp
mkfifo keys
script -qec "'$wine' quillmere-batch.exe --facet-in 9 big.scp out.scp" console.txt <keys >/dev/null &
exec 3>keys
wait_for compgen -G 'quillmere-*.tmp'
printf '\003' >&3
wait $! && status=0 || status=$?
exec 3>&-
check "exit code after Ctrl-C" 130 "$status"
check "output after Ctrl-C" old "$(cat out.scp)"
rm big.scp

ln in.scp hard.scp
for same in hard.scp IN.SCP '.\in.scp' "Z:${PWD//\//\\}\\in.scp"; do
    run 2 --facet-in 1 in.scp "$same"
    check "refusal of $same" "quillmere-batch: You picked the same file to load and save. INPUT and OUTPUT are one file." "$(cat err.txt)"
done
# The shell is that of Windows: Wine does not tell which file a stream is that a shell of Linux opened.
"$wine" cmd /c "quillmere-batch.exe --facet-in 1 in.scp out.scp >>in.scp" && status=0 || status=$?
check "exit code of a log into INPUT" 2 "$status"
check "the input is never touched" "$(sha256sum <samples/world.scp)" "$(sha256sum <in.scp)"
check "temporary files" "" "$(find . -name 'quillmere-*.tmp')"
finish_checks
