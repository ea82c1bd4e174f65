#!/usr/bin/env bash
# Installs what is needed, builds, makes the demo device and runs the main job on it.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build -G Ninja >/dev/null
cmake --build build --target stowhaven
rm -rf demo-device
scripts/make-device demo-device
build/stowhaven --root demo-device settings AutoScanPkgEnabled true
build/stowhaven --root demo-device status
