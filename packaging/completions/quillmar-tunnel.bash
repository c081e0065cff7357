# bash completion for quillmar-tunnel(1)

_quillmar_tunnel() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words=--help command= each
  COMPREPLY=()
  case $before in
    --ca-file) mapfile -t COMPREPLY < <(compgen -f -- "$word") && compopt -o filenames 2>/dev/null; return ;;
    --endpoint | --listen) return ;;
  esac
  for each in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $each in run | release | serve) command=$each ;; esac
  done
  case $command in
    '') words+=' --version run release serve' ;;
    run) words+=' --ca-file' ;;
    serve) words+=' --endpoint --listen --ca-file' ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -F _quillmar_tunnel quillmar-tunnel
