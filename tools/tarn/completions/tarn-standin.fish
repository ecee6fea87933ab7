# Completes tarn-standin in fish. The options are those of the program's own help.

complete -c tarn-standin -n 'string match -q -- "-*" (commandline -ct)' -f -a \
    "(tarn-standin --help | string replace -rf '^  (?:-\w, ?)?(--[a-z-]+).*?(?:  +(.*))?\$' '\$1\t\$2')"
