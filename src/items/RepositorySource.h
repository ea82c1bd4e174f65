#pragma once

#include "items/SelectableItem.h"
#include "platform/plist/PlistValue.h"

#include <optional>
#include <string>
#include <vector>

namespace stowhaven {

// One software source of the package manager, a line of the kind apt reads: type, link,
// distribution and sections. Archived with the item's keys and "link", "distribution",
// "type", "sections".
class RepositorySource : public SelectableItem {
public:
    // From the "CydiaSources" form: "URI", "Type", "Sections", "Distribution". Selected
    // as the backup default says.
    explicit RepositorySource(const PlistValue::Dictionary& dictionary);
    // The archived fields; selected as the restore default says.
    explicit RepositorySource(KeyedUnarchiver& coder);
    static std::shared_ptr<Codable> initWithCoder(KeyedUnarchiver& coder);

    std::vector<std::string> classChain() const override { return {"RepositorySource", "SelectableItem", "NSObject"}; }
    void encodeWithCoder(KeyedArchiver& coder) const override;

    const std::optional<std::string>& link() const { return link_; }
    const std::optional<std::string>& distribution() const { return distribution_; }
    const std::optional<std::string>& type() const { return type_; }
    const std::vector<std::string>& sections() const { return sections_; }
    // The icon of a well-known source; none otherwise.
    const std::optional<std::string>& image() const { return image_; }

    // A name that is an "http://" link becomes the link, without " ./", and the name
    // becomes the link's host, capitalised word by word. Any other name stays.
    void parseLink();
    // 0 restore, 1 backup: selected when that side's default list holds the metadata
    // key; without a list, selected for backup and not for restore.
    void selectStateForOperation(int operation);

    // "type:link:distribution", the key of the source in the default lists.
    std::string metadataKey() const;
    // The source as a line of an apt list, with its first section only.
    std::string debSourceAsString() const;
    std::string description() const override;

    // Same link, as exact text.
    bool isEqual(const RepositorySource& other) const { return link_ == other.link_; }
    // Links in plain string order.
    std::strong_ordering compare(const RepositorySource& other) const { return link_ <=> other.link_; }

    // Reads the two default lists again from the settings.
    static void resetDefaultLists();

private:
    std::optional<std::string> link_;
    std::optional<std::string> distribution_;
    std::optional<std::string> type_;
    std::vector<std::string> sections_;
    std::optional<std::string> image_;
};

}  // namespace stowhaven
