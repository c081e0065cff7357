#!/usr/bin/env bash
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

usage="usage: ./test.sh [quick | --packages]
Installs what is missing, builds, and passes all tests. At the end it says what took how long.

  quick       leave out the sanitizers, the portable build and the linter
  --packages  make the Debian packages instead, and install, upgrade, run and remove them in a fresh Debian
  --help      show this and end"

selection=all
for option in "$@"; do
  case $option in
    quick) selection=quick ;;
    --packages) selection=packages ;;
    --help) echo "$usage"; exit ;;
    *) printf 'test.sh: there is no option “%s”.\n%s\n' "$option" "$usage" >&2; exit 2 ;;
  esac
done

if [ "$selection" = packages ]; then
  scripts/install-packages --packages
  exec scripts/check-packages
fi
scripts/install-packages

jobs=$(nproc)
began=$EPOCHSECONDS
builds=()
stages=()
export CTEST_OUTPUT_ON_FAILURE=1 QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software

stage() {
  stages+=("$SECONDS $1")
  printf '\n== %s (%s s so far)\n' "$1" "$SECONDS"
}

# A preset, and what is built of it: without targets, all.
build() {
  stage "$1: build"
  cmake --preset "$1" >build-"$1".log 2>&1 || { cat build-"$1".log; return 1; }
  cmake --build --preset "$1" -j "$jobs" ${2:+--target "${@:2}"} >>build-"$1".log 2>&1 || { tail -60 build-"$1".log; return 1; }
}

build_and_test() {
  build "$1"
  builds+=("build/$1")
  stage "$1: test"
  ctest --test-dir "build/$1" -j "$jobs" --no-tests=error --output-junit tests.xml
}

# A stage lasts until the next one begins. The last line marks the end.
print_times() {
  printf '%s\n' "${stages[@]}" |
    awk 'NR > 1 { printf "  %6d s  %s\n", $1 - began, name } { began = $1; $1 = ""; name = substr($0, 2) }'
  scripts/slowest "$began" "${builds[@]}"
}

stage "Format"
scripts/check-format
build_and_test release
if [ "$selection" = all ]; then
  # Here a test is a whole program: print its failures alone, or its passed tests push them out of sight.
  export GTEST_BRIEF=1
  build_and_test asan
  build_and_test tsan
  # Only built: their tests are among those of the release build. Both compile each source by itself, which finds what
  # a source fails to include; the second only what the first leaves out, without the window.
  build portable
  build debug quillmar_control quillmar_doctor quillmar_agent_core quillmar_tunnel_resolver quillmar_tunnel_core \
    quillmar_tunnel_link quillmar_tunnel_service
  stage "Lint"
  scripts/lint
fi
stage "All passed"
print_times
