# Completes tarn in fish. Commands and options are those of the program's own help.

function __tarn_commands
    tarn --help 2>/dev/null | sed -n '/^Commands:/,/^$/s/^  \([a-z]*\)  *\(.*\)/\1\t\2/p'
end

# The command that the line has so far.
function __tarn_command
    set -l commands (__tarn_commands | string replace -r '\t.*' '')
    for word in (commandline -opc)[2..]
        if contains -- $word $commands
            echo $word
            return
        end
    end
    return 1
end

function __tarn_options
    tarn (__tarn_command) --help 2>/dev/null | string replace -rf '^  (?:-\w,)?(--[a-z-]+).*?(?:  +(.*))?$' '$1\t$2'
end

complete -c tarn -n 'not __tarn_command >/dev/null' -f -a '(__tarn_commands)'
complete -c tarn -n 'string match -q -- "-*" (commandline -ct)' -f -a '(__tarn_options)'
