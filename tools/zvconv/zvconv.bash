# Completion of zvconv's options and code sets in bash. Both are asked of zvconv itself.
_zvconv() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} words i
    COMPREPLY=()
    # "=" stands as a word of its own between a long option and its value.
    [[ $current == = ]] && current=
    [[ $previous == = ]] && previous=${COMP_WORDS[COMP_CWORD - 2]}
    case $previous in
    -f | --from-code)
        words="auto $(zvconv --list | cut -d ' ' -f 1)"
        ;;
    -t | --to-code)
        words=$(zvconv --list | cut -d ' ' -f 1)
        # Once FROM is known, only what it can be converted into.
        for ((i = 1; i < COMP_CWORD; ++i)); do
            case ${COMP_WORDS[i]} in
            -f) words=$(_zvconv_targets "${COMP_WORDS[i + 1]}") ;;
            --from-code) words=$(_zvconv_targets "${COMP_WORDS[i + 2]}") ;;
            esac
        done
        ;;
    *)
        [[ $current == -* ]] || return 0 # a file, by the default of readline
        words=$(zvconv --help | grep -o -E -e '(^|[ ,])-(-[a-z-]+|[a-zA-Z]\b)' | tr -d ' ,')
        ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}

_zvconv_targets() {
    if [[ $1 == auto ]]; then
        echo JIS EUC SJIS
    else
        zvconv --list | sed -n "s/^$1  to //p" | tr -d ','
    fi
}

complete -o default -F _zvconv zvconv
