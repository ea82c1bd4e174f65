#pragma once

#include "backup/CategoryBackupOperation.h"

namespace stowhaven {

// The photo library's two folders, taken whole for photos and for videos alike; each kind
// leaves out caches and the files of the other kind. The chosen albums are prepared first,
// each album's files in a folder of its name, and go into the archive with them.
class MediaBackupOperation : public CategoryBackupOperation {
protected:
    MediaBackupOperation(std::string directoryName, StockDataSet set, std::string zipDir, bool photoOnly);

    void archiveData() override;
    bool zipDataWithCompression(bool compressed) override;

private:
    bool photoOnly_;
};

class PhotosBackupOperation final : public MediaBackupOperation {
public:
    PhotosBackupOperation();
};

class VideosBackupOperation final : public MediaBackupOperation {
public:
    VideosBackupOperation();
};

}  // namespace stowhaven
