#!/usr/bin/env bash
# Long run: every target (or the names given after SECONDS) for SECONDS
# (default 3600) on one core, its corpus kept in build-fuzz/corpus-<name>;
# prints the executions per target.
set -uo pipefail
cd "$(dirname "$0")/.."
secs=${1:-3600}
shift || true
targets=(build-fuzz/fuzz_*)
[ $# -gt 0 ] && targets=("${@/#/build-fuzz/fuzz_}")
for exe in "${targets[@]}"; do
  name=$(basename "$exe"); name=${name#fuzz_}
  mkdir -p build-fuzz/corpus-"$name"; cp -rn fuzz/corpus/"$name"/. build-fuzz/corpus-"$name"/ 2>/dev/null
  "$exe" -max_total_time="$secs" -max_len=8192 -dict=fuzz/der.dict -artifact_prefix=build-fuzz/ \
    build-fuzz/corpus-"$name" 2>build-fuzz/long-"$name".log
  echo "$name: rc=$? $(grep -o 'Done [0-9]* runs in [0-9]* second(s)' build-fuzz/long-"$name".log)"
done
