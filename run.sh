#!/usr/bin/env bash
# Shows the main job against the stand-in service: a parent signs up, a child's device is enrolled and protected, and
# what it asks for is on the parent's screen. With a display it opens a parent's and a child's window side by side;
# without one it walks the same journey offscreen and leaves a picture of each step in out/pictures/.
# ./run.sh --demo starts with a family that has children, devices and traffic.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
scripts/install-packages

sandbox_options=(--seed empty)
for option in "$@"; do
  case $option in
    --demo) sandbox_options=(--seed demo --traffic) ;;
    *) echo "usage: ./run.sh [--demo]" >&2; exit 2 ;;
  esac
done

echo "Building (the first time takes a few minutes; build-run.log tells) …"
{
  cmake --preset release && cmake --build --preset release -j "$(nproc)" \
    --target quillmar quillmar-browse quillmar-sandbox quillmar-pictures quillmar-walk
} >build-run.log 2>&1 || { tail -40 build-run.log; exit 1; }
programs=$PWD/build/release/programs
sandbox=$PWD/build/release/sandbox/quillmar-sandbox

work=$(mktemp -d)
coproc SERVICE { exec "$sandbox" --port 0 --tls-port 0 --memory "${sandbox_options[@]}"; }
service_pid=$SERVICE_PID
trap 'kill "$service_pid" $(jobs -p) 2>/dev/null || true; rm -rf "$work"' EXIT
read -r -u "${SERVICE[0]}" addresses
url=$(grep -o 'http://[^ ]*' <<<"$addresses")
secure_url=$(grep -o 'https://[^ ]*' <<<"$addresses")
ca_file=$(grep -o 'ca=[^ ]*' <<<"$addresses" | cut -d= -f2-)
echo "The stand-in service runs at $url and $secure_url."

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  cat <<TEXT

Two windows open.
  1. In one, choose "I'm a Parent" and a region, then "Sign Up" and make an account (or, with --demo, sign in as the
     line above says). Add a child.
  2. In the other, choose "I'm a Child" and tap "Start Enrollment". A QR code comes up.
  3. In the parent's window tap "Add Device", "Phone or Tablet" and "Read From Screen" (or take a picture of the code
     and choose or paste it). Complete the enrollment.
  4. Within five seconds the child's window asks about the tunnel, and is protected once you allow it.
  5. Tap the child's card in the parent's window: what the child's device asks for is there, and can be blocked.

Close the parent's window, or press Ctrl-C, to end.

TEXT
  open_window() {
    "$programs/quillmar/quillmar" --data-dir "$work/$1" --service "$secure_url" --ca-file "$ca_file" --simulate-tunnel
  }
  open_window child >"$work/child.log" 2>&1 &
  "$programs/walk/quillmar-browse" --data-dir "$work/child" --ca-file "$ca_file" &
  open_window parent >"$work/parent.log" 2>&1
else
  echo "There is no display, so this is the journey offscreen:"
  "$programs/walk/quillmar-walk" --service "$secure_url" --ca-file "$ca_file" out/pictures
  echo "Every screen in each of its states:"
  "$programs/pictures/quillmar-pictures" out/pictures
  echo "$(find out/pictures -name '*.png' | wc -l) pictures are in out/pictures/."
fi
