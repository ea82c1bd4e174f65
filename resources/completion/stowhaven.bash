# Completion of stowhaven's commands and options for bash.
_stowhaven() {
    local current=${COMP_WORDS[COMP_CWORD]}
    local previous=${COMP_WORDS[COMP_CWORD-1]}
    local commands="packages settings items inspect share status history devices select storage open backup restore verify"
    local command="" word
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case " $commands " in *" $word "*) command=$word; break ;; esac
    done
    case $previous in
        --root) COMPREPLY=($(compgen -d -- "$current")); return ;;
        --key-file|--password-file|--output|inspect|vcard|text|pdf) COMPREPLY=($(compgen -f -- "$current")); return ;;
    esac
    local options
    case $command in
        "") options="--root --verbose --version --help $commands" ;;
        packages|items|status) options="--json" ;;
        settings) options="--json --show-secrets --unset" ;;
        history) options="delete use --json --yes" ;;
        devices) options="dates rename delete adopt --json --yes" ;;
        select) options="packages sources applications stock-apps preferences springboard folders folder albums --photos --videos --json --restore --all --none --invert --fw-compatible --only --add --remove --save-default" ;;
        inspect) options="--json" ;;
        storage) options="use login hosts forget logout ftp owncloud dropbox box gdrive onedrive sugarsync --code --port --user --root --active --password-file --json" ;;
        share) options="text mail vcard clipboard pdf --to --output" ;;
        open) options="--yes stowhaven://autobackup" ;;
        backup) options="--yes --title --description --key-file" ;;
        restore) options="--yes --fw-compatible-only --session --key-file --log" ;;
        verify) options="--session --all --key-file --json" ;;
    esac
    COMPREPLY=($(compgen -W "$options" -- "$current"))
}
complete -F _stowhaven stowhaven
