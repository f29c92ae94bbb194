#compdef kqu-post
# The tools' keys are those that kqu-post itself lists.

_kqu_post_value() {
    local tool='[a-z]*' word
    local -a keys
    if compset -P 1 'Extra='; then
        compadd sleep shutdown
    elif compset -P 1 '(Item|dVolName|FileName)='; then
        _files
    elif ! compset -P 1 '*='; then
        for word in $words; do
            [[ $word == (scanner|backup|defragmenter) ]] && tool=$word
            [[ $word == --tool=(scanner|backup|defragmenter) ]] && tool=${word#--tool=}
        done
        keys=(${(u)=${"$(kqu-post --help 2>/dev/null | sed -n "s/^  $tool: //p")"//,/}})
        compadd -S = -- $keys
    fi
}

_arguments -s \
    '--tool=[the tool that posts]:tool:(scanner backup defragmenter)' \
    '--name=[the name of the task, with KQS_disk in it]:name:(KQS_disk.)' \
    '--system[post on the system bus]' \
    "--no-start[don't start the messenger]" \
    '(* --tool --name --no-start --any-key --any-value)--start-only[start the messenger and post nothing]' \
    "--any-key[let keys through that the tool doesn't have]" \
    "--any-value[let values through that are no numbers]" \
    '(- *)'{-h,--help}'[show a summary and the keys of each tool]' \
    '(- *)--version[show the version]' \
    '*:value:_kqu_post_value'
