#!/usr/bin/env bash
# This library beside a bare loop on Aravis, in turns on the same simulated camera with packets of 8000
# bytes: camera-speed.sh [SECONDS [ROUNDS]]. Prints frame rate, losses and processor time of each run,
# and their ratios beside the goals. Needs network namespaces and a build. On a busy machine the figures
# say nothing, unless camera and programs go before all else: chrt -f 10 scripts/camera-speed.sh
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=scripts/own-network.sh
source scripts/own-network.sh

seconds=${1:-5}
rounds=${2:-3}
bin=$PWD/build/release/bin
[[ $seconds =~ ^[1-9][0-9]*$ && $rounds =~ ^[1-9][0-9]*$ ]] ||
  { echo "camera-speed.sh: SECONDS and ROUNDS are numbers from 1 on" >&2; exit 2; }
enter_own_network "$@"

# One line: the names and numbers of the benchmark.
grab() {
  exec {camera_says}< <(exec "$bin/orlix-camsim" --address 127.0.0.1 --link-speed 0)
  local camera=$!
  read -r -t 30 -u "$camera_says" _
  "$bin/networkcamera_benchmark" "$@"
  kill "$camera"
  wait "$camera" || true
  exec {camera_says}<&-
}

# Sums of each way over all rounds, whose order is mixed so that both meet the same moments.
compare() {
  awk '
    { way = $1
      for (i = 2; i < NF; i += 2) sum[way, $i] += $(i + 1) }
    function lost(way) { return sum[way, "failed"] + sum[way, "unseen"] + sum[way, "timeouts"] }
    function rate(way) { return sum[way, "whole"] / sum[way, "seconds"] }
    function cost(way) { return 1000 * sum[way, "processor"] / sum[way, "whole"] }
    END {
      printf "  frame rate      %6.1f /s  bare %6.1f /s  %6.1f %%  goal 95 %% or more\n",
             rate("orlix"), rate("bare"), 100 * rate("orlix") / rate("bare")
      printf "  frames lost     %6d     bare %6d               goal the same or fewer\n",
             lost("orlix"), lost("bare")
      printf "  processor time  %6.2f ms  bare %6.2f ms  %6.1f %%  goal 105 %% or less, a frame\n",
             cost("orlix"), cost("bare"), 100 * cost("orlix") / cost("bare")
    }'
}

work=$(mktemp)
trap 'rm -f "$work"' EXIT
for task in '1280 1024 8000 0' '2048 2048 8000 60' '2048 2048 8000 0'; do
  read -r width height _ rate <<<"$task"
  echo "$width x $height, $([[ $rate == 0 ]] && echo "as fast as it can" || echo "$rate frames/s"):"
  : >"$work"
  for ((round = 0; round < rounds; ++round)); do
    ways=(bare orlix)
    ((round % 2 == 0)) || ways=(orlix bare)
    for way in "${ways[@]}"; do
      # shellcheck disable=SC2086
      figures=$(grab "$way" $task "$seconds")
      echo "$way $figures" >>"$work"
      echo "  $way $figures"
    done
  done
  compare <"$work"
done
