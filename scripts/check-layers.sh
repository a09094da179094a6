#!/usr/bin/env bash
# Fails if a folder includes from a layer above its own. Lowest layer first.
set -euo pipefail
cd "$(dirname "$0")/.."

layers=(gcbase genapi orlixcamera orlixdataprocessingcore anythingtonodemapadapter
        orlixvcellpackagebase orlixhost)
# The host loads the package at run time and knows its entry points only.
allowed='orlixvcellpackagebase/entrypoints\.h'

folders_of() {
  case $1 in
    orlixvcellpackagebase) echo "include/$1 src/plugins/$1" ;;
    orlixhost) echo "include/$1 src/host" ;;
    *) echo "include/$1 src/libs/$1" ;;
  esac
}

failed=0
for i in "${!layers[@]}"; do
  above=$(IFS='|'; echo "${layers[*]:i+1}")
  [[ -n $above ]] || continue
  # shellcheck disable=SC2046
  found=$(git grep -nE "#include \"($above)/" -- $(folders_of "${layers[i]}") || true)
  if [[ -n $found ]]; then
    echo "${layers[i]} includes from a layer above it:"
    echo "$found"
    failed=1
  fi
done
found=$(git grep -nE '#include "orlixvcellpackagebase/' -- src/host include/orlixhost apps |
        grep -vE "$allowed" || true)
if [[ -n $found ]]; then
  echo "The host includes the package's headers:"
  echo "$found"
  failed=1
fi
found=$(git grep -nE '#include "(orlixdataprocessingcore|anythingtonodemapadapter|orlixhost|host)/' \
          -- src/transports || true)
if [[ -n $found ]]; then
  echo "A transport back end includes from a layer above the camera library:"
  echo "$found"
  failed=1
fi
exit $failed
