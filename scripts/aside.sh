# For a script to source that runs programs beside itself: none of them outlives it, however it ends.
aside_processes=()
# How long a program may take to end when it is told to, in seconds.
aside_patience=10

# Starts a program that ends with this script: by the trap below, or by the kernel where nothing could be trapped. Its
# group is its own, so that what it has started goes with it.
aside() {
  setpriv --pdeathsig TERM setsid "$@" &
  aside_processes+=("$!")
}

# Waits for the end of a process for so many seconds at most.
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
    await_end "$process" "$aside_patience"
    kill -KILL -- "-$process" 2>/dev/null || true
    wait "$process" 2>/dev/null || true
  done
}

# Whoever wants more done at the end defines `clean_up`: by then nobody writes anywhere any more.
end_script() {
  trap '' HUP INT TERM
  end_asides
  ! declare -F clean_up >/dev/null || clean_up
}

trap end_script EXIT
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM
