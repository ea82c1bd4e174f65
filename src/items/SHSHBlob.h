#pragma once

#include "items/SelectableItem.h"

#include <optional>
#include <string>

namespace stowhaven {

// A saved SHSH blob, from its file name ECID-device-version.shsh. Archived with the
// item's keys and "chipId", "deviceType".
class SHSHBlob : public SelectableItem {
public:
    // The chip id is the part before the first "-", the device type the rest without ".shsh".
    explicit SHSHBlob(std::string fileName);
    // The archived fields, not selected.
    explicit SHSHBlob(KeyedUnarchiver& coder);
    static std::shared_ptr<Codable> initWithCoder(KeyedUnarchiver& coder);

    std::vector<std::string> classChain() const override { return {"SHSHBlob", "SelectableItem", "NSObject"}; }
    void encodeWithCoder(KeyedArchiver& coder) const override;

    const std::optional<std::string>& chipId() const { return chipId_; }
    const std::optional<std::string>& deviceType() const { return deviceType_; }

private:
    std::optional<std::string> chipId_;
    std::optional<std::string> deviceType_;
};

}  // namespace stowhaven
