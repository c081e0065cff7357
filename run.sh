#!/usr/bin/env bash
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

usage="usage: ./run.sh [--demo] [--pictures] [--real]
Shows the main job against a stand-in service on this computer: a parent signs up, a child's device is enrolled and
protected, and what it asks for is on the parent's screen, where it can be blocked. Installs and builds what that needs.
With a display it opens a parent's and a child's window side by side. Without one it walks the same journey offscreen
and leaves a picture of each step in out/pictures/.

  --demo      start with a family that has children, devices and traffic
  --pictures  walk the journey offscreen even with a display, and draw every screen in each of its states as well
  --real      walk the journey with a child's computer of its own: NetworkManager, the tunnel program and a service beyond
              its wire, in namespaces. It takes root, and touches nothing of this computer
  --help      show this and end"

seed=(--seed empty)
demo=
pictures=
real=
for option in "$@"; do
  case $option in
    --demo) demo=yes seed=(--seed demo --traffic) ;;
    --pictures) pictures=yes ;;
    --real) real=yes ;;
    --help) echo "$usage"; exit ;;
    *) printf 'run.sh: there is no option “%s”.\n%s\n' "$option" "$usage" >&2; exit 2 ;;
  esac
done

scripts/install-packages
. scripts/aside.sh

build=$PWD/build/release
programs=$build/programs
tools=$build/tools
log=build-run.log
report_seconds=${QUILLMAR_REPORT_SECONDS:-30}

# The count in the last line of progress that ninja has logged.
progress() { grep -oE '^\[[0-9]+/[0-9]+\]' "$log" | tail -n 1 | tr -d '[]' | sed 's|/| of |; s|$| done, |'; }

# Runs a command of the build with its output in the log, and prints its progress from time to time.
build_step() {
  local title=$1 process
  shift
  echo "$title …"
  : >"$log"
  aside "$@" >>"$log" 2>&1
  process=$!
  while await_end "$process" "$report_seconds" && kill -0 "$process" 2>/dev/null; do
    echo "  $title: $(progress)$((SECONDS / 60)) min $((SECONDS % 60)) s so far"
  done
  wait "$process" || { tail -n 40 "$log"; exit 1; }
}

build_targets() {
  local title=$1
  shift
  build_step "Configuring (all that is said meanwhile is in $log)" cmake --preset release
  build_step "$title" cmake --build --preset release -j "$(nproc)" --target "$@"
}

work=$(mktemp -d)
clean_up() { rm -rf "$work"; }

# Root often has none. Qt would then say so, and leave one in /tmp.
if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
  export XDG_RUNTIME_DIR=$work/runtime
  mkdir -m 700 "$XDG_RUNTIME_DIR"
fi

start_service() {
  local addresses line
  mkfifo "$work/addresses"
  exec {addresses}<>"$work/addresses"
  aside "$build/sandbox/quillmar-sandbox" --port 0 --tls-port 0 --memory "${seed[@]}" >"$work/addresses"
  read -r -t 60 -u "$addresses" line || { echo "The stand-in service does not start." >&2; exit 1; }
  secure_url=$(grep -o 'https://[^ ]*' <<<"$line")
  ca_file=$(grep -o 'ca=.*' <<<"$line" | cut -d= -f2-)
  echo "The stand-in service runs at $(grep -o 'http://[^ ]*' <<<"$line") and $secure_url."
}

# Opens a window at its own edge of the screen.
open_window() {
  local side=$1 place=$2
  aside "$programs/quillmar/quillmar" --data-dir "$work/$side" --service "$secure_url" --ca-file "$ca_file" \
    --simulate-tunnel -qwindowtitle "For the $side" -qwindowgeometry "$place" >"$work/$side.log" 2>&1
}

# Browses as the child would, as soon as this window has become the child's.
browse_in() { aside "$tools/browse/quillmar-browse" --data-dir "$work/$1" --ca-file "$ca_file"; }

print_steps() {
  local parent_begins='Then "Sign Up", fill in the form, "Create Account". "Add Your First Child".'
  [ -z "$demo" ] || parent_begins='Then sign in as ann@example.com with the password quillmar-demo.'
  cat <<TEXT

Two windows open: the left one is titled "For the parent", the right one "For the child".
  1. For the parent, choose "I'm a Parent", a region such as "Australia", and "Continue".
     $parent_begins
  2. For the child, choose "I'm a Child" and tap "Start Enrollment". A QR code comes up.
  3. For the parent, tap "Add Device", "Phone or Tablet" and "Read From Screen", with the code in sight. Then
     "Complete Enrollment" and "Done".
  4. Within five seconds the child's window asks about the tunnel, and is protected once you tap "Allow".
  5. For the parent, tap the child's card. What the child's device asks for is there. Choose "Sites Allowed" and draw a
     site to the right, or click it with the right button and choose "Block". From then on it comes up under
     "Sites Blocked".

Close the parent's window, or press Ctrl-C, to end all of it. (The window of a protected child's device goes on out of
sight when it is closed.)

TEXT
}

show_windows() {
  print_steps
  open_window child -20+20
  local child=$!
  open_window parent +20+20
  local parent=$!
  browse_in child
  browse_in parent
  wait -n "$child" "$parent" || { tail -n 5 "$work"/*.log >&2; exit 1; }
}

walk_offscreen() {
  echo "The journey offscreen:"
  aside "$tools/walk/quillmar-walk" --service "$secure_url" --ca-file "$ca_file" out/pictures
  wait "$!"
}

# The walk starts all that it needs, and ends it.
walk_real() {
  local walk=("$tools/walk/quillmar-walk" --real out/pictures)
  build_targets "Building the journey, the tunnel and the stand-in service" quillmar-walk quillmar-agent quillmar-sandbox quillmar-tunnel
  echo "The journey with a computer of its own:"
  if [ "$(id -u)" -eq 0 ]; then
    aside "${walk[@]}"
    wait "$!"
  else
    sudo "${walk[@]}"  # in the foreground, where it can ask for the password
  fi
}

draw_all() {
  build_targets "Building what draws every screen" quillmar-pictures
  echo "Every screen in each of its states:"
  aside "$tools/pictures/quillmar-pictures" out/pictures
  wait "$!"
}

count_pictures() { echo "$(find out/pictures -name '*.png' | wc -l) pictures are in out/pictures/."; }

if [ -n "$real" ]; then
  walk_real
  [ -z "$pictures" ] || draw_all
  count_pictures
elif [ -z "$pictures" ] && [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  build_targets "Building the window and the stand-in service" quillmar quillmar-browse quillmar-sandbox
  start_service
  show_windows
else
  build_targets "Building the journey and the stand-in service" quillmar-walk quillmar-sandbox
  start_service
  walk_offscreen
  [ -z "$pictures" ] || draw_all
  count_pictures
fi
