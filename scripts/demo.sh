#!/usr/bin/env bash
# Installs what is missing, builds, makes test pictures in four file formats and runs the first
# recipe on them: demo.sh [FOLDER]. Ends with where to look.
set -euo pipefail
cd "$(dirname "$0")/.."

folder=${1:-demo-output}
scripts/setup.sh
scripts/build.sh release orlix demoimages contactsheet OrlixVCellPackageBase
bin=build/release/bin

# Only what an earlier demo has made there.
rm -rf "$folder"/{images,results,recipe.json,contact-sheet.png}
$bin/demoimages "$folder"
echo
echo "Running $folder/recipe.json: ImageLoading at 25 frames per second, then ImageFormatConverter"
$bin/orlix run "$folder/recipe.json" --frames 12 --out "$folder/results"
$bin/contactsheet "$folder/results" -o "$folder/contact-sheet.png"
echo
echo "Look at:"
echo "  $folder/contact-sheet.png       inputs beside outputs"
echo "  $folder/results/                the converted pictures"
echo "  $folder/results/values.jsonl    the path and the run number of each"
echo "  $folder/recipe.json             the recipe; change it and run it again with"
echo "      $bin/orlix run $folder/recipe.json --frames 12 --out $folder/results"
