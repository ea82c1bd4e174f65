#include "items/SHSHBlob.h"

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "core/Text.h"

namespace stowhaven {

SHSHBlob::SHSHBlob(std::string fileName) : SelectableItem(std::move(fileName)) {
    const std::string& file = name();
    const auto dash = file.find('-');
    chipId_ = file.substr(0, dash);
    if (dash != std::string::npos) deviceType_ = textutil::replacingAll(file.substr(dash + 1), ".shsh", "");
}

SHSHBlob::SHSHBlob(KeyedUnarchiver& coder)
    : SelectableItem(coder),
      chipId_(coder.decodeStringForKey("chipId")),
      deviceType_(coder.decodeStringForKey("deviceType")) {}

std::shared_ptr<Codable> SHSHBlob::initWithCoder(KeyedUnarchiver& coder) { return std::make_shared<SHSHBlob>(coder); }

void SHSHBlob::encodeWithCoder(KeyedArchiver& coder) const {
    SelectableItem::encodeWithCoder(coder);
    coder.encodeObject(chipId_, "chipId");
    coder.encodeObject(deviceType_, "deviceType");
}

}  // namespace stowhaven
