# shellcheck shell=bash disable=SC2034
# Bash completion for quillmere-batch.

_quillmere_batch() {
    local cur prev words cword split options
    _init_completion -s || return

    case $prev in
        --items) mapfile -t COMPREPLY < <(compgen -W "equal not-equal" -- "$cur") && return ;;
        --rectangles) mapfile -t COMPREPLY < <(compgen -W "in not-in" -- "$cur") && return ;;
        --facet-in | --facet-not-in | --max-removed) return ;;
        -l | --list) _filedir '@(lst|LST)' && return ;;
        --page) _filedir html && return ;;
    esac
    case ${words[1]} in
        survey) options="--force --lf --crlf --json --page --quiet --help --version" ;;
        restore) options="--backup --force --lf --crlf --quiet --help --version" ;;
        list) options="--quiet --help --version" ;;
        *) options="--list --items --rectangles --facet-in --facet-not-in --removed --dry-run --keep-unplaced
            --max-removed --backup --force --lf --crlf --json --page --quiet --help --version" ;;
    esac
    if [[ $cur == -?* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$cur")
    elif [[ $prev == list && $cword == 2 ]]; then
        mapfile -t COMPREPLY < <(compgen -W "show make" -- "$cur")
    else
        _filedir
        [[ $cword != 1 ]] || mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -W "survey restore list" -- "$cur")
    fi
}
complete -F _quillmere_batch quillmere-batch
