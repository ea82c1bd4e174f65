#!/usr/bin/env bash
# Installs what is needed, builds and runs the whole test suite, then again under
# AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh

jobs=$(nproc)
scripts/build.sh build
ctest --test-dir build --output-on-failure -j "$jobs"

scripts/build.sh build-sanitize -DCMAKE_BUILD_TYPE=Debug -DSTOWHAVEN_SANITIZE=ON
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --test-dir build-sanitize --output-on-failure -j "$jobs"
