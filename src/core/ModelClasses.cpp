#include "core/ModelClasses.h"

#include "core/BackupSession.h"
#include "items/Application.h"
#include "items/ArchivableFolder.h"
#include "items/PhotoVideoAlbum.h"
#include "items/PreferenceFile.h"
#include "items/RepositorySource.h"
#include "items/SHSHBlob.h"
#include "items/SelectableItem.h"
#include "items/WebClip.h"

namespace stowhaven {

const ClassRegistry& modelClasses() {
    static const ClassRegistry classes = [] {
        ClassRegistry registry;
        registry.registerClass("BackupSession", BackupSession::initWithCoder);
        registry.registerClass("SelectableItem", SelectableItem::initWithCoder);
        registry.registerClass("Application", Application::initWithCoder);
        registry.registerClass("RepositorySource", RepositorySource::initWithCoder);
        registry.registerClass("ArchivableFolder", ArchivableFolder::initWithCoder);
        registry.registerClass("PhotoVideoAlbum", PhotoVideoAlbum::initWithCoder);
        registry.registerClass("PreferenceFile", PreferenceFile::initWithCoder);
        registry.registerClass("WebClip", WebClip::initWithCoder);
        registry.registerClass("SHSHBlob", SHSHBlob::initWithCoder);
        return registry;
    }();
    return classes;
}

}  // namespace stowhaven
