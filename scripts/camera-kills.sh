#!/usr/bin/env bash
# Kills and restarts a simulated camera in mid-stream again and again, and shows how soon that is
# noticed and whether the host keeps memory or descriptors: camera-kills.sh [KILLS [PRESET]]
# Fails if the run ends with an error, or grows. Needs network namespaces and a build.
set -euo pipefail
cd "$(dirname "$0")/.."

kills=${1:-100}
bin=$PWD/build/${2:-release}/bin
if [[ -z ${ORLIX_OWN_NETWORK:-} ]]; then
  if ! unshare -Urn true 2>/dev/null; then
    echo "camera-kills.sh: skipped, this system allows no network namespace"
    exit 0
  fi
  ORLIX_OWN_NETWORK=1 exec unshare -Urn "$0" "$@"
fi
# The namespace begins without any network.
python3 - <<'PY'
import fcntl, socket, struct
control = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
fcntl.ioctl(control, 0x8914, struct.pack("16sH14s", b"lo", 0x49, b""))  # up and running
PY

work=$(mktemp -d)
camera=
run=
cleanup() {
  [[ -z $camera ]] || kill -9 "$camera" 2>/dev/null || true
  [[ -z $run ]] || kill "$run" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT

cat >"$work/recipe.json" <<'JSON'
{"version": 1, "nodes": [{"name": "Camera", "type": "Camera", "settings": {}}], "connections": []}
JSON

start_camera() {
  "$bin/orlix-camsim" --address 127.0.0.1 --serial K1 >/dev/null &
  camera=$!
}
lines() { grep -c "$1" "$work/log" || true; }
# Returns once the log has so many lines of the kind; fails after half a minute.
await() {
  for ((step = 0; step < 3000; ++step)); do
    (($(lines "$1") >= $2)) && return
    kill -0 "$run" 2>/dev/null || break
    sleep 0.01
  done
  echo "camera-kills.sh: no line '$1' number $2:" >&2
  tail -n 5 "$work/log" >&2
  exit 1
}
descriptors() { find "/proc/$run/fd" -mindepth 1 | wc -l; }
memory() { awk '/^VmRSS/ {print $2}' "/proc/$run/status"; }
milliseconds() { date +%s%3N; }

start_camera
sleep 1
"$bin/orlix" run "$work/recipe.json" --emulated-cameras 0 --recover --json \
  >"$work/report" 2>"$work/log" &
run=$!
sleep 3

longest=0
late=0
for ((kill_number = 1; kill_number <= kills; ++kill_number)); do
  begin=$(milliseconds)
  kill -9 "$camera"
  wait "$camera" 2>/dev/null || true
  await 'Device has been removed' "$kill_number"
  took=$(($(milliseconds) - begin))
  ((took <= longest)) || longest=$took
  ((took <= 1000)) || late=$((late + 1))
  start_camera
  await 'has a device again' "$kill_number"
  sleep 0.3
  if ((kill_number == (kills + 4) / 5)); then
    # What the first rounds make stays.
    early_descriptors=$(descriptors)
    early_memory=$(memory)
  fi
done
# What is left of the last camera is taken down in the background.
sleep 12
late_descriptors=$(descriptors)
late_memory=$(memory)
kill -INT "$run"
wait "$run"
run=

echo "$kills kills: noticed after $longest ms at most, $late of them later than a second"
echo "descriptors: $early_descriptors, then $late_descriptors; memory: $early_memory kB, then $late_memory kB"
((late_descriptors <= early_descriptors + 4)) || { echo "the descriptors grow" >&2; exit 1; }
((late_memory <= early_memory * 5 / 4)) || { echo "the memory grows" >&2; exit 1; }
