#pragma once

#include "flows/SelectionList.h"
#include "items/AlbumTotals.h"

namespace stowhaven {

// The albums of the photo library for a backup, or of the current session for a restore
// (the direction the user works in when it is made, gIsBackupMode), with their photos and
// their videos chosen apart: one list per side, the photos' shown first. The selection
// stays in the albums. Used on the main queue.
class PhotoVideoViewController {
public:
    PhotoVideoViewController();

    bool backupMode() const { return backupMode_; }
    const AlbumTotals::Albums& albums() const { return albums_; }
    bool showsPhotos() const { return showsPhotos_; }
    void showPhotos(bool photos) { showsPhotos_ = photos; }
    // The list of the side on show, or of the side asked for.
    SelectionList& list() { return list(showsPhotos_); }
    SelectionList& list(bool photos) { return photos ? photos_ : videos_; }
    const SelectionList& list(bool photos) const { return photos ? photos_ : videos_; }

    // Both sides kept as the defaults of the direction ("Photos_Backup", "Videos_Restore"...):
    // the names of the chosen albums, none when every album with something to take is chosen.
    void saveAsDefault() const;

private:
    bool backupMode_;
    AlbumTotals::Albums albums_;
    SelectionList photos_;
    SelectionList videos_;
    bool showsPhotos_ = true;
};

}  // namespace stowhaven
