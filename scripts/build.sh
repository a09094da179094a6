#!/usr/bin/env bash
# Configures and builds one preset: build.sh [PRESET [TARGET...]]
set -euo pipefail
cd "$(dirname "$0")/.."

preset=${1:-release}
shift || true
if [[ ! -f build/$preset/build.ninja ]]; then
  cmake --preset "$preset" >"/tmp/orlix-configure-$$.log" 2>&1 || {
    cat "/tmp/orlix-configure-$$.log" >&2
    exit 1
  }
  rm -f "/tmp/orlix-configure-$$.log"
fi
cmake --build --preset "$preset" ${1+--target "$@"}
