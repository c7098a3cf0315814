# Completion of ble-kovractl for bash.
_ble_kovractl() {
    local words=""
    if [ "$COMP_CWORD" -eq 1 ]; then
        words="status doctor toggle on off settings hotkey quit --help --version"
    elif [ "$COMP_CWORD" -eq 2 ] && [ "${COMP_WORDS[1]}" = status ]; then
        words="--json"
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "${COMP_WORDS[COMP_CWORD]}")
}
complete -F _ble_kovractl ble-kovractl
