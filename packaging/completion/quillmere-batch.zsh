#compdef quillmere-batch
# Zsh completion for quillmere-batch.

_quillmere_batch() {
    local -a common clean reports writes world
    local tasks
    common=('(-q --quiet)'{-q,--quiet}'[print errors and warnings only]' '(-h --help)'{-h,--help}'[print help]' '--version[print the version]')
    clean=(
        '(-l --list)'{-l+,--list=}'[filter list file to load]:list:_files -g "*.(lst|LST)"'
        '--items=[remove items by their codes]:which:(equal not-equal)'
        '--rectangles=[remove what lies in the rectangles, or not]:which:(in not-in)'
        '(--facet-not-in)--facet-in=[remove what is on facet N]:number:'
        '(--facet-in)--facet-not-in=[remove what is on any other facet]:number:'
        '--removed=[also write the removed blocks to a file]:file:_files'
        '(-n --dry-run)'{-n,--dry-run}'[write no OUTPUT, only report]'
        '--keep-unplaced[keep blocks without a position]'
        '--max-removed=[fail when more would go]:percent:'
    )
    reports=('--json[print the report as JSON]' '--page=[also write the report as a page with a map]:page:_files -g "*.html"')
    writes=('--backup[keep the old OUTPUT as OUTPUT~]')
    world=(
        '--force[go on although INPUT looks wrong]'
        '(--crlf)--lf[lines end with LF]'
        '(--lf)--crlf[lines end with CR LF]'
    )
    case ${words[2]} in
        survey) shift words; (( CURRENT-- )); _arguments $common $reports $world ':world:_files' ;;
        restore) shift words; (( CURRENT-- ))
            _arguments $common $writes $world ':removed:_files' ':world:_files' ':output:_files' ;;
        list) shift words; (( CURRENT-- )); _arguments $common ':action:(show make)' ':list:_files -g "*.(lst|LST)"' ;;
        *) (( CURRENT > 2 )) || tasks='"tasks:task:(survey restore list)"'
            _arguments $common $clean $reports $writes $world \
                ":world or task:{ _alternative $tasks 'files:world:_files' }" ':output:_files' ;;
    esac
}

_quillmere_batch "$@"
