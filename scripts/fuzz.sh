#!/usr/bin/env bash
# Builds the fuzz targets with clang and libFuzzer, AddressSanitizer and
# UndefinedBehaviorSanitizer, and runs each for SECONDS (default 600) on a seed corpus
# made afresh. Findings stay in build-fuzz/findings/; a finding fails the script.
#   scripts/fuzz.sh [SECONDS] [TARGET...]      targets: fuzz_history_text fuzz_keyed_archive
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-600}
shift || true
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(fuzz_history_text fuzz_keyed_archive)

# libstdc++ 12's <source_location> needs clang 15 or later; Debian 12 has clang 16.
clang=clang++-16
if ! command -v "$clang" >/dev/null || [ ! -e /usr/lib/llvm-16/lib/clang/16/lib/linux/libclang_rt.fuzzer-x86_64.a ]; then
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq clang-16 libclang-rt-16-dev >/dev/null
fi

dir=build-fuzz
scripts/build.sh "$dir" -DCMAKE_CXX_COMPILER="$clang" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DSTOWHAVEN_FUZZ=ON -DSTOWHAVEN_TESTS=OFF -DSTOWHAVEN_BENCH=OFF

rm -rf "$dir/seeds"
"$dir/fuzz/make_fuzz_seeds" "$dir/seeds"
export ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
status=0
for target in "${targets[@]}"; do
  corpus="$dir/corpus/$target"
  findings="$dir/findings/$target"
  mkdir -p "$corpus" "$findings"
  echo "== $target for $seconds s"
  "$dir/fuzz/$target" "$corpus" "$dir/seeds/${target#fuzz_}" -max_total_time="$seconds" -max_len=65536 \
    -timeout=10 -rss_limit_mb=2048 -artifact_prefix="$findings/" -print_final_stats=1 || status=1
done
exit $status
