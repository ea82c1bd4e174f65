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
# A change on the device: a tweak removed, the notes gone.
dpkg --root=demo-device --admindir=demo-device/var/lib/dpkg --remove com.fuyuchi.flex2
rm -f demo-device/var/mobile/Library/Notes/notes.sqlite
build/stowhaven --root demo-device restore --yes --log com.fuyuchi.flex2
ls -l demo-device/var/mobile/Library/Notes/notes.sqlite
