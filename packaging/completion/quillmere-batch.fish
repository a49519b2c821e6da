# Fish completion for quillmere-batch.

function __quillmere_batch_task
    set -l words (commandline -opc)
    test (count $words) -ge 2; and contains -- $words[2] survey restore list; and echo $words[2]; or echo clean
end

set -l first 'test (count (commandline -opc)) -eq 1'
set -l clean 'test (__quillmere_batch_task) = clean'
set -l reports 'contains -- (__quillmere_batch_task) clean survey'
set -l writes 'contains -- (__quillmere_batch_task) clean restore'
set -l world 'test (__quillmere_batch_task) != list'

complete -c quillmere-batch -n $first -a survey -d 'Report what a world script holds'
complete -c quillmere-batch -n $first -a restore -d 'Put removed blocks back'
complete -c quillmere-batch -n $first -a list -d 'Show or make a filter list'
complete -c quillmere-batch -n 'test (count (commandline -opc)) -eq 2; and test (__quillmere_batch_task) = list' -f -a 'show make'

complete -c quillmere-batch -n $clean -s l -l list -r -d 'Filter list file to load'
complete -c quillmere-batch -n $clean -l items -x -a 'equal not-equal' -d 'Remove items by their codes'
complete -c quillmere-batch -n $clean -l rectangles -x -a 'in not-in' -d 'Remove what lies in the rectangles, or not'
complete -c quillmere-batch -n $clean -l facet-in -x -d 'Remove what is on facet N'
complete -c quillmere-batch -n $clean -l facet-not-in -x -d 'Remove what is on any other facet'
complete -c quillmere-batch -n $clean -l removed -r -d 'Also write the removed blocks to a file'
complete -c quillmere-batch -n $clean -s n -l dry-run -d 'Write no OUTPUT, only report'
complete -c quillmere-batch -n $clean -l keep-unplaced -d 'Keep blocks without a position'
complete -c quillmere-batch -n $clean -l max-removed -x -d 'Fail when more would go, in percent'
complete -c quillmere-batch -n $writes -l backup -d 'Keep the old OUTPUT as OUTPUT~'
complete -c quillmere-batch -n $world -l force -d 'Go on although INPUT looks wrong'
complete -c quillmere-batch -n $world -l lf -d 'Lines end with LF'
complete -c quillmere-batch -n $world -l crlf -d 'Lines end with CR LF'
complete -c quillmere-batch -n $reports -l json -d 'Print the report as JSON'
complete -c quillmere-batch -n $reports -l page -r -d 'Also write the report as a page with a map'
complete -c quillmere-batch -s q -l quiet -d 'Print errors and warnings only'
complete -c quillmere-batch -s h -l help -d 'Print help'
complete -c quillmere-batch -l version -d 'Print the version'
