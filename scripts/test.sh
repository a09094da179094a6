#!/usr/bin/env bash
# Installs what is missing, builds, runs the tests: test.sh [PRESET [CTEST ARGUMENTS...]]
set -euo pipefail
cd "$(dirname "$0")/.."

preset=${1:-release}
shift || true
scripts/setup.sh
scripts/build.sh "$preset"
ctest --preset "$preset" -j "$(nproc)" "$@"
