#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a short fixed time
# on its seed corpus (fuzz/corpus/<name>, copied so the tree stays clean).
# Any finding fails the step. The run shares FUZZ_TOTAL seconds (default 150)
# among the targets, or FUZZ_SECONDS each, so that the whole step stays under
# 5 minutes; fuzz/long-run.sh is the long run.
set -euo pipefail
cd "$(dirname "$0")/.."
CC=clang CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKORVEX_FUZZ=ON \
  -DKORVEX_BUILD_TESTS=OFF -DKORVEX_BUILD_BENCH=OFF -DKORVEX_BUILD_TOOLS=OFF >/dev/null
cmake --build build-fuzz -j"$(nproc)"
targets=(build-fuzz/fuzz_*)
secs=${FUZZ_SECONDS:-$(( ${FUZZ_TOTAL:-150} / ${#targets[@]} ))}
status=0
for exe in "${targets[@]}"; do
  name=$(basename "$exe"); name=${name#fuzz_}
  work=$(mktemp -d); cp -r fuzz/corpus/"$name"/. "$work"/ 2>/dev/null || true
  dict=(); [ -f fuzz/der.dict ] && dict=(-dict=fuzz/der.dict)
  if ! "$exe" -max_total_time="$secs" -max_len=8192 -artifact_prefix=build-fuzz/ "${dict[@]}" "$work" 2>"$work.log"; then
    echo "FINDING in $name:"; tail -40 "$work.log"; status=1
  else
    echo "$name: $(grep -o 'Done [0-9]* runs' "$work.log")"
  fi
  rm -rf "$work" "$work.log"
done
exit $status
