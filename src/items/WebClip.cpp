#include "items/WebClip.h"

namespace stowhaven {

std::shared_ptr<Codable> WebClip::initWithCoder(KeyedUnarchiver& coder) { return std::make_shared<WebClip>(coder); }

std::string WebClip::displayIcon() const { return "/var/mobile/Library/WebClips/" + name() + "/icon.png"; }

std::string WebClip::displayName() const {
    const auto* entries = preferencePlistData().asDictionary();
    if (entries == nullptr) return {};
    const auto title = entries->find("Title");
    return title != entries->end() && title->second.asString() ? *title->second.asString() : std::string();
}

}  // namespace stowhaven
