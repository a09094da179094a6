#!/usr/bin/env bash
# Fails if a part of the tree includes what it may not: a header of a part above it, or a private
# header of another part. The one list of the parts is below.
set -euo pipefail
cd "$(dirname "$0")/.."

# Name | folders | how its headers are included | whose headers it may include besides its own
parts='
gcbase                   | include/gcbase src/libs/gcbase                                     | gcbase                   |
genapi                   | include/genapi src/libs/genapi                                     | genapi                   | gcbase
orlixcamera              | include/orlixcamera src/libs/orlixcamera                           | orlixcamera              | gcbase genapi
orlixdataprocessingcore  | include/orlixdataprocessingcore src/libs/orlixdataprocessingcore   | orlixdataprocessingcore  | gcbase genapi orlixcamera
anythingtonodemapadapter | include/anythingtonodemapadapter src/libs/anythingtonodemapadapter | anythingtonodemapadapter | gcbase genapi orlixdataprocessingcore
orlixvcellpackagebase    | include/orlixvcellpackagebase src/plugins/orlixvcellpackagebase    | orlixvcellpackagebase camera imageloading imageformatconverter catalog | gcbase genapi orlixcamera orlixdataprocessingcore anythingtonodemapadapter
transports               | src/transports                                                     | aravis                   | gcbase genapi orlixcamera
orlixhost                | include/orlixhost src/host                                         | orlixhost host           | gcbase genapi orlixcamera orlixdataprocessingcore
orlix                    | apps/orlix                                                         |                          | gcbase genapi orlixdataprocessingcore orlixhost
camsim                   | apps/orlix-camsim                                                  |                          | gcbase genapi orlixcamera
demo                     | apps/demoimages apps/contactsheet                                  |                          | gcbase orlixcamera
examples                 | examples                                                           |                          | gcbase genapi orlixcamera orlixdataprocessingcore orlixhost
'

# Part | private headers of another part that it uses all the same: the simulated camera serves the
# emulated one, with its registers, pictures and events, over the network.
exceptions='
camsim | orlixcamera/emulated/camera.h orlixcamera/emulated/registertable.h orlixcamera/emulated/picture.h orlixcamera/emulated/event.h orlixcamera/emulated/description.h
'

# Part, file, line, quote, header of each include with a folder in its name.
includes() {
  while IFS='|' read -r name folders _; do
    [[ -n $name ]] || continue
    for folder in $folders; do
      [[ -d $folder ]] || continue
      { grep -rnE '^[[:space:]]*#[[:space:]]*include[[:space:]]*["<][^">]+/[^">]+[">]' "$folder" \
          --include='*.h' --include='*.cpp' --include='*.in' || true; } |
        sed -E "s|^([^:]+):([0-9]+):[^\"<]*([\"<])([^\">]+)[\">].*|${name// /} \1 \2 \3 \4|"
    done
  done <<<"$parts"
}

includes | awk -v parts="$parts" -v exceptions="$exceptions" '
  function words(text, into,    list, count, i) {
    count = split(text, list, " ")
    for (i = 1; i <= count; ++i) into[list[i]] = 1
  }
  function isThere(file,    line, found) {
    found = (getline line < file) >= 0
    close(file)
    return found
  }
  function complain(text) { print $2 ":" $3 ": \"" $5 "\" " text; failed = 1 }
  BEGIN {
    count = split(parts, rows, "\n")
    for (i = 1; i <= count; ++i) {
      if (split(rows[i], cells, "|") < 4) continue
      name = cells[1]; gsub(/ /, "", name)
      split("", own); words(cells[3], own)
      for (prefix in own) owner[prefix] = name
      split("", other); words(cells[4], other)
      for (part in other) may[name, part] = 1
    }
    count = split(exceptions, rows, "\n")
    for (i = 1; i <= count; ++i) {
      if (split(rows[i], cells, "|") < 2) continue
      name = cells[1]; gsub(/ /, "", name)
      split("", headers); words(cells[2], headers)
      for (header in headers) excepted[name, header] = 1
    }
  }
  {
    part = $1
    prefix = $5; sub(/\/.*/, "", prefix)
    # Those of the system and of other libraries stand in angle brackets.
    if (!(prefix in owner) && $4 == "<") next
    else if (!(prefix in owner)) complain("is of no part of the list in scripts/check-layers.sh")
    else if (owner[prefix] == part || (part, $5) in excepted) next
    else if (!((part, owner[prefix]) in may)) complain("is of " owner[prefix] ", which " part " may not include")
    else if (!isThere("include/" $5)) complain("is a private header of " owner[prefix])
  }
  END { exit failed }
'
