#!/usr/bin/env bash
# Configures and builds into DIR (default build/); further arguments go to cmake.
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${1:-build}
shift || true
cmake -S . -B "$dir" -G Ninja "$@" >/dev/null
cmake --build "$dir"
