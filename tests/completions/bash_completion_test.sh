#!/usr/bin/env bash
# What bash offers for command lines of KOV-Controller.
#   bash_completion_test.sh SOURCE_FOLDER
set -uo pipefail
source "$1/completions/KOV-Controller.bash"
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit
touch 'bake out.ini' other.txt
failed=0

# expect WHAT_IS_OFFERED ARGUMENT...: the last argument is the one being typed.
expect() {
    local expected=$1 offered
    shift
    COMP_WORDS=(KOV-Controller "$@") COMP_CWORD=$# COMPREPLY=()
    _kov_controller KOV-Controller "${!##\'}" "${COMP_WORDS[COMP_CWORD - 1]}"
    offered=$(IFS='|' && echo "${COMPREPLY[*]}")
    [ "$offered" = "$expected" ] && return
    echo "KOV-Controller $*: expected $expected, got $offered" >&2
    failed=1
}

expect "1 '-?' -T" --he
expect 3 COM3
expect '-VK|-VO|-VV|-VG|-VD|-VT' 3 -V
expect '-MS0|-MS1|-MS2|-MS3|-MS_|-MS\*' 3 -p -MS
expect '/vt1|/vt2|/vt3' 3 /vt
expect '-XS' 3 -XS
expect '-hp' 3 -hp
expect '-\$' 3 '-\$'
expect "-&0|-&1|-&2|-&3|-&_|-&*" 3 "'-&"
expect 'bake out.ini' 3 -XL7 b
expect 'other.txt' 3 -hs o
expect 'y|n' 3 -MA0 ''
expect '' 3 -VV1 -
expect '' 3 nothing

source "$1/completions/kov.bash"
expect_kov() {
    local expected=$1 offered
    shift
    COMP_WORDS=(kov "$@") COMP_CWORD=$# COMPREPLY=()
    _kov kov "${!#}" "${COMP_WORDS[COMP_CWORD - 1]}"
    offered=$(IFS='|' && echo "${COMPREPLY[*]}")
    [ "$offered" = "$expected" ] && return
    echo "kov $*: expected $expected, got $offered" >&2
    failed=1
}

expect_kov 'report|replay' r
expect_kov 'show|stats' journal s
expect_kov 'other.txt' replay o
expect_kov '--realtime' replay --r
expect_kov 'other.txt' tap -o o
expect_kov 'other.txt' tap -- KOV-Controller o
expect_kov 'check' report c
expect_kov '--json|--junit' report check --j
expect_kov 'other.txt' report check --html x.html o
expect_kov 'other.txt' report diff --limits o
expect_kov '--key' report trend --k
expect_kov '' report limits o
expect_kov 'stats' log s
expect_kov '--output|--only' log plot --o
expect_kov 'Vout|Voltage' log plot --only Vo
expect_kov 'other.txt' log csv o
[ "$failed" -eq 0 ]
