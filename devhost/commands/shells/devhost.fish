# Completion of devhost for fish. Source this, or install it where fish looks.
function __devhost_complete
    set -l meant (commandline -opc)
    set -l program (string replace -r '^~/' "$HOME/" -- $meant[1])
    set -e meant[1]
    set -l word (commandline -ct)
    set -l before ''
    if string match -qr -- '^--[^=]*=' "$word"
        set before (string replace -r '=.*' '=' -- $word)
        set meant $meant (string replace -r '=.*' '' -- $word) '='
        set word (string replace -r '^[^=]*=' '' -- $word)
    end
    set meant (string replace -r '^~/' "$HOME/" -- $meant)
    for line in ($program __complete $meant "$word" 2>/dev/null)
        switch $line
            case :files
                for path in (__fish_complete_path "$word")
                    printf '%s%s\n' "$before" $path
                end
            case :folders
                for path in (__fish_complete_directories "$word")
                    printf '%s%s\n' "$before" $path
                end
            case '*'
                printf '%s%s\n' "$before" $line
        end
    end
end
complete -c devhost -f -a '(__devhost_complete)'
