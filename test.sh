#!/usr/bin/env bash
# Installs what is missing, builds, and passes all tests: ./test.sh
# ./test.sh quick leaves out the sanitizers and the linter.
# ./test.sh --packages makes the Debian packages instead, and installs, runs and removes them in a fresh Debian.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
if [ "${1:-}" = --packages ]; then
  scripts/install-packages --packages
  exec scripts/check-packages
fi
scripts/install-packages

jobs=$(nproc)
export CTEST_OUTPUT_ON_FAILURE=1 QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software

stage() { printf '\n== %s (%s s so far)\n' "$1" "$SECONDS"; }

build_and_test() {
  stage "$1: build"
  cmake --preset "$1" >build-"$1".log 2>&1 || { cat build-"$1".log; return 1; }
  cmake --build --preset "$1" -j "$jobs" >>build-"$1".log 2>&1 || { tail -60 build-"$1".log; return 1; }
  stage "$1: test"
  ctest --test-dir "build/$1" -j "$jobs" --no-tests=error
}

stage "Format"
scripts/check-format
build_and_test release
if [ "${1:-}" != quick ]; then
  build_and_test asan
  build_and_test tsan
  stage "Lint"
  scripts/lint
fi
stage "All passed"
