#!/usr/bin/env bash
# Shows the main job: a child's device from its first tap to a protected screen, against the stand-in service.
# With a display it opens the child's window; without one it walks the same journey offscreen and leaves a picture of
# each step in out/pictures/.
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
    --target quillmar quillmar-sandbox quillmar-pictures quillmar-walk
} >build-run.log 2>&1 || { tail -40 build-run.log; exit 1; }
programs=$PWD/build/release/programs
sandbox=$PWD/build/release/sandbox/quillmar-sandbox

work=$(mktemp -d)
coproc SERVICE { exec "$sandbox" --port 0 --tls-port 0 --memory "${sandbox_options[@]}"; }
service_pid=$SERVICE_PID
trap 'kill "$service_pid" 2>/dev/null || true; rm -rf "$work"' EXIT
read -r -u "${SERVICE[0]}" addresses
url=$(grep -o 'http://[^ ]*' <<<"$addresses")
secure_url=$(grep -o 'https://[^ ]*' <<<"$addresses")
ca_file=$(grep -o 'ca=[^ ]*' <<<"$addresses" | cut -d= -f2-)
echo "The stand-in service runs at $url and $secure_url."
approve="$sandbox approve --port ${url##*:}"

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  cat <<TEXT

In the window: choose "I'm a Child" and tap "Start Enrollment".
Then be the parent, in another terminal (CODE is the one on the screen):

    $approve CODE

Within five seconds the window asks about the tunnel and then shows the protection. Close the service with Ctrl-C.

TEXT
  "$programs/quillmar/quillmar" --data-dir "$work/child" --service "$secure_url" --ca-file "$ca_file" --simulate-tunnel
else
  echo "There is no display, so this is the journey offscreen:"
  "$programs/walk/quillmar-walk" --service "$secure_url" --ca-file "$ca_file" --approve "$approve" out/pictures
  echo "Every screen in each of its states:"
  "$programs/pictures/quillmar-pictures" out/pictures
  echo "$(find out/pictures -name '*.png' | wc -l) pictures are in out/pictures/."
fi
