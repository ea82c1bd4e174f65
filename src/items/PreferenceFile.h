#pragma once

#include "archive/ArchiveValue.h"
#include "items/SelectableItem.h"

#include <cstdint>
#include <optional>
#include <string>

namespace stowhaven {

// A preference or SpringBoard file of the device with its content: a dictionary, bytes,
// or nil where the file itself goes to the session's dated folder. NAME is the file's
// full device path. Archived with the item's keys and "preferencePlistData".
class PreferenceFile : public SelectableItem {
public:
    // Measures the file on the device; selected as the backup default says.
    PreferenceFile(std::string name, ArchiveValue data);
    // The archived fields; selected as the restore default says.
    explicit PreferenceFile(KeyedUnarchiver& coder);
    static std::shared_ptr<Codable> initWithCoder(KeyedUnarchiver& coder);

    std::vector<std::string> classChain() const override { return {"PreferenceFile", "SelectableItem", "NSObject"}; }
    void encodeWithCoder(KeyedArchiver& coder) const override;

    const ArchiveValue& preferencePlistData() const { return preferencePlistData_; }
    std::int32_t permissions() const { return permissions_; }
    void setPermissions(std::int32_t permissions) { permissions_ = permissions; }
    const std::optional<std::string>& accountOwnerName() const { return accountOwnerName_; }
    void setAccountOwnerName(std::optional<std::string> name) { accountOwnerName_ = std::move(name); }
    const std::optional<std::string>& groupOwnerName() const { return groupOwnerName_; }
    void setGroupOwnerName(std::optional<std::string> name) { groupOwnerName_ = std::move(name); }

    // With that side's default list, selected when it holds the path; without one,
    // selected for backup and not for restore.
    void selectStateForOperation(bool backup);
    // The file's name, the last component of its path.
    std::string displayName() const override;
    std::string description() const override;

    // Reads the two default lists again from the settings.
    static void resetDefaultLists();

private:
    std::int32_t permissions_ = 0;
    ArchiveValue preferencePlistData_;
    std::optional<std::string> accountOwnerName_;
    std::optional<std::string> groupOwnerName_;
};

}  // namespace stowhaven
