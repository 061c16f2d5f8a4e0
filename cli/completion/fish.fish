# fish completion for pictureqvr
function __pictureqvr_complete
    set -l words (commandline -opc) (commandline -ct)
    set -l current (commandline -ct)
    for line in ($words[1] complete $words[2..] 2>/dev/null)
        switch $line
            case ':files'
                set -l before (string match -r '^.*=' -- $current)
                for file in (__fish_complete_path (string replace -r '^.*=' '' -- $current))
                    echo "$before$file"
                end
            case ':folders'
                __fish_complete_directories $current
            case '*'
                echo $line
        end
    end
end
complete -c pictureqvr -f -a '(__pictureqvr_complete)'
