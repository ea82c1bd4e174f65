#!/usr/bin/env bash
# Installs what is needed, builds, makes the demo device and runs the main job on it.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build -G Ninja >/dev/null
cmake --build build --target stowhaven
rm -rf demo-device
scripts/make-device demo-device
for setting in AutoScanPkgEnabled AutoScanStockAppsEnabled AutoScanAppStoreAppsEnabled AutoScanOtherOptionsEnabled \
               AutoScanPhotosEnabled AutoScanVideosEnabled; do
  build/stowhaven --root demo-device settings "$setting" true
done
build/stowhaven --root demo-device status
build/stowhaven --root demo-device items | sed -n '/^Albums/,$p'
build/stowhaven --root demo-device backup --yes --title "Demo backup"
build/stowhaven --root demo-device history
# A change on the device: a tweak removed, the notes gone, the album "Work" deleted from the photo library.
dpkg --root=demo-device --admindir=demo-device/var/lib/dpkg --remove com.fuyuchi.flex2
rm -f demo-device/var/mobile/Library/Notes/notes.sqlite
python3 -c 'import sqlite3, sys
with sqlite3.connect(sys.argv[1]) as library:
    library.execute("DELETE FROM Z_ALBUMASSETS WHERE ZALBUM IN (SELECT Z_PK FROM ZGENERICALBUM WHERE ZTITLE = ?)", ("Work",))
    library.execute("DELETE FROM ZGENERICALBUM WHERE ZTITLE = ?", ("Work",))' demo-device/var/mobile/Media/PhotoData/Photos.sqlite
build/stowhaven --root demo-device items | sed -n '/^Albums/,$p'
build/stowhaven --root demo-device restore --yes --log com.fuyuchi.flex2
ls -l demo-device/var/mobile/Library/Notes/notes.sqlite
# The album is back, with its photos and its video.
build/stowhaven --root demo-device items | sed -n '/^Albums/,$p'
