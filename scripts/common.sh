# SPDX-License-Identifier: Apache-2.0
#
# What the scripts share. To be sourced; leaves the shell in the tree's root.

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

jobs=$(nproc)
readonly jobs

say() { printf '==> %s\n' "$*"; }

die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# configure PRESET [OPTION...] - makes build/PRESET ready to build in; quiet unless it fails.
configure() {
  local preset=$1 log
  shift
  mkdir -p "build/$preset"
  log=build/$preset/configure.log
  cmake --preset "$preset" "$@" >"$log" 2>&1 || {
    cat "$log" >&2
    return 1
  }
}

# build PRESET [TARGET...] - builds all, or the targets.
build() {
  local preset=$1 targets=()
  shift
  (($# == 0)) || targets=(--target "$@")
  cmake --build "build/$preset" --parallel "$jobs" "${targets[@]}"
}

# build_programs PROGRAM... - installs what is missing and builds programs of the release preset in a
# few lines of output. A fresh tree is configured without tests, whose packages it then does not need.
build_programs() {
  local options=() log=build/release/build.log
  [[ -f build/release/CMakeCache.txt ]] || options=(-DNIMBO_TESTS=OFF -DNIMBO_BENCHMARKS=OFF)
  scripts/install-deps run
  say "building $* in build/release"
  configure release "${options[@]}"
  build release "$@" >"$log" || {
    cat "$log" >&2
    die "the build failed"
  }
}

# How nimbo exits when it did what it was asked and some device reports a failure of its own.
readonly device_failure=3

# nimbo ARGUMENT... - fails only if nothing could be done.
nimbo() {
  say "nimbo $*"
  local status=0
  build/release/tools/nimbo "$@" || status=$?
  ((status == device_failure)) || return "$status"
}
