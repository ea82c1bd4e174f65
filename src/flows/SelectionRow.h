#pragma once

#include "core/CydiaFile.h"
#include "core/DataSetSizes.h"
#include "items/Application.h"
#include "items/ArchivableFolder.h"
#include "items/PhotoVideoAlbum.h"
#include "items/RepositorySource.h"
#include "items/SelectableItem.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace stowhaven {

// One line of a selection list. The selection itself stays in the item the line stands
// for, where the backup and the restore read it.
class SelectionRow {
public:
    virtual ~SelectionRow() = default;

    // The name that picks the line on a command line: a package's identifier, an
    // application's bundle folder, a file's path, a source's link...
    virtual std::string key() const = 0;
    // What the list shows, and what a search looks in.
    virtual std::string title() const = 0;
    // The size in megabytes; negative when it means nothing.
    virtual double size() const { return -1; }
    virtual bool isSelected() const = 0;
    virtual void setSelected(bool selected) = 0;
    // What a default list holds for it; nothing for an item that can't stand in one.
    virtual std::optional<std::string> defaultEntry() const { return key(); }
    // Whether a default saved now keeps it.
    virtual bool isKeptInDefault() const { return isSelected(); }
};

// A package, whose flag is the direction's own. A restore never installs a package the
// device has, whatever its default says: such a package, not selected for that reason,
// stays in a restore's default, which then goes on to take it once the device lacks it.
class PackageRow final : public SelectionRow {
public:
    PackageRow(std::shared_ptr<CydiaFile> package, bool backup, bool installed)
        : package_(std::move(package)), backup_(backup), installed_(installed) {}

    std::string key() const override { return package_->packageName().value_or(""); }
    std::string title() const override { return package_->name().value_or(key()); }
    bool isSelected() const override { return backup_ ? package_->isBackupSelected() : package_->isRestoreSelected(); }
    void setSelected(bool selected) override {
        backup_ ? package_->setBackupSelected(selected) : package_->setRestoreSelected(selected);
    }
    bool isKeptInDefault() const override { return isSelected() || (!backup_ && installed_); }
    const std::shared_ptr<CydiaFile>& package() const { return package_; }

private:
    std::shared_ptr<CydiaFile> package_;
    bool backup_;
    bool installed_;
};

// A preference or SpringBoard file, or a source: keyed by what its default list holds.
class ItemRow : public SelectionRow {
public:
    ItemRow(std::shared_ptr<SelectableItem> item, std::string key, std::string title)
        : item_(std::move(item)), key_(std::move(key)), title_(std::move(title)) {}

    std::string key() const override { return key_; }
    std::string title() const override { return title_; }
    double size() const override { return item_->size(); }
    bool isSelected() const override { return item_->isSelected(); }
    void setSelected(bool selected) override { item_->setSelected(selected); }

protected:
    std::shared_ptr<SelectableItem> item_;

private:
    std::string key_;
    std::string title_;
};

// A source of the package manager, which its default list knows by its line's parts.
class SourceRow final : public ItemRow {
public:
    SourceRow(std::shared_ptr<RepositorySource> source, std::string key, std::string title)
        : ItemRow(source, std::move(key), std::move(title)), source_(std::move(source)) {}
    // A source has no size of its own.
    double size() const override { return -1; }
    std::optional<std::string> defaultEntry() const override { return source_->metadataKey(); }

private:
    std::shared_ptr<RepositorySource> source_;
};

// An App Store application: taken with both its folders or with neither. One without a
// bundle identifier can't stand in a default list.
class ApplicationRow final : public SelectionRow {
public:
    explicit ApplicationRow(std::shared_ptr<Application> application) : application_(std::move(application)) {}

    std::string key() const override { return application_->name(); }
    std::string title() const override { return application_->displayName(); }
    double size() const override { return application_->totalSize(); }
    bool isSelected() const override { return application_->isSelected(); }
    void setSelected(bool selected) override { selected ? application_->select() : application_->deselect(); }
    std::optional<std::string> defaultEntry() const override;
    const std::shared_ptr<Application>& application() const { return application_; }

private:
    std::shared_ptr<Application> application_;
};

// A place of the other options: a folder without selectable content is picked whole and
// stands in its default list by its type; one with selectable content is picked through its
// items, all at once here.
class FolderRow final : public SelectionRow {
public:
    explicit FolderRow(std::shared_ptr<ArchivableFolder> folder) : folder_(std::move(folder)) {}

    std::string key() const override { return folder_->name(); }
    std::string title() const override { return folder_->name(); }
    double size() const override { return folder_->totalSize(); }
    bool isSelected() const override { return folder_->isSelected(); }
    void setSelected(bool selected) override;
    std::optional<std::string> defaultEntry() const override;
    const std::shared_ptr<ArchivableFolder>& folder() const { return folder_; }

private:
    std::shared_ptr<ArchivableFolder> folder_;
};

// The photos or the videos of an album, each side chosen apart; a side with nothing to
// take stays out.
class AlbumRow final : public SelectionRow {
public:
    AlbumRow(std::shared_ptr<PhotoVideoAlbum> album, bool photos) : album_(std::move(album)), photos_(photos) {}

    std::string key() const override { return album_->name(); }
    std::string title() const override { return album_->name(); }
    double size() const override { return photos_ ? album_->photoSize() : album_->videoSize(); }
    bool isSelected() const override { return album_->isSideSelected(photos_); }
    void setSelected(bool selected) override { album_->setSideSelected(photos_, selected); }

private:
    std::shared_ptr<PhotoVideoAlbum> album_;
    bool photos_;
};

// A data set of Apple's stock applications (calendar, messages...), as the device or the
// session holds it: its "has data" flag is its selection.
class StockDataRow final : public SelectionRow {
public:
    // STORE sets the flag where SOURCE reads it.
    StockDataRow(StockDataSet set, std::shared_ptr<const DataSetSizes> source,
                 std::function<void(StockDataSet, bool)> store)
        : set_(set), source_(std::move(source)), store_(std::move(store)) {}

    std::string key() const override;
    std::string title() const override { return key(); }
    double size() const override { return source_->dataSize(set_); }
    bool isSelected() const override { return source_->hasData(set_); }
    void setSelected(bool selected) override { store_(set_, selected); }

private:
    StockDataSet set_;
    std::shared_ptr<const DataSetSizes> source_;
    std::function<void(StockDataSet, bool)> store_;
};

}  // namespace stowhaven
