#!/usr/bin/env bash
# Installs what is needed, builds and runs the whole test suite, then again under
# AddressSanitizer and UndefinedBehaviorSanitizer. The benchmarks and the fuzz targets (as
# programs replaying their seeds, a test each) are built in the first tree only; the
# sanitizer tree builds what its tests run. Both trees compile through ccache,
# whose cache (ccache's own folder, kept between runs) also serves other checkouts: paths are
# hashed relative to the top of the checkout. Ends with the wall time of each stage.
set -euo pipefail
cd "$(dirname "$0")/.."

stages=()
started=$SECONDS
stage_done() {
  stages+=("$(printf '%-18s %4d:%02d' "$1" $(((SECONDS - started) / 60)) $(((SECONDS - started) % 60)))")
  started=$SECONDS
}
print_stages() {
  local status=$?
  echo "== Stage times (min:s)"
  ((${#stages[@]} == 0)) || printf '   %s\n' "${stages[@]}"
  return $status
}
trap print_stages EXIT

scripts/install-deps.sh
stage_done install

export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=true
cache=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
jobs=$(nproc)

scripts/build.sh build "${cache[@]}"
stage_done "plain build"
ctest --test-dir build --output-on-failure -j "$jobs"
stage_done "plain tests"

scripts/build.sh build-sanitize "${cache[@]}" -DCMAKE_BUILD_TYPE=Debug -DSTOWHAVEN_SANITIZE=ON \
  -DSTOWHAVEN_BENCH=OFF -DSTOWHAVEN_FUZZ_REPLAY=OFF
stage_done "sanitizer build"
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --test-dir build-sanitize --output-on-failure -j "$jobs"
stage_done "sanitizer tests"
