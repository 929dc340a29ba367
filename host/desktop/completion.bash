# Completion of dmbtv, dmbhead and dmbprobe for bash.

_dmbtv() {
    local cur prev command= word
    cur=${COMP_WORDS[COMP_CWORD]}
    prev=${COMP_WORDS[COMP_CWORD - 1]}
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $word in demo | scan | list | record | play) command=$word && break ;; esac
    done
    compopt -o filenames 2>/dev/null
    case $prev in
    --lang) mapfile -t COMPREPLY < <(compgen -W "ko en" -- "$cur") && return ;;
    --log-level) mapfile -t COMPREPLY < <(compgen -W "error warn info debug" -- "$cur") && return ;;
    --profile | --card | --device-root) mapfile -t COMPREPLY < <(compgen -d -- "$cur") && return ;;
    --command | -g | --gain | -t | --seconds) return ;;
    -l | --service)
        local IFS=$'\n'
        mapfile -t COMPREPLY < <(compgen -W "$(dmbtv list --log-level error 2>/dev/null | sed -n 's/^tv *\[[^]]*\] *//p')" -- "$cur")
        COMPREPLY=("${COMPREPLY[@]// /\\ }")
        return
        ;;
    esac
    local common="--help --headless --scale --full-screen --once --script --transcript --audio-out --screenshot --keys --device-root --card --profile --lang --log-level --debug-mode"
    local source="--command --gain"
    if [[ $cur == -* ]]; then
        case $command in
        scan) word="$common $source --json" ;;
        list) word="$common --json" ;;
        record) word="$common $source --service --seconds --out" ;;
        play) word="$common --window" ;;
        *) word="$common $source --version" ;;
        esac
        mapfile -t COMPREPLY < <(compgen -W "$word" -- "$cur")
        return
    fi
    mapfile -t COMPREPLY < <(compgen -f -- "$cur")
    [ -n "$command" ] || mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -W "demo scan list record play" -- "$cur")
}

_dmbhead() {
    local cur=${COMP_WORDS[COMP_CWORD]}
    compopt -o filenames 2>/dev/null
    if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "--out --again --print --quiet --help --version" -- "$cur")
    elif [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "demo make parts" -- "$cur")
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
    fi
}

_dmbprobe() {
    local cur=${COMP_WORDS[COMP_CWORD]}
    compopt -o filenames 2>/dev/null
    if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "--service --config --audio --video --help" -- "$cur")
    elif [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "info fic ts pad audio bsac play" -- "$cur")
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$cur")
    fi
}

complete -F _dmbtv dmbtv
complete -F _dmbhead dmbhead
complete -F _dmbprobe dmbprobe
