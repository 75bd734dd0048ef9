# Completions of kruteinctl for bash.

# The connected devices; nothing where there is no device daemon.
_kruteinctl_udids() {
    kruteinctl devices --timeout 2 --json 2>/dev/null |
        sed -n 's/^{"message_type":"device","udid":"\([^"]*\)".*/\1/p'
}

# The types that may follow those before the last comma.
_kruteinctl_types() {
    local before=""
    [[ $1 == *,* ]] && before=${1%,*},
    printf "$before%s\n" messages whatsapp wechat contacts
    [ -n "$before" ] || echo full
}

_kruteinctl_options() {
    case $1 in
        backup) echo "--to --types --keep-failed --dry-run --from --quiet" ;;
        restore) echo "--from --force --quiet" ;;
        size) echo "--from --quiet" ;;
        files) echo "--domain --path" ;;
        verify) echo "--quiet" ;;
        devices) echo "--watch --timeout" ;;
        info) echo "--timeout" ;;
    esac
    echo "--json --help"
}

# Answers with the lines of its input. Old shells have no mapfile.
_kruteinctl_answer() {
    local line
    while IFS= read -r line; do
        COMPREPLY+=("$line")
    done
}

# Answers with files and folders (f) or folders alone (d).
_kruteinctl_paths() {
    _kruteinctl_answer < <(compgen "-$1" -- "$2")
    compopt -o filenames
}

_kruteinctl() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
    local IFS=$' \t\n'
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        local words="backup restore size list files verify show devices info --help --version"
        _kruteinctl_answer < <(compgen -W "$words" -- "$current")
        return
    fi
    case $previous in
        --to | --from)
            _kruteinctl_paths d "$current"
            return
            ;;
        --types)
            _kruteinctl_answer < <(compgen -W "$(_kruteinctl_types "$current")" -- "$current")
            compopt -o nospace
            return
            ;;
        --domain | --path | --timeout) return ;;
    esac
    case $current,$command in
        -*) _kruteinctl_answer < <(compgen -W "$(_kruteinctl_options "$command")" -- "$current") ;;
        *,backup | *,restore | *,size | *,info)
            _kruteinctl_answer < <(compgen -W "$(_kruteinctl_udids)" -- "$current")
            ;;
        *,files) _kruteinctl_paths f "$current" ;;
        *,list | *,verify | *,show) _kruteinctl_paths d "$current" ;;
    esac
} 2>/dev/null

complete -F _kruteinctl kruteinctl
