# bash completion for kqu-post. The tools' keys are those that kqu-post itself lists.

_kqu_post() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} tool='[a-z]*' i
    # bash takes "--tool=scanner" and "KEY=VALUE" for three words.
    if [[ $word == = ]]; then
        word=
    elif [[ $before == = ]]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    COMPREPLY=()
    case $before in
        --tool) mapfile -t COMPREPLY < <(compgen -W 'scanner backup defragmenter' -- "$word") ;;
        --name)
            compopt -o nospace
            mapfile -t COMPREPLY < <(compgen -W 'KQS_disk.' -- "$word")
            ;;
        Extra) mapfile -t COMPREPLY < <(compgen -W 'sleep shutdown' -- "$word") ;;
        Item | dVolName | FileName) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
        *)
            if [[ $word == -* ]]; then
                mapfile -t COMPREPLY < <(compgen -W '--tool --name --system --no-start --start-only
                    --any-key --any-value --help --version' -- "$word")
                return
            fi
            for ((i = 1; i < COMP_CWORD; i++)); do
                [[ ${COMP_WORDS[i]} == @(scanner|backup|defragmenter) ]] && tool=${COMP_WORDS[i]}
            done
            compopt -o nospace
            mapfile -t COMPREPLY < <(compgen -S = -W "$("${COMP_WORDS[0]}" --help 2>/dev/null |
                sed -n "s/^  $tool: //p" | tr -d ,)" -- "$word")
            ;;
    esac
}

complete -F _kqu_post kqu-post
