#!/usr/bin/env bash
# Runs the fuzz programs side by side: fuzz.sh [SECONDS], half an hour if not said. A finding is
# left in build/fuzz/findings and ends the script with an error. What was learned stays in
# build/fuzz/corpus for the next run.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-1800}
programs=(description formula)
ORLIX_EXTRA_PACKAGES="clang libclang-rt-14-dev" scripts/setup.sh
scripts/build.sh fuzz "${programs[@]/%/fuzz}"

mkdir -p build/fuzz/findings
pids=()
for program in "${programs[@]}"; do
  mkdir -p "build/fuzz/corpus/$program"
  "build/fuzz/bin/${program}fuzz" "build/fuzz/corpus/$program" "fuzz/seeds/$program" \
    -dict="fuzz/$program.dict" -max_total_time="$seconds" -max_len=8192 -timeout=20 \
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
