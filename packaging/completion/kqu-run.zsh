#compdef kqu-run

_arguments -s -S \
    '--after=[what the job wishes for afterwards]:wish:(sleep shutdown)' \
    '--tool=[the tool that the row shows]:tool:(scanner backup defragmenter)' \
    '--volume=[the name of the volume]:volume:' \
    '--destination=[where a backup goes]:destination:_files' \
    '--name=[the name of the task]:name:' \
    '--system[post on the system bus]' \
    '--notify=-[show a notification at the end]::when:(failure)' \
    '--pid=[show a command that runs already]:process:_pids' \
    '--percent=-[show the last percentage that is printed]::stream:(stderr)' \
    '--show-files[post names of files on the system bus too]' \
    "--no-start[don't start the messenger]" \
    "--verbose[tell why the row can't be shown]" \
    '(- *)'{-h,--help}'[show a summary]' \
    '(- *)--version[show the version]' \
    '(-)1:command: _command_names -e' \
    '*::arguments:_normal'
