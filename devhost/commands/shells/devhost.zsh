#compdef devhost
# Completion of devhost for zsh. Source this, or install it as _devhost in a folder of fpath.
_devhost() {
  local line tab=$'\t'
  local -a meant described
  meant=("${(@Q)words[2,CURRENT-1]}")
  if [[ $PREFIX == --*=* ]]; then
    meant+=("${PREFIX%%=*}" "=")
    compset -P '*='
  fi
  meant=("${(@)meant/#\~\//$HOME/}" "${(Q)PREFIX}")
  for line in "${(@f)$("${words[1]/#\~\//$HOME/}" __complete "${meant[@]}" 2>/dev/null)}"; do
    case $line in
      :files) _files ;;
      :folders) _files -/ ;;
      ?*) described+=("${${line%%$tab*}//:/\\:}:${line#*$tab}") ;;
    esac
  done
  (( ${#described} )) && _describe devhost described
}
if [[ ${funcstack[1]} == _devhost ]]; then
  _devhost "$@"
else
  compdef _devhost devhost
fi
