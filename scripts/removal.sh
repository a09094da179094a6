#!/usr/bin/env bash
# Repeats every scene of a camera that vanishes (idle, during acquisition, stop, release, allocation
# and destruction) under the thread sanitizer: removal.sh [ROUNDS]. The tests run a short form.
set -euo pipefail
cd "$(dirname "$0")/.."

rounds=${1:-100}
scripts/build.sh tsan orlixvcellpackagebase_test
ORLIX_REMOVAL_ROUNDS=$rounds build/tsan/bin/orlixvcellpackagebase_test \
  --gtest_filter='CameraRemoval*:CameraDeviceRemoval*'
