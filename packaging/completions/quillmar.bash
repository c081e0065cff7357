# bash completion for quillmar(1)
_quillmar() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  case $before in
    --data-dir) mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
    --ca-file) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
    --service) return ;;
    *)
      mapfile -t COMPREPLY < <(compgen -W '--data-dir --service --ca-file --sandbox --simulate-tunnel
        --help --help-all --version doctor' -- "$word")
      return
      ;;
  esac
  compopt -o filenames 2>/dev/null
}
complete -F _quillmar quillmar
