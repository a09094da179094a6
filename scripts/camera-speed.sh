#!/usr/bin/env bash
# Frames a second and processor time of this library and of a bare loop on Aravis, in turns on the same
# simulated camera: camera-speed.sh [SECONDS [ROUNDS]]. Needs network namespaces and a build.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-5}
rounds=${2:-3}
bin=$PWD/build/release/bin
if [[ -z ${ORLIX_OWN_NETWORK:-} ]]; then
  ORLIX_OWN_NETWORK=1 exec unshare -Urn "$0" "$@"
fi
# The namespace begins without any network.
python3 - <<'PY'
import fcntl, socket, struct
control = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
fcntl.ioctl(control, 0x8914, struct.pack("16sH14s", b"lo", 0x49, b""))  # up and running
PY

for size in '1280 1024' '2048 2048'; do
  for ((round = 0; round < rounds; ++round)); do
    for way in bare orlix; do
      "$bin/orlix-camsim" --address 127.0.0.1 --link-speed 0 >/dev/null &
      camera=$!
      sleep 1
      # shellcheck disable=SC2086
      "$bin/networkcamera_benchmark" "$way" $size 8000 "$seconds"
      kill "$camera"
      wait "$camera" || true
    done
  done
done
