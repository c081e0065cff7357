# bash completion for quillmar-agent(1)

# The command among the words before the cursor; nothing where there is none yet.
_quillmar_agent_command() {
  local index
  for ((index = 1; index < COMP_CWORD; ++index)); do
    case ${COMP_WORDS[index]} in
      --data-dir | --service | --ca-file) ((++index)) ;;
      -*) ;;
      *) echo "${COMP_WORDS[index]}" && return ;;
    esac
  done
}

_quillmar_agent() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words=--help
  COMPREPLY=()
  case $before in
    --data-dir) mapfile -t COMPREPLY < <(compgen -d -- "$word") && compopt -o filenames 2>/dev/null; return ;;
    --ca-file) mapfile -t COMPREPLY < <(compgen -f -- "$word") && compopt -o filenames 2>/dev/null; return ;;
    --service) return ;;
  esac
  case $(_quillmar_agent_command) in
    '') words+=' --data-dir --service --ca-file --simulate-tunnel --version enroll run status sync reset doctor' ;;
    enroll) words+=' --autostart' ;;
    run) words+=' --verbose' ;;
    status) words+=' --json' ;;
    reset) words+=' --yes' ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -F _quillmar_agent quillmar-agent
