#!/usr/bin/env bash
# Kills and restarts a simulated camera in mid-stream again and again: camera-kills.sh [KILLS [PRESET]]
# Prints how soon that was noticed and what the host kept. Fails if one kill is noticed later than a
# second, if descriptors or threads are left, if memory grows from the tenth kill on (which takes
# twenty kills to judge), or if the run ends with an error. Needs network namespaces and a build.
set -euo pipefail
cd "$(dirname "$0")/.."
# shellcheck source=scripts/own-network.sh
source scripts/own-network.sh

kills=${1:-100}
bin=$PWD/build/${2:-release}/bin
[[ $kills =~ ^[1-9][0-9]*$ ]] ||
  { echo "camera-kills.sh: '$kills' is no number of kills from 1 on" >&2; exit 2; }
enter_own_network "$@"

latest=1000       # milliseconds until a kill is noticed
first_judged=10   # kills that may leave memory behind: what is made once, and pools
memory_noise=1024 # kB between the medians of the first and the last ten kills that are judged

work=$(mktemp -d)
camera=
run=
# shellcheck disable=SC2317  # called by the trap
cleanup() {
  [[ -z $camera ]] || kill -9 "$camera" 2>/dev/null || true
  [[ -z $run ]] || kill "$run" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
fail() {
  echo "camera-kills.sh: $1" >&2
  exit 1
}

# Returns when it can be found.
start_camera() {
  exec {camera_says}< <(exec "$bin/orlix-camsim" --address 127.0.0.1 --serial K1)
  camera=$!
  read -r -t 30 -u "$camera_says" _ || fail "the camera doesn't start"
}
kill_camera() {
  kill -9 "$camera"
  exec {camera_says}<&-
}
await_frames() {
  local statistics
  for ((step = 0; step < 300; ++step)); do
    kill -USR1 "$camera"
    read -r -t 30 -u "$camera_says" statistics || break
    [[ $statistics == *'"frames": 0,'* ]] || return 0
    sleep 0.1
  done
  fail "no frames after kill $((kill_number - 1))"
}
microseconds() { now=${EPOCHREALTIME/[.,]/}; }
# Reads the log up to a line with that text.
await() {
  local line
  while read -r -t 30 -u "$log" line; do
    echo "$line" >>"$work/log"
    [[ $line != *"$1"* ]] || return 0
  done
  tail -n 5 "$work/log" >&2
  fail "no line '$1' after kill $kill_number"
}
# What has come without a kill must not be taken for the notice of the next one.
expect_no_loss() {
  local line
  while read -r -t 0.3 -u "$log" line; do
    echo "$line" >>"$work/log"
    [[ $line != *'Device has been removed'* ]] ||
      fail "the camera was lost without a kill, after kill $((kill_number - 1))"
  done
  kill -0 "$run" 2>/dev/null || fail "the run has ended"
}
list_descriptors() { find "/proc/$run/fd" -mindepth 1 -printf '%f %l\n' | sort -n; }
descriptors() { find "/proc/$run/fd" -mindepth 1 | wc -l; }
threads() { find "/proc/$run/task" -mindepth 1 -maxdepth 1 | wc -l; }
memory() { awk '/^RssAnon/ {print $2}' "/proc/$run/status"; }
median() { sort -n | awk '{value[NR] = $1} END {print value[int((NR + 1) / 2)]}'; }
# Until nothing has come or gone for five seconds: a lost camera is taken down in the background,
# which takes some seconds.
await_calm() {
  local counts= before= calm=0
  for ((step = 0; step < 300 && calm < 50; ++step)); do
    sleep 0.1
    before=$counts
    counts="$(descriptors) $(threads)"
    [[ $counts == "$before" ]] && calm=$((calm + 1)) || calm=0
  done
}
await_level() {
  for ((step = 0; step < 300; ++step)); do
    (($(descriptors) > early_descriptors || $(threads) > early_threads)) || return 0
    sleep 0.1
  done
}

kill_number=0
mkfifo "$work/pipe"
cat >"$work/recipe.json" <<'JSON'
{"version": 1, "nodes": [{"name": "Camera", "type": "Camera", "settings": {}}], "connections": []}
JSON
start_camera
# Each kill makes threads, and each new thread may begin a heap of its own until there are enough of
# them: with one heap for all, what is kept shows.
MALLOC_ARENA_MAX=1 "$bin/orlix" run "$work/recipe.json" --emulated-cameras 0 --recover --json \
  >"$work/report" 2>"$work/pipe" &
run=$!
exec {log}<"$work/pipe"

longest=0
sum=0
late=0
for ((kill_number = 1; kill_number <= kills; ++kill_number)); do
  await_frames
  expect_no_loss
  memory >>"$work/memory"
  microseconds && begin=$now
  kill_camera
  await 'Device has been removed'
  microseconds && took=$(((now - begin) / 1000))
  sum=$((sum + took))
  ((took <= longest)) || longest=$took
  ((took <= latest)) || late=$((late + 1))
  start_camera
  await 'has a device again'
  if ((kill_number == 1)); then # what is made once, at the first loss, stays
    await_frames
    await_calm
    early_descriptors=$(descriptors)
    early_threads=$(threads)
    list_descriptors >"$work/early"
  fi
done
expect_no_loss
await_level
list_descriptors >"$work/late"
late_descriptors=$(descriptors)
late_threads=$(threads)
kill -INT "$run"
wait "$run" || fail "the run ended with exit code $?"
run=

echo "$kills kills: noticed after $((sum / kills)) ms on average and $longest ms at most"
echo "descriptors: $early_descriptors before, $late_descriptors after; threads: $early_threads, $late_threads"
failed=0
complain() {
  echo "camera-kills.sh: $1" >&2
  failed=1
}
((late == 0)) || complain "$late kills were noticed later than $latest ms"
if ((late_descriptors > early_descriptors)); then
  complain "descriptors are left"
  diff "$work/early" "$work/late" >&2 || true
fi
((late_threads <= early_threads)) || complain "threads are left"
if ((kills >= 2 * first_judged)); then
  early_memory=$(sed -n "$first_judged,$((2 * first_judged - 1))p" "$work/memory" | median)
  late_memory=$(tail -n "$first_judged" "$work/memory" | median)
  echo "memory: $early_memory kB around kill $((first_judged + first_judged / 2)), $late_memory kB at the end"
  ((late_memory <= early_memory + memory_noise)) || complain "memory grows"
fi
exit $failed
