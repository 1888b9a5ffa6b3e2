# Completion of kov's command line in bash.
_kov() {
    local current=$2 before=$3 word command='' i
    COMPREPLY=()
    # Behind "--" stands another program's command line.
    for ((i = 2; i < COMP_CWORD; i++)); do
        if [[ ${COMP_WORDS[i]} == -- && ${COMP_WORDS[1]} == @(tap|replay) ]]; then
            compopt -o filenames 2>/dev/null
            if ((i + 1 == COMP_CWORD)); then
                mapfile -t COMPREPLY < <(compgen -c -- "$current")
            else
                mapfile -t COMPREPLY < <(compgen -f -- "$current")
            fi
            return
        fi
    done
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        [[ $word == -* ]] || command+=" $word"
        [[ $command == ' report '* || $command == ' log '* || $command == ' journal '* || $command == ' tap' ||
            $command == ' replay' ]] && break
    done
    case $before in
    -o | --output | --limits | --json | --junit | --html | --sql)
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        return
        ;;
    --key | --from | --to) return ;;
    --only)
        mapfile -t COMPREPLY < <(compgen -W '3V3 5V0 24V T_CPU T_PSU Vout Vheat Iout Theat Width Period
            Voltage Current Phase' -- "$current")
        return
        ;;
    esac
    local words
    case $command in
    '') words='report log library tap replay journal --help --version' ;;
    ' report') words='check diff trend limits --help --version' ;;
    ' report check') words='--limits --json --junit --html --simulated --verbose --help --version' ;;
    ' report diff') words='--limits --help --version' ;;
    ' report trend') words='--limits --key --html --sql --help --version' ;;
    ' log') words='stats csv plot --help --version' ;;
    ' log stats') words='--help --version' ;;
    ' log csv') words='-o --output --help --version' ;;
    ' log plot') words='-o --output --from --to --only --help --version' ;;
    ' library') words='--help --version' ;;
    ' tap') words='-o -- --help --version' ;;
    ' replay') words='--realtime -- --help --version' ;;
    ' journal') words='show stats --help --version' ;;
    ' journal show') words='--failures --help --version' ;;
    ' journal stats') words='--help --version' ;;
    ' report limits') words='--limits --help --version' ;;
    esac
    if [[ $current == -* || $command == '' || $command == @( report| log| journal| tap) ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    elif [[ $command != ' report limits' && $command != ' library' ]]; then
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
}

complete -F _kov kov
