#!/usr/bin/env bash
# Installs the Debian packages that the build needs; says nothing when none is missing. Scripts that
# need more of them name those in ORLIX_EXTRA_PACKAGES.
set -euo pipefail

packages=(
  g++ cmake ninja-build ccache pkg-config git python3 clang-format
  zlib1g-dev nlohmann-json3-dev libspdlog-dev libcli11-dev libtbb-dev libhwy-dev
  libjpeg62-turbo-dev libspng-dev libpng-dev libtiff-dev
  libaravis-dev libusb-1.0-0-dev
  libgtest-dev libgmock-dev libbenchmark-dev aravis-tools
  ${ORLIX_EXTRA_PACKAGES:-}
)

missing=()
for package in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
  [[ $status == "install ok installed" ]] || missing+=("$package")
done
((${#missing[@]})) || exit 0

root=()
((EUID == 0)) || root=(sudo)
echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { "${root[@]}" apt-get update -q &&
       "${root[@]}" apt-get install -q -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
  tail -n 20 "$log" >&2
  echo "setup.sh: could not install ${missing[*]}" >&2
  exit 1
fi
