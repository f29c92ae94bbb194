# fish completion for kqu-run: its options, then the command that it runs.

complete -c kqu-run -f \
    -a '(__fish_complete_subcommand -- --after --tool --volume --destination --name)'
complete -c kqu-run -l after -x -a 'sleep shutdown' -d 'What the job wishes for afterwards'
complete -c kqu-run -l tool -x -a 'scanner backup defragmenter' -d 'The tool that the row shows'
complete -c kqu-run -l volume -x -d 'The name of the volume'
complete -c kqu-run -l destination -r -F -d 'Where a backup goes'
complete -c kqu-run -l name -x -d 'The name of the task'
complete -c kqu-run -l system -d 'Post on the system bus'
complete -c kqu-run -l notify -d 'Show a notification at the end; =failure only if it failed'
complete -c kqu-run -l pid -x -a '(__fish_complete_pids)' -d 'Show a command that runs already'
complete -c kqu-run -l percent -d 'Show the last percentage that is printed'
complete -c kqu-run -l show-files -d 'Post names of files on the system bus too'
complete -c kqu-run -l no-start -d 'Don\'t start the messenger'
complete -c kqu-run -l verbose -d 'Tell why the row can\'t be shown'
complete -c kqu-run -s h -l help -d 'Show a summary'
complete -c kqu-run -l version -d 'Show the version'
