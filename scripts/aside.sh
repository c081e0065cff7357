# Sourced by scripts that start other programs. No such program outlives the script, however it ends.
aside_processes=()
# Seconds between SIGTERM and SIGKILL.
aside_timeout=10

# Starts a program that ends with this script: by the trap below, or by the kernel if the script is killed. It
# gets its own process group, so that its children end with it.
aside() {
  setpriv --pdeathsig TERM setsid "$@" &
  aside_processes+=("$!")
}

# Waits for a process to end, at most this many seconds.
await_end() {
  setpriv --pdeathsig TERM timeout "$2" tail --sleep-interval=0.1 --pid="$1" --follow /dev/null &
  wait "$!" || true
}

end_asides() {
  local process
  for process in "${aside_processes[@]}"; do
    kill -TERM -- "-$process" 2>/dev/null || true
  done
  for process in "${aside_processes[@]}"; do
    await_end "$process" "$aside_timeout"
    kill -KILL -- "-$process" 2>/dev/null || true
    wait "$process" 2>/dev/null || true
  done
}

# A script may define `clean_up`, which runs after all of its programs have ended.
end_script() {
  trap '' HUP INT TERM
  end_asides
  ! declare -F clean_up >/dev/null || clean_up
}

trap end_script EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM
