# Completion of stowhaven's commands and options for bash.
_stowhaven() {
    local current=${COMP_WORDS[COMP_CWORD]}
    local previous=${COMP_WORDS[COMP_CWORD-1]}
    local commands="packages settings items inspect share status history storage open backup restore"
    local command="" word
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case " $commands " in *" $word "*) command=$word; break ;; esac
    done
    case $previous in
        --root) COMPREPLY=($(compgen -d -- "$current")); return ;;
        --key-file|--password-file|inspect|vcard) COMPREPLY=($(compgen -f -- "$current")); return ;;
    esac
    local options
    case $command in
        "") options="--root --verbose --version --help $commands" ;;
        packages|items|status|history) options="--json" ;;
        settings) options="--json --show-secrets" ;;
        inspect) options="--json" ;;
        storage) options="use login hosts forget logout ftp owncloud --port --user --root --active --password-file --json" ;;
        share) options="vcard" ;;
        open) options="--yes stowhaven://autobackup" ;;
        backup) options="--yes --title --description --key-file" ;;
        restore) options="--yes --fw-compatible-only --session --key-file --log" ;;
    esac
    COMPREPLY=($(compgen -W "$options" -- "$current"))
}
complete -F _stowhaven stowhaven
