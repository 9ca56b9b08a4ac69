# bash completion for tqxml
_tqxml()
{
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words=
    case $before in
    --database)
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return
        ;;
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
        *,convert) words='--to --raw --help' ;;
        *,init) words='--jobs --help' ;;
        *,import-icc) words='--help' ;;
        esac
        ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -o default -F _tqxml tqxml
