# Completion of quarlo, kyrtool and tapetool.                                             -*- shell-script -*-

_quarlo_words() { COMPREPLY=($(compgen -W "$1" -- "$cur")); }

# The variables of a job, as NAME=
_quarlo_variables() { quarlo --jobs 2>/dev/null | awk -F '[:=]' -v job="$1" '/^[^ ]/ { on = $1 == job } /^ +[a-z-]+=/ && on { print $1 "=" }'; }

_quarlo() {
  local cur prev words cword
  _init_completion -n = || return
  case $prev in
    --script) _filedir qs; return ;;
    --job) _quarlo_words "$(quarlo --jobs 2>/dev/null | awk -F: '/^[^ ]/ { print $1 }')"; return ;;
    -display | -geometry | -xrm) return ;;
  esac
  case $cur in
    *=*) cur=${cur#*=}; _filedir; return ;;
    -*) _quarlo_words "--script --headless --jobs --job --show --from-menu --help --version -display -geometry"; return ;;
  esac
  local at
  for ((at = 1; at < cword; ++at)); do
    if [ "${words[at]}" = --job ]; then
      _quarlo_words "$(_quarlo_variables "${words[at + 1]}")"
      compopt -o nospace
      return
    fi
  done
  _filedir '@(tpf|tap|kyr|idx|sgy|segy|sgd|segd)'
}

_quarlo_tool() {
  local cur prev words cword
  _init_completion || return
  if [ "$cword" -gt 1 ]; then
    _filedir
  elif [ "${1##*/}" = kyrtool ]; then
    _quarlo_words "info check headers dump make record raw set kill revive property"
  else
    _quarlo_words "make-drive insert eject blank sample badblock list compare"
  fi
}

complete -F _quarlo quarlo
complete -F _quarlo_tool kyrtool tapetool
