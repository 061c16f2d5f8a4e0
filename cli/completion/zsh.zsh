#compdef pictureqvr
_pictureqvr() {
    local line
    local -a candidates
    for line in ${(f)"$(${words[1]} complete "${(@)words[2,CURRENT]}" 2>/dev/null)"}; do
        case $line in
            :files) compset -P '*='; _files ;;
            :folders) _files -/ ;;
            *) candidates+=("${${line//:/\\:}/$'\t'/:}") ;;
        esac
    done
    (( ! $#candidates )) || _describe pictureqvr candidates
}
# From a folder of $fpath the whole file is the function.
if [[ ${funcstack[1]} == _pictureqvr ]]; then
    _pictureqvr "$@"
else
    compdef _pictureqvr pictureqvr
fi
