#!/usr/bin/env bash
# Installs what is missing, builds, makes test pictures in four file formats and runs two recipes:
# one that replays the pictures, and one that grabs from an emulated camera with a chunk pin and an
# event pin: demo.sh [FOLDER], an empty or a new one. Ends with where to look.
set -euo pipefail
(($# <= 1)) || { echo "demo.sh takes one folder at most, found: $*" >&2; exit 2; }
folder=${1:+$(realpath -m -- "$1")}  # before the folder changes
cd "$(dirname "$0")/.."

# What an earlier demo has made goes; what anybody else has made stays.
mark=.made-by-demo
if [[ -n $folder && -d $folder && ! -e $folder/$mark && -n $(ls -A -- "$folder") ]]; then
  echo "demo.sh: $folder has files that no demo has made; give it a new folder" >&2
  exit 1
fi
folder=${folder:-demo-output}

scripts/setup.sh
scripts/build.sh release orlix orlix-camsim demoimages contactsheet OrlixVCellPackageBase
bin=build/release/bin

rm -rf "$folder"/{images,results,recipe.json,contact-sheet.png,camera-recipe.json,camera-results}
mkdir -p "$folder"
touch "$folder/$mark"
$bin/demoimages "$folder"
echo
echo "Running $folder/recipe.json: ImageLoading at 25 frames per second, then ImageFormatConverter"
$bin/orlix run "$folder/recipe.json" --frames 12 --out "$folder/results"
$bin/contactsheet "$folder/results" -o "$folder/contact-sheet.png"
echo
echo "Running $folder/camera-recipe.json: an emulated Camera at 25 frames per second, then"
echo "ImageFormatConverter; the last line has the run's statistics"
$bin/orlix run "$folder/camera-recipe.json" --emulated-cameras 1 --frames 12 \
  --out "$folder/camera-results" --json
echo
echo "Look at:"
echo "  $folder/contact-sheet.png       inputs beside outputs"
echo "  $folder/results/                the converted pictures"
echo "  $folder/results/values.jsonl    the path and the run number of each"
echo "  $folder/recipe.json             the recipe; change it and run it again with"
echo "      $bin/orlix run $folder/recipe.json --frames 12 --out $folder/results"
echo "  $folder/camera-results/         the camera's pictures, demosaiced, and in values.jsonl the"
echo "                                  exposure time of each frame and the end of each exposure"
echo "  $folder/camera-recipe.json      its recipe; run it again with"
echo "      $bin/orlix run $folder/camera-recipe.json --emulated-cameras 1 --frames 12 --out $folder/camera-results"
