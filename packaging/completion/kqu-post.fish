# fish completion for kqu-post. The tools' keys are those that kqu-post itself lists.

function __kqu_post_keys
    set -l tool '[a-z]*'
    for word in (commandline --tokenize --cut-at-cursor | string replace -- --tool= '')
        contains -- $word scanner backup defragmenter; and set tool $word
    end
    for key in (kqu-post --help 2>/dev/null | string match --regex --groups-only "^  $tool: (.*)" \
            | string split ', ' | sort -u)
        echo "$key="
    end
    echo Extra=sleep
    echo Extra=shutdown
end

complete -c kqu-post -f -a '(__kqu_post_keys)'
complete -c kqu-post -l tool -x -a 'scanner backup defragmenter' -d 'The tool that posts'
complete -c kqu-post -l name -x -a 'KQS_disk.' -d 'The name of the task, with KQS_disk in it'
complete -c kqu-post -l system -d 'Post on the system bus'
complete -c kqu-post -l no-start -d 'Don\'t start the messenger'
complete -c kqu-post -l start-only -d 'Start the messenger and post nothing'
complete -c kqu-post -l any-key -d 'Let keys through that the tool doesn\'t have'
complete -c kqu-post -l any-value -d 'Let values through that are no numbers'
complete -c kqu-post -s h -l help -d 'Show a summary and the keys of each tool'
complete -c kqu-post -l version -d 'Show the version'
