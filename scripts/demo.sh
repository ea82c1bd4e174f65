#!/usr/bin/env bash
# Installs what is needed, builds, makes the demo device and runs the main job on it.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build -G Ninja >/dev/null
cmake --build build --target stowhaven
rm -rf demo-device
scripts/make-device demo-device
for setting in AutoScanPkgEnabled AutoScanStockAppsEnabled AutoScanAppStoreAppsEnabled AutoScanOtherOptionsEnabled; do
  build/stowhaven --root demo-device settings "$setting" true
done
build/stowhaven --root demo-device status
build/stowhaven --root demo-device backup --yes --title "Demo backup"
build/stowhaven --root demo-device history
