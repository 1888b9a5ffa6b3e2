# Completion of KOV-Controller's command line in bash: first the groups of switches, then the
# switches of a group, then addresses; file names where a file is wanted.

# Switches that are complete, whether their value is the next argument or may be left out.
_kov_controller_complete=(
    -N -n
    -H -h -ht -ho -hp -hv -ha -hw -HK -hk -HM -hm -HI -hi -HL -hl -HS -hs
    -m -M -MP -mp -MR -mr
    -UY -UN -u -S -s -SD -sd -SV -sv -ST -st -SF -sf -SI -si -SE -se -SG -sg -SS -ss -SN -sn -SP -sp
    -B -b -BS -bs -BA -ba -BI -bi -BN -bn -BM -bm -BH -bh -BD -bd -BF -bf -BE -be -BT -bt -BU -bu
    -BO -bo -BK -bk -BC -bc -B# -b# -BG -bg -BZ -bz
    -P -p -PI -pi -PN -pn -PM -pm -PH -ph -PD -pd -PF -pf -PE -pe -PT -pt -PU -pu -PK -pk -PB -pb
    -PL -pl -PC -pc -P# -p#
    -XI -xi -XS -xs -XL -xl -XR -xr -XD -xd -XU -xu -XW -xw
    -Y -y
    -R -r '-@'
    -G -g -Z -z '-$' -Q -q -T -t '-?'
)
# Switches with a number of the user's directly behind the letters.
_kov_controller_with_number=(-HT -HV -HA -HW -XC -xc -XN -xn)
# ... with a module address there.
_kov_controller_with_module=(
    -MS -ms -MA -ma -MI -mi -MN -mn -MM -mm -MH -mh -MD -md -MF -mf -ME -me -MT -mt -MU -mu -MO -mo
    -MK -mk -MC -mc -ML -ml -M# -m# -MG -mg -MZ -mz
    '-&'
)
# ... with the address of an HV-supply there.
_kov_controller_with_supply=(-VK -vk -VO -vo -VV -vv -VG -vg -VD -vd -VT -vt)

# _kov_controller_offer WORD... offers the words that begin as the current one ($typed) does.
_kov_controller_offer() {
    local word
    for word; do
        [[ $word == "$typed"* ]] || continue
        word=$sign${word:1}
        [[ $quote ]] || printf -v word %q "$word" # for * $ & ?
        COMPREPLY+=("$word")
    done
}

# _kov_controller_open SWITCH... offers switches behind which something must follow.
_kov_controller_open() {
    local before=${#COMPREPLY[@]}
    _kov_controller_offer "$@"
    ((${#COMPREPLY[@]} == before)) || compopt -o nospace 2>/dev/null
}

# _kov_controller_addresses ADDRESSES SWITCH... offers the letters, and behind them the addresses.
_kov_controller_addresses() {
    local addresses=$1 switch address
    shift
    for switch; do
        if [[ $typed != "$switch"* ]]; then
            _kov_controller_open "$switch"
            continue
        fi
        for ((address = 0; address < ${#addresses}; ++address)); do
            _kov_controller_offer "$switch${addresses:address:1}"
        done
    done
}

_kov_controller() {
    local current=$2 before=${COMP_WORDS[COMP_CWORD - 1]} quote='' sign typed switch
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        case $current in
        [-/]*) COMPREPLY=("1 '-?' -T") ;; # a wish for help
        [Cc][Oo][Mm][1-9]*) COMPREPLY=("${current:3}") ;;
        *) mapfile -t COMPREPLY < <(compgen -W '1 2 3 4 5 6 7 8 9' -- "$current") ;;
        esac
        return
    fi
    # What the argument before wants.
    case ${before#[-/]} in
    "$before") ;;
    [Xx][SsLl]* | [YyRr] | HS | hs)
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        return
        ;;
    M[Aa]? | B[Aa])
        mapfile -t COMPREPLY < <(compgen -W 'y n' -- "$current")
        return
        ;;
    S[EeGgSs] | V[Vv]? | X[Nn]?* | '&'* | '\&'*) return ;;
    esac
    case ${COMP_WORDS[COMP_CWORD]} in
    [\'\"]*) quote=yes ;; # which is not in the word that is passed
    esac
    typed=${current//\\/}
    [[ $typed == [-/]* ]] || { [[ -z $typed ]] && typed=-; } || return
    sign=${typed:0:1} typed=-${typed:1}
    if [[ $typed == - ]]; then
        local -A groups=()
        for switch in "${_kov_controller_complete[@]}" "${_kov_controller_with_module[@]}" \
            "${_kov_controller_with_supply[@]}" -X -x; do
            groups[${switch:0:2}]=
        done
        _kov_controller_open "${!groups[@]}"
        return
    fi
    _kov_controller_offer "${_kov_controller_complete[@]}"
    _kov_controller_open "${_kov_controller_with_number[@]}"
    _kov_controller_addresses '0123_*' "${_kov_controller_with_module[@]}"
    _kov_controller_addresses 123 "${_kov_controller_with_supply[@]}"
}

complete -F _kov_controller KOV-Controller
