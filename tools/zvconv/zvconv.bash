# Completion of zvconv's options and encodings in bash. Both are asked of zvconv itself.
_zvconv() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} words
    COMPREPLY=()
    # "=" stands as a word of its own between a long option and its value.
    [[ $current == = ]] && current=
    [[ $previous == = ]] && previous=${COMP_WORDS[COMP_CWORD - 2]}
    case $previous in
    -f | --from-code) words="auto $(zvconv --list | cut -d ' ' -f 1)" ;;
    -t | --to-code) words=$(zvconv --list | cut -d ' ' -f 1) ;;
    --line-ends) words="lf crlf keep" ;;
    --katakana) words="full keep" ;;
    *)
        [[ $current == -* ]] || return 0 # a file, by the default of readline
        words=$(zvconv --help | grep -o -E -e '(^|[ ,])-(-[a-z-]+|[a-zA-Z]\b)' | tr -d ' ,')
        ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}

complete -o default -F _zvconv zvconv
