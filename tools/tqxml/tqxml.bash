# bash completion for tqxml
_tqxml()
{
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words="" files=""
    case $before in
    --database) files=1 ;;
    --format) words='xml table' ;;
    --to) words='xml packet' ;;
    --key | --jobs) ;;
    *)
        case $COMP_CWORD,${COMP_WORDS[1]} in
        1,*) words='list show convert init import-icc --help --version' ;;
        2,list) words='outputs publications books jobs --help' ;;
        2,show) words='job book owner output profile --help' ;;
        *,list) words='--key --include-publications --database --format --help' ;;
        *,show) words='--references --database --help' ;;
        *,convert) words='--to --raw --fields-only --no-limit --help' files=1 ;;
        *,init) words='--jobs --help' files=1 ;;
        *,import-icc) words='--help' files=1 ;;
        esac
        ;;
    esac
    if [[ $files && $word != -* ]]; then
        compopt -o filenames 2>/dev/null # quotes names, and puts a slash behind folders
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    else
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    fi
}
complete -F _tqxml tqxml
