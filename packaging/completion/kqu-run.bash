# bash completion for kqu-run: its options, then the command that it runs.

_kqu_run() {
    local word=${COMP_WORDS[COMP_CWORD]} option='' first=1
    COMPREPLY=()
    # Where the command begins: behind "--", or at the first word that is neither an option nor an
    # option's value. bash takes "--after=sleep" for three words.
    while ((first < COMP_CWORD)); do
        case ${COMP_WORDS[first]} in
            --after | --tool | --volume | --destination | --name)
                option=${COMP_WORDS[first]}
                ((first += 2))
                [[ ${COMP_WORDS[first - 1]} != = ]] || ((first += 1))
                ;;
            --)
                ((first += 1))
                break
                ;;
            -*) ((first += 1)) ;;
            *) break ;;
        esac
    done
    if ((first > COMP_CWORD)); then
        [[ $word != = ]] || word=
        case $option in
            --after) mapfile -t COMPREPLY < <(compgen -W 'sleep shutdown' -- "$word") ;;
            --tool) mapfile -t COMPREPLY < <(compgen -W 'scanner backup defragmenter' -- "$word") ;;
            --destination) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
        esac
    elif [[ $word == -* && $first -eq $COMP_CWORD && ${COMP_WORDS[first - 1]} != -- ]]; then
        mapfile -t COMPREPLY < <(compgen -W '--after --tool --volume --destination --name --system
            --notify --percent --pid --show-files --no-start --verbose --help --version --' -- "$word")
    elif declare -F _command_offset >/dev/null; then
        _command_offset "$first"
    elif ((first == COMP_CWORD)); then
        mapfile -t COMPREPLY < <(compgen -c -- "$word")
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    fi
}

complete -F _kqu_run kqu-run
