#include "cli/KeyFile.h"

#include "core/Text.h"
#include "platform/FileManager.h"

namespace stowhaven {

std::optional<std::string> keyFromFile(const std::string& path) {
    const auto text = FileManager::contentsOfFile(path);
    if (!text) return std::nullopt;
    const std::string key = textutil::trimmed(textutil::split(*text, '\n').front());
    return key.empty() ? std::nullopt : std::optional(key);
}

}  // namespace stowhaven
