#!/usr/bin/env bash
# Two emulated cameras with chunk and event pins that are unplugged and plugged in again every two
# seconds: soak.sh [SECONDS]. Fails unless every frame is accounted for, memory stays level after
# the first minute (the first third of a short run), and no thread or descriptor is left.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-600}
[[ $seconds =~ ^[0-9]+$ ]] && ((seconds >= 10)) ||
  { echo "soak.sh: '$seconds' is no number of seconds from 10 on" >&2; exit 2; }
scripts/build.sh release soak
# A warm-up and two waits for idle threads come on top.
result=0
timeout "$((seconds + 120))" build/release/bin/soak "$seconds" || result=$?
((result != 124)) || echo "soak.sh: the run hangs; it was ended after $((seconds + 120)) s" >&2
exit "$result"
