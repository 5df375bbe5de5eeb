# Completion of zvconv's options and encodings in bash. Both are asked of zvconv itself.
_zvconv() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} words
    COMPREPLY=()
    # "=" stands as a word of its own between a long option and its value.
    [[ $current == = ]] && current=
    [[ $previous == = ]] && previous=${COMP_WORDS[COMP_CWORD - 2]}
    case $previous in
    -f | -t | --from-code | --to-code | -[!-]*[ft])
        words=$(zvconv --list | cut -d ' ' -f 1)
        [[ $previous == *f* ]] && words="auto $words"
        # In any case; the other names where none of the first begins so.
        mapfile -t COMPREPLY < <(
            tr ' ' '\n' <<<"$words" | grep -i -e "^$current" ||
                zvconv --list | sed 's/.*; also //' | tr ' ' '\n' | grep -i -e "^$current"
        )
        return 0
        ;;
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
