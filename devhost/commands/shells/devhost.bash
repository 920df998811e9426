# shellcheck shell=bash
# Completion of devhost for bash. Source this, or install it where bash-completion looks.
_devhost() {
  local at word line meant=()
  for ((at = 1; at <= COMP_CWORD; ++at)); do
    word=${COMP_WORDS[at]}
    # Quotes, escapes and a tilde as the shell will read them; what could run a command stays as it is.
    [[ $word == *[\`\$\;\&\|\<\>\(\)]* ]] || eval "word=$word" 2>/dev/null
    meant+=("$word")
  done
  COMPREPLY=()
  while IFS= read -r line; do
    case $line in
    :files) compopt -o default ;;
    :folders) compopt -o dirnames ;;
    *)
      word=${line%%$'\t'*}
      [[ $word != *[!A-Za-z0-9_.,/:@%+=-]* ]] || word=$(printf %q "$word")
      COMPREPLY+=("$word")
      ;;
    esac
  done < <("${COMP_WORDS[0]/#\~\//$HOME/}" __complete "${meant[@]}" 2>/dev/null)
}
complete -F _devhost devhost
