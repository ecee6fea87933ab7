# Completes tarn and tarn-standin in bash. Commands and options are those of the program's own help.

_tarn()
{
  local program=${COMP_WORDS[0]} current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local word commands='' command='' options placeholder
  if [ "${program##*/}" = tarn ]; then
    commands=$("$program" --help 2>/dev/null | sed -n '/^Commands:/,/^$/s/^  \([a-z]*\) .*/\1/p')
  fi
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ $'\n'$commands$'\n' == *$'\n'"$word"$'\n'* ]]; then
      command=$word
      break
    fi
  done
  # Each option, with the placeholder of its value.
  options=$("$program" ${command:+"$command"} --help 2>/dev/null |
    sed -n 's/^  \(-[a-z], \{0,1\}\)\{0,1\}\(--[a-z-]*\)\( [A-Z:]*\)\{0,1\}.*/\2\3/p')
  placeholder=$(sed -n "s/^${previous//[^-a-z]/} //p" <<<"$options")

  local kind=(-f)
  case $placeholder in
    FOLDER | *:DIR) kind=(-d) ;;
    FILE) ;;
    ?*) return ;;
    *)
      if [[ $current == -* ]]; then
        kind=(-W "$(sed 's/ .*//' <<<"$options")")
      elif [ -n "$commands" ] && [ -z "$command" ]; then
        kind=(-W "$commands help")
      fi
      ;;
  esac
  [ "${kind[0]}" = -W ] || compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen "${kind[@]}" -- "$current")
}

complete -F _tarn tarn tarn-standin
