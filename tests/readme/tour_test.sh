#!/usr/bin/env bash
# Runs the command lines of a page ("$ ...", continued by "> ...") one after another on one simulated
# instrument, new at the beginning, and compares what they print with what stands below them there.
# A line "..." stands for any lines; what differs from run to run (dates, times, measured values,
# counts) is masked, and what a busy machine loses is left out. A command line without an output only
# has to be a good one. Links lead somewhere.
#   tour_test.sh PAGE SOURCE_FOLDER PROGRAM QUICK_CONTROLLER [COMPANION]
set -uo pipefail
page=$(realpath "$1") program=$3 quick_controller=$4
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
ln -s "$(realpath "$2")/simulator" "$folder/simulator"
cd "$folder" || exit
printf '#!/bin/sh\nexec "%s" "$@"\n' "$program" >run.sh
# Several instruments under the program's name: product number 24010N at COM N, a leaking output at
# COM4. An acceptance test is run on the virtual clock.
mkdir bin
cat >bin/KOV-Controller <<END
#!/bin/sh
export KOV_SIMULATOR_STATE="$folder/state\$1" KOV_SIMULATOR_SCENARIO="$folder/scenario\$1"
echo "product_number 24010\$1" >"$folder/scenario\$1"
[ "\$1" != 4 ] || echo "slot1.load 1e9" >>"$folder/scenario4"
case " \$* " in
*" -R "*) exec "$quick_controller" "\$@" ;;
*) exec "$program" "\$@" ;;
esac
END
chmod +x run.sh bin/KOV-Controller
companion=${5:-}
[ -z "$companion" ] || PATH=${companion%/*}:$PATH
PATH=$folder/bin:$PATH
unset KOV_DEVICE_LIBRARY LD_LIBRARY_PATH NO_COLOR CLICOLOR_FORCE KOV_SIMULATOR_SCENARIO
export KOV_SIMULATOR_STATE=$folder/state LC_ALL=C.UTF-8

masked() {
    sed -E -e 's/ *[-+]?[0-9]+\.[0-9]{2,}(e[-+][0-9]+)?/ #/gi' \
        -e 's/ *[-+]?[0-9]+\.[0-9]( ?ms|°C?)/ #\1/g' \
        -e 's/[0-9]{4}\/[0-9]{2}\/[0-9]{2}, [0-9:.]+( #)?/#/g' \
        -e 's/[0-9]{4}-[0-9]{2}-[0-9]{2}/#/g' \
        -e 's/[0-9]{2}:[0-9]{2}: #( #)?/#/' \
        -e 's/(compilation date:).*/\1 #/' \
        -e '/ data overflow:/d' \
        -e 's/(received:) +[0-9]+/\1 #/' \
        -e 's/[0-9]+ (cycles|\(.*bytes$)/# \1/g' \
        -e 's/[[:space:]]+$//'
}

# agrees EXPECTED PRINTED: two files of masked lines.
agrees() {
    local line=0 gap=0 text
    local -a printed
    mapfile -t printed <"$2"
    while IFS= read -r text; do
        if [ "$text" = ... ]; then
            gap=1
            continue
        fi
        while [ "$gap" -eq 1 ] && [ "$line" -lt ${#printed[@]} ] && [ "${printed[line]}" != "$text" ]; do
            line=$((line + 1))
        done
        [ "$line" -lt ${#printed[@]} ] && [ "${printed[line]}" = "$text" ] || return
        line=$((line + 1)) gap=0
    done <"$1"
    [ "$gap" -eq 1 ] || [ "$line" -eq ${#printed[@]} ]
}

failed=0 count=0
# check COMMAND, whose output is expected in the file "expected".
check() {
    local status
    count=$((count + 1))
    timeout 60 bash -c "$1" </dev/null >output 2>&1
    status=$?
    if [ ! -s expected ]; then
        [ "$status" -eq 0 ] && return
    else
        masked <expected >expected.masked
        masked <output >output.masked
        agrees expected.masked output.masked && return
    fi
    echo "${page##*/}: $1"$'\n'"ended with status $status and printed"
    cat output
    failed=1
}

while IFS= read -r target; do
    case $target in
    http*) ;;
    *) [ -e "$(dirname "$page")/$target" ] || { echo "${page##*/} leads nowhere: $target" && failed=1; } ;;
    esac
done < <(grep -oE '(\]\(|src(set)?=")[^)#"]+' "$page" | sed -E 's/^(\]\(|src(set)?=")//')

command=
while IFS= read -r line || [ -n "$line" ]; do
    case $line in
    '    $ '*)
        [ -z "$command" ] || check "$command"
        command=${line#    \$ }
        if [[ $command == 'kov '* && -z $companion ]]; then
            echo "left out, the companion is not built: $command"
            command=
        fi
        : >expected
        ;;
    '    > '*) command+=$'\n'${line#    > } ;;
    '    '*) [ -z "$command" ] || printf '%s\n' "${line#    }" >>expected ;;
    *)
        [ -z "$command" ] || check "$command"
        command=
        ;;
    esac
done <"$page"
echo "$count command lines"
[ "$failed" -eq 0 ] && [ "$count" -gt 0 ]
