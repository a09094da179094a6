#!/usr/bin/env bash
# Runs clang-tidy as .clang-tidy says, which takes some seconds for each file: tidy.sh [FILE...].
# Without files, on the sources that differ from the last commit.
set -euo pipefail
cd "$(dirname "$0")/.."

ORLIX_EXTRA_PACKAGES=clang-tidy scripts/setup.sh
[[ -f build/release/compile_commands.json ]] || cmake --preset release >/dev/null

files=("$@")
((${#files[@]})) || mapfile -t files < <(git diff --name-only --diff-filter=d HEAD -- '*.cpp')
((${#files[@]})) || exit 0
# The build's flags are those of g++, some of which clang does not know.
printf '%s\n' "${files[@]}" |
  xargs -P "$(nproc)" -n 1 clang-tidy -p build/release --quiet \
    --extra-arg=-Wno-unknown-warning-option
