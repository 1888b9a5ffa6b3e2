# What zsh lists and completes for command lines of KOV-Controller, in its default style.
#   zsh -f zsh_completion_test.zsh SOURCE_FOLDER
zmodload zsh/zpty zsh/datetime
folder=$(mktemp -d)
trap 'rm -rf $folder' EXIT
failed=0

# shown TYPED EXPECTED: what stands on a terminal after a tab behind TYPED holds EXPECTED.
shown() {
    local output='' piece plain end=$((EPOCHREALTIME + 15))
    zpty shell zsh -f -i
    zpty -w shell "stty cols 200; PS1='> '; LISTMAX=0 fpath=($source/completions \$fpath)
autoload -U compinit; compinit -u -d $folder/dump; echo rea''dy"
    while [[ $output != *ready* ]] && ((EPOCHREALTIME < end)); do
        zpty -r -t shell piece && output+=$piece || sleep 0.05
    done
    output=''
    zpty -w -n shell "KOV-Controller $1"$'\t'
    while ((EPOCHREALTIME < end)); do
        zpty -r -t shell piece && output+=$piece || sleep 0.05
        plain=$(sed -E $'s/\x1b\\[[0-9;?]*[a-zA-Z]|\b//g; s/ *\r*$//' <<<"$output")
        [[ $plain != *"$2"* ]] || break
    done
    zpty -d shell
    [[ $plain == *"$2"* ]] && return
    print -r -- "KOV-Controller $1: expected"$'\n'"$2"$'\n'"and got"$'\n'"$plain"
    failed=1
}

source=${1:A}
zsh -n $source/completions/_KOV-Controller $source/completions/_kov || failed=1
shown '3 -' '-u  -U  -- enabling the device
-v  -V  -- HV-supplies
-x  -X  -- configurations'
shown '3 -H' '-H   -- product data
-HA  -- set current limit
-HI  -- interlock state'
shown '3 /vo' '/vo1  -- output voltage and current, slot 1
/vo2  -- output voltage and current, slot 2'
shown '3 -MI' '-MI*  -- product identification, all modules'
shown '--he' "--he1 '-?' -T" # written over what was typed
shown 'COM4' 'COM44'
shown '' '-- number of the COM port, 1 to 255'
exit $failed
