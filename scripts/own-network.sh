# shellcheck shell=bash
# For scripts that want a network of their own, with nothing but a loopback interface. To be sourced
# by a script of this folder, which then calls:
#     enter_own_network "$@"
# That starts the script anew in a network namespace, or ends it with the reason where the system
# allows none.
enter_own_network() {
  if [[ -z ${ORLIX_OWN_NETWORK:-} ]]; then
    if ! unshare -Urn true 2>/dev/null; then
      echo "${0##*/}: skipped, this system allows no network namespace: 'unshare -Urn true' fails"
      exit 0
    fi
    ORLIX_OWN_NETWORK=1 exec unshare -Urn "scripts/${0##*/}" "$@"
  fi
  # The namespace begins with the interface down, and iproute2 need not be there.
  python3 - <<'PY'
import fcntl, socket, struct
control = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
fcntl.ioctl(control, 0x8914, struct.pack("16sH14s", b"lo", 0x49, b""))  # up and running
PY
}
