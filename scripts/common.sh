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
