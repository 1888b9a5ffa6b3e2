# Completion of kov's command line in bash.
_kov() {
    local current=$2 before=$3 word command=''
    COMPREPLY=()
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        [[ $word == -* ]] || command+=" $word"
        [[ $command == ' report '* ]] && break
    done
    case $before in
    --limits | --json | --junit | --html | --sql)
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        return
        ;;
    --key) return ;;
    esac
    local words
    case $command in
    '') words='report library --help --version' ;;
    ' report') words='check diff trend limits --help --version' ;;
    ' report check') words='--limits --json --junit --html --simulated --verbose --help --version' ;;
    ' report diff') words='--limits --help --version' ;;
    ' report trend') words='--limits --key --html --sql --help --version' ;;
    ' library') words='--help --version' ;;
    ' report limits') words='--limits --help --version' ;;
    esac
    if [[ $current == -* || $command == '' || $command == ' report' ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    elif [[ $command != ' report limits' && $command != ' library' ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
}

complete -F _kov kov
