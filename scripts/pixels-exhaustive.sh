#!/usr/bin/env bash
# Checks the pixel conversion in full: every pair of formats in every width from 1 to 129 and height
# from 1 to 5, with every combination of padding, orientation, alignment and border, whole and in
# strips, random and extreme data, on every instruction set of this machine; and all colours against
# double precision. The build must be there (scripts/build.sh). It takes a quarter of an hour.
# scripts/pixels-exhaustive.sh [PRESET]
set -euo pipefail
cd "$(dirname "$0")/.."

program=build/${1:-release}/bin/orlixcamera_test
[[ -x $program ]] || { echo "pixels-exhaustive.sh: $program is missing; run scripts/build.sh" >&2; exit 1; }
ORLIX_EXHAUSTIVE=1 nice -n 19 "$program" \
  --gtest_filter='All/EverySize.*:AllColours.*:AllYuvColours.*:*SeveralStrips.*'
