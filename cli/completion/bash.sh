# bash completion for pictureqvr
_pictureqvr() {
    local current=${COMP_WORDS[COMP_CWORD]} line
    [[ $current != '=' ]] || current=
    COMPREPLY=()
    while IFS= read -r line; do
        case $line in
            :files) mapfile -t COMPREPLY < <(compgen -f -- "$current"); compopt -o filenames 2>/dev/null ;;
            :folders) mapfile -t COMPREPLY < <(compgen -d -- "$current"); compopt -o filenames 2>/dev/null ;;
            *)
                line=${line%%$'\t'*}
                # What stands before an equals sign is a word of its own here.
                [[ $current == *=* || $line != *=?* ]] || line=${line#*=}
                COMPREPLY+=("$line")
                [[ $line != *= ]] || compopt -o nospace 2>/dev/null ;;
        esac
    done < <("${COMP_WORDS[0]}" complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -F _pictureqvr pictureqvr
