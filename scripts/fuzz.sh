#!/usr/bin/env bash
# Runs the fuzz programs side by side: fuzz.sh [SECONDS [SEED]], half an hour if not said. A finding
# is left in build/fuzz/findings and ends the script with an error. What was learned stays in
# build/fuzz/corpus for the next run; with a seed, the run begins afresh and does the same each time.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-1800}
seed=${2:-0}
programs=(description formula camsim event)
ORLIX_EXTRA_PACKAGES="clang libclang-rt-14-dev" scripts/setup.sh
scripts/build.sh fuzz "${programs[@]/%/fuzz}"

mkdir -p build/fuzz/findings
pids=()
for program in "${programs[@]}"; do
  corpus=build/fuzz/corpus/$program
  ((seed == 0)) || { corpus=build/fuzz/seeded/$program && rm -rf "$corpus"; }
  mkdir -p "$corpus"
  "build/fuzz/bin/${program}fuzz" "$corpus" "fuzz/seeds/$program" -seed="$seed" \
    -dict="fuzz/$program.dict" -max_total_time="$seconds" -max_len=8192 -timeout=120 \
    -rss_limit_mb=4096 -artifact_prefix="build/fuzz/findings/$program-" -print_final_stats=1 \
    >"build/fuzz/$program.log" 2>&1 &
  pids+=($!)
done

failed=0
for i in "${!programs[@]}"; do
  if wait "${pids[i]}"; then
    grep -E 'number_of_executed_units' "build/fuzz/${programs[i]}.log" |
      sed "s/^/${programs[i]}: /"
  else
    tail -n 40 "build/fuzz/${programs[i]}.log" >&2
    echo "fuzz.sh: a finding of ${programs[i]}fuzz, see build/fuzz/findings" >&2
    failed=1
  fi
done
exit $failed
